// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tidewright {

/// What a process settles for itself before it does anything else. For main(), before there are threads;
/// children start as if none of it had been done.

/// Ignores the signals whose reason the failed write tells as well: SIGPIPE (nobody reads any more, EPIPE)
/// and SIGXFSZ (a limit on the size of files, EFBIG). Unhandled they would end the program.
void ignoreHarmlessSignals();

} // namespace tidewright
