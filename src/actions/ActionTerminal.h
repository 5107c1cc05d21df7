// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

namespace tidewright {

/// How an action gets its command line into a terminal window.
struct ActionTerminal
{
    /// Runs a command line, escaped for the inside of a quoted script text, in a new terminal window. Called
    /// on a thread of the custom action queue; returns when the terminal was told, and reports its failures
    /// itself.
    std::function<void(const QString &commandLine)> runInTerminal;
    /// Prepares a value to stand between two quotes (each a backslash and a quote) of such a command line.
    std::function<QString(const QString &value)> escapeString;
};

/// Installed at start-up, before any action runs, by whoever knows the terminals.
void setActionTerminal(ActionTerminal terminal);
/// Both functions can be called; without an installed terminal the console says so.
const ActionTerminal &actionTerminal();

} // namespace tidewright
