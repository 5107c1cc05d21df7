// SPDX-License-Identifier: GPL-3.0-or-later
#include "external/Terminal.h"

#include "core/running/ChildEnvironment.h"
#include "core/running/Console.h"
#include "external/CapturedOutput.h"
#include "external/DesktopApplications.h"
#include "external/TerminalQuoting.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/process/ChildProcess.h"
#include "platform/settings/UserDefaults.h"
#include "platform/threads/MainQueue.h"

#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <array>

namespace tidewright {

namespace {

/// A terminal that does not come up says so within this time; one that does goes on, or has handed its window
/// to a server of its own and ended well.
constexpr std::chrono::milliseconds moment(1000);

/// Runs the first argument and leaves the user's shell in the window, also after Ctrl+C. What ran may have
/// been a shell somewhere else, whose prompt looks the same. The lock on a file that is used passes to all
/// that runs.
constexpr auto windowScript
    = R"(if [ -r "$2" ]; then exec 9<"$2"; flock -s 9; fi; trap : INT QUIT; /bin/sh -c "$1"; trap - INT QUIT; )"
      R"(exec 9<&-; printf '\n%s\n' 'That has ended. You are on your own machine again.'; )"
      R"(exec "${SHELL:-/bin/sh}")";

/// What stands between a terminal's name and the command that it is to run in a new window.
struct KnownTerminal
{
    const char *program;
    std::array<const char *, 2> before;
};

/// In the order in which they stand for the desktop's default terminal.
constexpr std::array<KnownTerminal, 9> knownTerminals{{
    {"xdg-terminal-exec", {}},
    {"x-terminal-emulator", {"-e"}},
    {"gnome-terminal", {"--window", "--"}},
    {"konsole", {"-e"}},
    {"xfce4-terminal", {"-x"}},
    {"kitty", {}},
    {"alacritty", {"-e"}},
    {"foot", {}},
    {"xterm", {"-e"}},
}};

QStringList wordsBefore(const KnownTerminal &terminal)
{
    QStringList words;
    for (const char *word : terminal.before) {
        if (word) {
            words.append(QLatin1String(word));
        }
    }
    return words;
}

/// Words that open a new window and run the command appended to them; or none, and why.
struct Opener
{
    QStringList words;
    QString problem = {};
};

Opener defaultTerminal()
{
    QStringList tried;
    for (const KnownTerminal &terminal : knownTerminals) {
        const QString program = QLatin1String(terminal.program);
        if (const QString path = QStandardPaths::findExecutable(program); !path.isEmpty()) {
            return {QStringList(path) + wordsBefore(terminal)};
        }
        tried.append(program);
    }
    return {{},
        QStringLiteral("No terminal was found. Looked on the PATH for %1.")
            .arg(tried.join(QLatin1String(", ")))};
}

Opener iTerm()
{
    const auto handler = schemeHandler(iTermScheme);
    if (!handler) {
        return {{},
            QStringLiteral(
                "%1 was not found: no application is registered for the URL scheme \"%2\". Another "
                "terminal can be chosen in the preferences.")
                .arg(iTermTitle, iTermScheme)};
    }
    const QString program = QFileInfo(handler->command.first()).fileName();
    const auto *const known = std::find_if(knownTerminals.begin(), knownTerminals.end(),
        [&](const KnownTerminal &terminal) { return program == QLatin1String(terminal.program); });
    QStringList words = handler->command;
    if (known != knownTerminals.end()) {
        words += wordsBefore(*known);
    } else if (!handler->execArgument.isEmpty()) {
        words.append(handler->execArgument);
    }
    return {words};
}

QString howItFailed(const QString &program, const ChildProcess &process, const QByteArray &printed)
{
    const auto signal = process.terminationSignal();
    const int status = process.exitStatus().value_or(0);
    if (!signal && status == 0) {
        return {};
    }
    QString text = signal ? QStringLiteral("%1 was ended by signal %2.").arg(program).arg(*signal)
                          : QStringLiteral("%1 failed with exit status %2.").arg(program).arg(status);
    if (const QString details = QString::fromUtf8(printed).trimmed(); !details.isEmpty()) {
        text += QLatin1Char('\n') + details;
    }
    return text;
}

/// Returns what failed, or the empty text. The diagnostics get `shown` in place of the line.
QString openWindow(const QString &shellLine, const QString &shown, const QString &usedFile)
{
    Opener opener = resolvePreferredTerminal() == iTermTitle ? iTerm() : defaultTerminal();
    if (opener.words.isEmpty()) {
        return opener.problem;
    }
    const QString program = opener.words.first();
    opener.words += {
        QStringLiteral("/bin/sh"), QStringLiteral("-c"), QLatin1String(windowScript), QStringLiteral("sh")};
    writeDiagnostic(
        QLatin1String("Running: ") + CommandLine{opener.words + QStringList(shown), {}}.shellLine());
    opener.words += {shellLine, usedFile};
    // The terminal gets a session of its own, so that it stays when the application ends; what ends then is
    // the one that waits to see how the terminal fares.
    ChildProcess process;
    process.setExecutable(QStringLiteral("/usr/bin/env"));
    process.setArguments(QStringList{QStringLiteral("--default-signal=TTIN,TTOU"), QStringLiteral("setsid"),
                             QStringLiteral("--fork"), QStringLiteral("--wait")}
        + opener.words);
    process.setEnvironment(child_environment::withOwnPath());
    Pipe output = makeCapture();
    Pipe error = makeCapture();
    if (const auto failure = process.start(output, error)) {
        return QStringLiteral("%1 could not be started: %2.").arg(program, *failure);
    }
    return process.waitUntilExit(moment)
        ? howItFailed(program, process, capturedBytes(error) + capturedBytes(output))
        : QString();
}

} // namespace

QString resolvePreferredTerminal()
{
    if (const auto stored = userDefaults().string(QStringLiteral("preferredTerminal"))) {
        return *stored;
    }
    return hasSchemeHandler(iTermScheme) ? iTermTitle : terminalTitle;
}

void runInTerminal(const QString &commandLine, const QString &shown, const QString &usedFile)
{
    QString outcome = openWindow(withoutLiteralEscapes(commandLine), withoutLiteralEscapes(shown), usedFile);
    if (outcome.isEmpty()) {
        outcome = QStringLiteral("{}");
    }
    mainQueue().post(
        [shown, outcome] { postConsoleEntry(nullptr, shown, QString(), makeConsoleError(outcome)); });
}

} // namespace tidewright
