// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movement/Controllers.h"
#include "movement/Schedule.h"
#include "store/ObjectStore.h"

namespace tidewright::demo {

/// What goes on in a cluster that nobody touches: crash-looping containers start again and fail, cron jobs
/// run, events appear and old ones go. All three must live as long as the schedule runs.
void beginDailyLife(ObjectStore &store, Schedule &schedule, Controllers &controllers);

} // namespace tidewright::demo
