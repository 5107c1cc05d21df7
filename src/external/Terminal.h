// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// The two terminals a user can choose. "Terminal" is the desktop's default one; "iTerm" is the application
/// registered for the URL scheme `iTermScheme`.
inline const QString terminalTitle = QStringLiteral("Terminal");
inline const QString iTermTitle = QStringLiteral("iTerm");
inline const QString iTermScheme = QStringLiteral("iterm2");

/// The title stored as "preferredTerminal", unchecked; without one, "iTerm" when it is there and "Terminal"
/// when not. Any thread.
QString resolvePreferredTerminal();

/// Runs a command line in a new window of the preferred terminal; any stored title but "iTerm" means
/// "Terminal". The line is given as text for the inside of a double-quoted script literal (see
/// TerminalQuoting.h); `sh -c` gets it with the literal's escapes undone. When it has ended, the user's shell
/// takes over in the window.
///
/// Returns once the terminal has been started, or has failed within a moment; the terminal and what runs in
/// it outlive the application. Then one entry goes to the main window's console: the line `shown`, which is
/// the command line but for secrets, with "{}" as its error after a success, else with what failed (no
/// terminal, its exit status and error text). The diagnostics get that line too. Not on the main thread.
///
/// The terminal holds a shared lock on `usedFile` (may be empty) until what ran has ended, with all that it
/// started.
void runInTerminal(const QString &commandLine, const QString &shown, const QString &usedFile = {});

} // namespace tidewright
