// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/ApiCall.h"
#include "api/Disturbance.h"

#include <chrono>

namespace tidewright::demo {

/// GET with watch=true: the state (unless a version is asked for), then every change, as lines of JSON until
/// the client leaves or timeoutSeconds are over. Bookmarks come that far apart when they are allowed. A
/// version that is too long ago is told in the stream. Throws ApiError for what a server refuses at once.
void watchList(const ApiCall &call, Disturbance &disturbance, std::chrono::milliseconds bookmarkInterval);

} // namespace tidewright::demo
