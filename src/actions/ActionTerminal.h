// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

namespace tidewright {

/// Runs a command line in a new terminal window; see external/TerminalQuoting.h for how it is written.
/// `shown` is what a reader is told of it, without secrets. Called on a thread of the custom action queue;
/// returns when the terminal was told, and reports its failures itself. `usedFile` (may be empty) is a file
/// that the terminal keeps a shared lock on for as long as what it runs may read it.
using ActionTerminal
    = std::function<void(const QString &commandLine, const QString &shown, const QString &usedFile)>;

/// What actions that open in a terminal run in. At first it is the user's preferred terminal; null restores
/// that. Before any action runs.
void setActionTerminal(ActionTerminal terminal);
const ActionTerminal &actionTerminal();

} // namespace tidewright
