// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/ClusterChange.h"

#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "platform/desktop/Notifications.h"

#include <QLabel>
#include <QUuid>

namespace tidewright {

ChangePlace::ChangePlace(WindowState &shown)
    : window(&shown)
    , context(shown.currentContext())
    , nameSpace(shown.currentNamespace())
    , kubeConfig(shown.kubeConfigPath())
{
}

bool ChangePlace::isStillShown() const
{
    return window && window->currentContext() == context && window->currentNamespace() == nameSpace;
}

QString ChangePlace::text(const ResourceKind &kind) const
{
    return placeText(context, kind.namespaced ? nameSpace : QString(), kubeConfig);
}

QString ChangePlace::text() const
{
    return placeText(context, nameSpace, kubeConfig);
}

QString placeText(const QString &context, const QString &nameSpace, const QString &configPath)
{
    QStringList lines{QLatin1String("Context: ") + context};
    if (!nameSpace.isEmpty()) {
        lines.append(QLatin1String("Namespace: ") + nameSpace);
    }
    if (const QString files = kubeConfigFiles(configPath); files != kubeConfigFiles({})) {
        lines.append(QLatin1String("Kubeconfig: ") + files);
    }
    return lines.join(QLatin1Char('\n'));
}

QString namespaceObstacle(const ResourceKind &kind, const QString &nameSpace)
{
    if (!kind.namespaced || nameSpace != allNamespaces) {
        return {};
    }
    return QStringLiteral(
        "choose a namespace first. While all namespaces are shown, kubectl cannot tell which of "
        "them a %1 is in.")
        .arg(kind.humanReadableResourceName);
}

QString nameObstacle(const QStringList &names)
{
    for (const QString &name : names) {
        if (name.startsWith(QLatin1Char('-'))) {
            return QStringLiteral("kubectl would take the name \"%1\" for an option.").arg(name);
        }
    }
    return {};
}

QString whyNotByName(const ResourceKind &kind, const QStringList &names, const QString &nameSpace)
{
    const QString reason = namespaceObstacle(kind, nameSpace);
    return reason.isEmpty() ? nameObstacle(names) : reason;
}

void refuseChange(WindowState &window, const QString &notDone, const QString &reason)
{
    postConsoleEntry(
        window.console(), QString(), QString(), makeConsoleError(notDone + QLatin1String(": ") + reason));
}

void refuseMovedChange(WindowState &window, const QString &notDone)
{
    refuseChange(window, notDone, QStringLiteral("the window shows another context or namespace by now."));
}

void refuseUnseenChange(const ChangePlace &place, const QString &notDone, const QString &reason)
{
    const QString text = notDone + QLatin1String(": ") + reason;
    postConsoleEntry(nullptr, QString(), QString(), makeConsoleError(text));
    deliverNotification({QUuid::createUuid().toString(QUuid::WithoutBraces),
        QStringLiteral("A change was not made"), place.text(), text});
}

namespace {

/// A window that was closed shows no entry: the user learns elsewhere what has become of the change.
void notifyOutcome(const ChangePlace &place, const QStringList &command, const ShellResult &result)
{
    const QString failure = result.failure();
    deliverNotification({QUuid::createUuid().toString(QUuid::WithoutBraces),
        failure.isEmpty() ? QStringLiteral("A change is done") : QStringLiteral("A change has failed"),
        place.text(), command.join(QLatin1Char(' ')) + QLatin1Char('\n') + failure});
}

void startChange(const ChangePlace &place, const QStringList &command, std::function<void()> finished)
{
    place.window->kubeCtl().makeShell()->runToldAsync(command, place.window->console(),
        [place, command, finished = std::move(finished)](const ShellResult &result) {
            mainQueue().post([place, command, finished, result] {
                if (!place.window) {
                    notifyOutcome(place, command, result);
                } else if (finished) {
                    finished();
                }
            });
        });
}

} // namespace

void runChange(const ChangePlace &place, const QStringList &command, const QString &notDone,
    std::function<void()> finished)
{
    if (!place.window) {
        return;
    }
    place.window->whenSettled(
        [place, command, notDone, finished = std::move(finished)](const QString &obstacle) {
            if (!place.window) {
                refuseUnseenChange(place, notDone, obstacle);
                return;
            }
            if (obstacle.isEmpty() && place.isStillShown()) {
                startChange(place, command, finished);
                return;
            }
            if (obstacle.isEmpty()) {
                refuseMovedChange(*place.window, notDone);
            } else {
                refuseChange(*place.window, notDone, obstacle);
            }
            if (finished) {
                finished();
            }
        });
}

QWidget *confirmationDetails(const QString &text)
{
    auto *label = new QLabel(display_text::clean(text));
    label->setTextFormat(Qt::PlainText);
    label->setContentsMargins(2, 10, 12, 8);
    return label;
}

} // namespace tidewright
