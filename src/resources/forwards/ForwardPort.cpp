// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/forwards/ForwardPort.h"

#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/forwards/PortForwardsWindow.h"

#include <QComboBox>
#include <QFormLayout>
#include <QObject>
#include <QRegularExpressionValidator>
#include <QSpinBox>

#include <algorithm>

namespace tidewright {

namespace {

constexpr int highestPort = 65535;

const auto notForwarded = QStringLiteral("No port was forwarded");

/// How kubectl is told of a kind, and where its objects declare ports.
struct Forwardable
{
    const char *resourceName;
    const char *target;
    const char *ports;
    const char *number;
};

constexpr Forwardable forwardables[] = {
    {"po", "pod/", ".spec.containers[*].ports[*]", ".containerPort"},
    {"service", "service/", ".spec.ports[*]", ".port"},
    {"deploy", "deployment/", ".spec.template.spec.containers[*].ports[*]", ".containerPort"},
    {"statefulset", "statefulset/", ".spec.template.spec.containers[*].ports[*]", ".containerPort"},
};

const Forwardable *forwardable(const ResourceKind &kind)
{
    const auto *found = std::find_if(std::begin(forwardables), std::end(forwardables),
        [&kind](const Forwardable &each) { return kind.resourceName == QLatin1String(each.resourceName); });
    return found == std::end(forwardables) ? nullptr : found;
}

struct Form
{
    QWidget *widget;
    QPointer<QComboBox> port;
    QPointer<QSpinBox> local;
};

Form makeForm(const std::vector<DeclaredPort> &ports, const QString &place)
{
    auto *widget = new QWidget;
    auto *port = new QComboBox;
    port->setEditable(true);
    port->setInsertPolicy(QComboBox::NoInsert);
    port->setAccessibleName(QObject::tr("Port"));
    for (const DeclaredPort &each : ports) {
        const QString number = QString::number(each.number);
        port->addItem(each.name.isEmpty()
                ? number
                : QString(number + QLatin1Char(' ') + display_text::clean(each.name)));
    }
    port->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{1,5}( .*)?")), port));
    auto *local = new QSpinBox;
    local->setRange(0, highestPort);
    local->setSpecialValueText(QObject::tr("any that is free"));
    local->setAccessibleName(QObject::tr("Local port"));
    auto *layout = new QFormLayout(widget);
    layout->addRow(QObject::tr("Port:"), port);
    layout->addRow(QObject::tr("Local port:"), local);
    layout->addRow(confirmationDetails(place));
    widget->setFocusProxy(port);
    return {widget, port, local};
}

void startForward(const ChangePlace &place, const ForwardRequest &request)
{
    place.window->whenSettled([place, request](const QString &obstacle) {
        if (!allowsStart(place, notForwarded, obstacle)
            || !allows(*place.window, notForwarded, changeObstacle(*place.window))) {
            return;
        }
        const KubeCtl &kubeCtl = place.window->kubeCtl();
        auto forward = std::make_unique<PortForward>(
            request, kubeCtl.makeShell(), kubeCtl.contents().destination(place.context));
        const CommandLine line{forward->commandLine(), {}};
        postConsoleEntry(place.window->console(), line.arguments.join(QLatin1Char(' ')),
            QObject::tr("It goes on in the background; see Port Forwards in the Window menu"), std::nullopt,
            line);
        PortForwards::shared().add(std::move(forward));
        PortForwardsWindow::present();
    });
}

void ask(QWidget &view, const ChangePlace &place, const ResourceKind &kind, const ObjectName &object,
    const std::vector<DeclaredPort> &ports)
{
    const Form form = makeForm(ports, place.text(kind, object.nameSpace));
    const QString noun = QStringLiteral("the %1 \"%2\"").arg(kind.humanReadableResourceName, object.name);
    const QString title = view.window()->windowTitle();
    ForwardRequest request{.target = QLatin1String(forwardable(kind)->target) + object.name,
        .context = place.context,
        .nameSpace = object.nameSpace,
        .kubeConfig = place.kubeConfig,
        .windowTitle = title.isEmpty() ? place.context : title,
        .window = place.window};
    confirmChange(&view, place,
        {.title = QObject::tr("Forward Port"),
            .message = ports.empty()
                ? QObject::tr("Which port of %1 is to be reachable on this machine? It declares none.")
                      .arg(noun)
                : QObject::tr("Which port of %1 is to be reachable on this machine?").arg(noun),
            .yes = QObject::tr("Forward Port"),
            .accessory = form.widget},
        [place, form, request](bool confirmed) mutable {
            if (!confirmed || !place.window || !form.port || !form.local) {
                return;
            }
            const QString typed = form.port->currentText();
            request.port = typed.section(QLatin1Char(' '), 0, 0).toUShort(); // 0 for what is no port
            request.localPort = static_cast<quint16>(form.local->value());
            if (request.port == 0) {
                refuseChange(*place.window, notForwarded,
                    QObject::tr("\"%1\" is no port. Ports are numbers from 1 to 65535.").arg(typed));
            } else {
                startForward(place, request);
            }
        });
}

} // namespace

bool canForwardTo(const ResourceKind &kind)
{
    return forwardable(kind);
}

std::vector<DeclaredPort> readPorts(QByteArrayView printed)
{
    std::vector<DeclaredPort> ports;
    for (const QString &line : QString::fromUtf8(printed).split(QLatin1Char('\n'))) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        const DeclaredPort port{fields.first().toUShort(), fields.value(1)};
        const QString protocol = fields.value(2);
        const bool isTcp
            = protocol.isEmpty() || protocol == QLatin1String("TCP"); // all that kubectl forwards
        if (port.number != 0 && isTcp && std::find(ports.begin(), ports.end(), port) == ports.end()) {
            ports.push_back(port);
        }
    }
    return ports;
}

void forwardPort(QWidget &view, WindowState &window, const ResourceKind &kind, const ObjectName &object)
{
    const Forwardable *known = forwardable(kind);
    if (!known || !allowsChange(window, kind, {object}, notForwarded)) {
        return;
    }
    const ChangePlace place(window);
    const QString printed
        = QStringLiteral("-o=jsonpath={range %1}{%2}{\"\\t\"}{.name}{\"\\t\"}{.protocol}{\"\\n\"}{end}")
              .arg(QLatin1String(known->ports), QLatin1String(known->number));
    window.kubeCtl().makeShell()->runAsync(QStringList{QStringLiteral("kubectl"), QStringLiteral("get")}
            + placeArguments(place.context, object.nameSpace)
            + QStringList{QLatin1String(known->target) + object.name, printed},
        false, window.console(), [view = QPointer(&view), place, kind, object](const ShellResult &result) {
            postToMain(view, [place, kind, object, result](QWidget &shown) {
                if (!place.window) {
                    return;
                }
                if (const QString failure = result.failure(); !failure.isEmpty()) {
                    refuseChange(
                        *place.window, notForwarded, QObject::tr("its ports could not be read. ") + failure);
                } else if (!place.isStillShown()) {
                    refuseMovedChange(*place.window, notForwarded);
                } else {
                    ask(shown, place, kind, object, readPorts(result.output));
                }
            });
        });
}

} // namespace tidewright
