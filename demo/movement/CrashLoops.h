// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movement/Schedule.h"
#include "store/ObjectStore.h"

namespace tidewright::demo {

/// Lets the containers that crash start again, fail again, and say so in events: what goes on in a cluster
/// that nobody touches. Both must live as long as the schedule runs.
void beginCrashLoops(ObjectStore &store, Schedule &schedule);

} // namespace tidewright::demo
