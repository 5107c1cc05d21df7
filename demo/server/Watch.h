// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "server/ApiCall.h"

namespace tidewright::demo {

// GET with watch=true: a stream of change events that ends with the client, after timeoutSeconds, or at once
// when the asked version is too old.
void watchList(const ApiCall &call);

} // namespace tidewright::demo
