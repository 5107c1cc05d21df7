// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ProcessSetup.h"

#include <csignal>

namespace tidewright {

void ignoreHarmlessSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace tidewright
