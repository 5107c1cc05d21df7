// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/CustomActionItem.h"

#include "actions/ActionQueue.h"
#include "actions/BashScript.h"
#include "actions/PythonScript.h"
#include "core/CommandGate.h"
#include "core/running/ApplicationRecord.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/settings/UserDefaults.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/widgets/NamedImages.h"

namespace tidewright {

namespace {

const auto namespaceVariable = QStringLiteral("NAMESPACE");

/// What an action applies to, such as "Container: app", each by itself.
QStringList describedTarget(const ActionEnvironment &environment)
{
    static const QStringList places{
        QStringLiteral("KUBECONFIG"), QStringLiteral("CONTEXT"), namespaceVariable};
    QStringList target;
    for (auto entry = environment.begin(); entry != environment.end(); ++entry) {
        if (!places.contains(entry.key())) {
            const QString noun = entry.key().left(1) + entry.key().mid(1).toLower();
            target.append(noun + QLatin1String(": ") + entry.value());
        }
    }
    return target;
}

/// What runs for what, and where.
QString described(
    const QString &title, const std::vector<ActionEnvironment> &environments, const ChangePlace &place)
{
    QStringList lines{QStringLiteral("Action: ") + title};
    if (environments.size() == 1) {
        const QString nameSpace = environments.front().value(namespaceVariable, place.nameSpace);
        lines += describedTarget(environments.front());
        lines.append(placeText(place.context, nameSpace, place.kubeConfig));
        return lines.join(QLatin1Char('\n'));
    }
    for (const ActionEnvironment &environment : environments) {
        const QStringList target = describedTarget(environment);
        lines.append(QStringLiteral("Namespace: %1  ·  %2")
                         .arg(environment.value(namespaceVariable), target.join(QLatin1String(", "))));
    }
    lines.append(placeText(place.context, {}, place.kubeConfig));
    return lines.join(QLatin1Char('\n'));
}

void tellMissing(const QStringList &names)
{
    const QString message
        = QStringLiteral("There are environment variables that need to be set to run this command.  Please "
                         "set \"%1\" in Preferences: Advanced and try again.")
              .arg(names.join(QLatin1String(", ")));
    mainQueue().post([message] {
        showConfirmation(nullptr,
            {.title = QStringLiteral("Required Environment Variables Missing"),
                .message = message,
                .yes = QStringLiteral("OK"),
                .no = QString()},
            [](bool) {});
    });
}

} // namespace

std::shared_ptr<CustomActionItem> CustomActionItem::create(
    QString title, QImage icon, QImage menuIcon, QString scriptURL, std::optional<QString> configURL)
{
    return std::shared_ptr<CustomActionItem>(new CustomActionItem(
        std::move(title), std::move(icon), std::move(menuIcon), std::move(scriptURL), std::move(configURL)));
}

CustomActionItem::CustomActionItem(
    QString title, QImage icon, QImage menuIcon, QString scriptURL, std::optional<QString> configURL)
    : m_title(std::move(title))
    , m_icon(std::move(icon))
    , m_menuIcon(std::move(menuIcon))
    , m_scriptURL(std::move(scriptURL))
    , m_configURL(std::move(configURL))
{
    loadConfig();
    m_script = makeScript();
}

void CustomActionItem::loadConfig()
{
    if (!m_configURL) {
        return;
    }
    CustomActionConfig::Decoded decoded = CustomActionConfig::load(*m_configURL);
    if (decoded.config) {
        m_config = *std::move(decoded.config);
        if (!decoded.unknownKeys.isEmpty()) {
            m_configProblem = QStringLiteral(
                "The action \"%1\" has keys in its configuration that mean nothing: %2 (%3).")
                                  .arg(m_title, decoded.unknownKeys.join(QLatin1String(", ")), *m_configURL);
        }
        return;
    }
    m_configProblem = QStringLiteral("The action \"%1\" runs without its configuration: %2: %3.")
                          .arg(m_title, *m_configURL, decoded.error);
    writeDiagnostic(QStringLiteral("Error %1: %2").arg(*m_configURL, decoded.error));
}

std::unique_ptr<Script> CustomActionItem::makeScript() const
{
    if (m_scriptURL.endsWith(QLatin1String(".py")) && m_config.is_smart_action.value_or(false)) {
        return std::make_unique<PythonScript>(m_scriptURL);
    }
    return std::make_unique<BashScript>(m_scriptURL);
}

QIcon CustomActionItem::icon() const
{
    return m_icon.isNull() ? namedImage(QStringLiteral("NSAdvanced")) : QIcon(QPixmap::fromImage(m_icon));
}

QIcon CustomActionItem::menuIcon() const
{
    return m_menuIcon.isNull() ? namedImage(QStringLiteral("NSSmartBadgeTemplate"))
                               : QIcon(QPixmap::fromImage(m_menuIcon));
}

QString CustomActionItem::readOnlyObstacle(const ContextKey &context) const
{
    const QString reason = readOnlyReason(context);
    return reason.isEmpty() || m_config.reads_only.value_or(false)
        ? QString()
        : reason + QStringLiteral(" The action's config.json does not say \"reads_only\": true.");
}

void CustomActionItem::performAction(
    const ActionEnvironment &environment, const std::optional<ChangePlace> &place)
{
    performActions({environment}, place);
}

void CustomActionItem::performActions(
    const std::vector<ActionEnvironment> &environments, const std::optional<ChangePlace> &place)
{
    if (environments.empty()) {
        return;
    }
    const ContextKey context
        = place ? place->key() : ContextKey({}, environments.front().value(QStringLiteral("CONTEXT")));
    if (!isActiveIn(context.name) || !readOnlyObstacle(context).isEmpty()) {
        return;
    }
    const QString toBeTyped = m_config.reads_only.value_or(false) ? QString() : toBeTypedIn(context);
    const auto run = [self = shared_from_this(), environments, place](bool confirmed) {
        for (std::size_t i = 0; confirmed && i < environments.size(); ++i) {
            self->runIn(environments[i], place);
        }
    };
    if (!m_config.show_warning_text && toBeTyped.isEmpty()) {
        run(true);
        return;
    }
    const QString question = QStringLiteral("Are you sure you want to run the action \"%1\"?").arg(m_title);
    showConfirmation(nullptr,
        {.title = QStringLiteral("Confirm Action"),
            .message = m_config.show_warning_text.value_or(question),
            .yes = QStringLiteral("OK"),
            .accessory = place ? confirmationDetails(described(m_title, environments, *place)) : nullptr,
            .toBeTyped = toBeTyped},
        run);
}

/// The script acts where the window is, whatever other programs or it itself do to kubeconfigs meanwhile.
void CustomActionItem::runIn(const ActionEnvironment &environment, const std::optional<ChangePlace> &place)
{
    if (!place) {
        start({environment, mainConsole()});
        return;
    }
    if (!place->window) {
        return;
    }
    place->window->whenSettled(
        [self = shared_from_this(), environment, place = *place](const QString &obstacle) {
            const QString notRun = QStringLiteral("\"%1\" was not run").arg(self->title());
            const QString reason = obstacle.isEmpty() ? self->readOnlyObstacle(place.key()) : obstacle;
            if (!allowsStart(place, notRun, reason)) {
                return;
            }
            const bool inTerminal = self->config().open_in_terminal.value_or(false);
            const QString nameSpace = environment.value(namespaceVariable);
            const KubeConfigCopy copy = place.window->kubeCtl().makeCopy(
                inTerminal ? KubeConfigView::Lifetime::OnItsOwn : KubeConfigView::Lifetime::WithHolder,
                nameSpace == allNamespaces ? QString() : nameSpace);
            if (!allows(*place.window, notRun, copy.problem)) {
                return;
            }
            ActionRun run{environment, place.window->console(), copy.view,
                kubeConfigFiles(place.window->kubeConfigPath())};
            run.environment.insert(QStringLiteral("KUBECONFIG"), copy.kubeConfig);
            self->start(run);
        });
}

void CustomActionItem::start(const ActionRun &run)
{
    customActionQueue().post([self = shared_from_this(), run] { self->script().runScript(self, run); });
}

std::optional<ActionEnvironment> CustomActionItem::buildEnvironment(ActionEnvironment environment) const
{
    environment.insert(QStringLiteral("KUBECTL"), kubectlPath());
    const QStringList required = m_config.environment_variables.value_or(QStringList());
    if (required.isEmpty()) {
        return environment;
    }
    const auto defined = userDefaults().dictionary(QStringLiteral("customEnvVars"));
    QStringList missing;
    for (const QString &name : required) {
        if (defined && defined->contains(name)) {
            environment.insert(name, defined->value(name));
        } else {
            missing.append(name);
        }
    }
    if (!missing.isEmpty()) {
        tellMissing(missing);
        return std::nullopt;
    }
    return environment;
}

} // namespace tidewright
