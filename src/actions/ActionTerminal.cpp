// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/ActionTerminal.h"

#include "core/Console.h"

namespace tidewright {

namespace {

ActionTerminal &installed()
{
    static ActionTerminal terminal{
        [](const QString &) { postConsoleError(QStringLiteral("There is no terminal to run actions in.")); },
        [](const QString &value) { return value; }};
    return terminal;
}

} // namespace

void setActionTerminal(ActionTerminal terminal)
{
    installed() = std::move(terminal);
}

const ActionTerminal &actionTerminal()
{
    return installed();
}

} // namespace tidewright
