// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/BashScript.h"

#include "actions/ActionTerminal.h"
#include "actions/CustomActionItem.h"
#include "actions/RunningScript.h"
#include "core/running/Shell.h"
#include "external/TerminalQuoting.h"
#include "platform/desktop/Diagnostics.h"

namespace tidewright {

namespace {

// `env` takes a word with an equals sign for one more variable, so a shell stands before a path that has one.
const auto runsItsArgument = QStringLiteral("exec \"$0\"");

QStringList backgroundCommand(const ActionEnvironment &environment, const QString &path)
{
    QStringList arguments{QStringLiteral("env")};
    for (auto entry = environment.begin(); entry != environment.end(); ++entry) {
        arguments.append(entry.key() + QLatin1Char('=') + entry.value());
    }
    if (path.contains(QLatin1Char('='))) {
        arguments += {QStringLiteral("/bin/sh"), QStringLiteral("-c"), runsItsArgument};
    }
    return arguments + QStringList{path};
}

/// The same for a reader: the user's own variables, which may be tokens, without their values.
ActionEnvironment shownEnvironment(ActionEnvironment environment, const QStringList &own)
{
    for (const QString &name : own) {
        environment.insert(name, QStringLiteral("…"));
    }
    return environment;
}

/// Values come from the cluster and from the user: the terminal's shell must take none of them for its own.
QString terminalCommand(const ActionEnvironment &environment, const QString &path)
{
    QStringList words{QStringLiteral("env")};
    for (auto entry = environment.begin(); entry != environment.end(); ++entry) {
        words.append(terminalAssignment(entry.key(), entry.value()));
    }
    if (path.contains(QLatin1Char('='))) {
        words += {QStringLiteral("/bin/sh -c"), terminalArgument(runsItsArgument)};
    }
    words.append(terminalArgument(path));
    return words.join(QLatin1Char(' '));
}

} // namespace

void BashScript::runScript(std::shared_ptr<CustomActionItem> item, ActionRun run)
{
    const auto complete = item->buildEnvironment(std::move(run.environment));
    if (!complete) {
        return;
    }
    const bool inTerminal = item->config().open_in_terminal.value_or(false);
    const auto shell = inTerminal ? nullptr : Shell::create();
    const RunningScript running(std::move(run.console), item->title(),
        shell ? std::make_shared<const std::function<void()>>([shell] { shell->cancel(); }) : nullptr);
    writeDiagnostic(QLatin1String("Run bash ") + scriptURL());
    ActionEnvironment shown
        = shownEnvironment(*complete, item->config().environment_variables.value_or(QStringList()));
    if (!run.shownKubeConfig.isEmpty()) {
        shown.insert(QStringLiteral("KUBECONFIG"), run.shownKubeConfig);
    }
    if (inTerminal) {
        actionTerminal()(terminalCommand(*complete, scriptURL()), terminalCommand(shown, scriptURL()),
            run.view ? run.view->path() : QString());
        running.end();
    } else {
        shell->outputLimit = Shell::foreignOutputLimit;
        shell->needed = run.view;
        shell->loggedArguments = backgroundCommand(shown, scriptURL());
        shell->runToldAsync(backgroundCommand(*complete, scriptURL()), nullptr,
            [running](const ShellResult &) { running.end(); });
    }
}

} // namespace tidewright
