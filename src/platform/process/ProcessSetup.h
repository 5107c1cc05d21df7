// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/resource.h>

namespace tidewright {

// What a process settles for itself before it does anything else: for main(), before there are threads.
// Children start as if none of it had been done.

/// Ignores the signals whose reason the failed write tells as well: SIGPIPE (nobody reads any more, EPIPE)
/// and SIGXFSZ (a limit on the size of files, EFBIG). Unhandled they would end the program. Takes back an
/// inherited SIGCHLD that is ignored: the kernel would reap the children, and nobody learn how they ended.
void settleSignals();

/// Lets the process have as many file descriptors as the system allows it: each followed log takes about
/// five.
void raiseDescriptorLimit();
/// The soft limit that children get, the one from before; 0 when it has not been raised. Any thread.
rlim_t childDescriptorLimit();

} // namespace tidewright
