// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/ActionTerminal.h"

#include "external/Terminal.h"

namespace tidewright {

namespace {

ActionTerminal &installed()
{
    static ActionTerminal terminal = runInTerminal;
    return terminal;
}

} // namespace

void setActionTerminal(ActionTerminal terminal)
{
    installed() = terminal ? std::move(terminal) : ActionTerminal(runInTerminal);
}

const ActionTerminal &actionTerminal()
{
    return installed();
}

} // namespace tidewright
