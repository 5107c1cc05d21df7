// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/ProcessSetup.h"

#include <atomic>
#include <csignal>

namespace tidewright {

namespace {

std::atomic<rlim_t> earlierLimit = 0;

} // namespace

void settleSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);
}

void raiseDescriptorLimit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= limit.rlim_max) {
        return;
    }
    const rlim_t before = limit.rlim_cur;
    limit.rlim_cur = limit.rlim_max;
    if (::setrlimit(RLIMIT_NOFILE, &limit) == 0) {
        earlierLimit = before;
    }
}

rlim_t childDescriptorLimit()
{
    return earlierLimit;
}

} // namespace tidewright
