// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/ApiCall.h"
#include "api/Disturbance.h"
#include "logs/LogPace.h"

namespace tidewright::demo {

/// GET of a pod's log: container, follow, tailLines, previous, timestamps, limitBytes. A followed log talks
/// on until the client or the pod goes away. Throws ApiError.
void readLogs(const ApiCall &call, LogPace &pace, const Disturbance &disturbance);

} // namespace tidewright::demo
