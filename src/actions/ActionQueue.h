// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/threads/DispatchQueue.h"

namespace tidewright {

/// The queue on which all action scripts and their Python callbacks run, several at a time. Any thread.
DispatchQueue &customActionQueue();

} // namespace tidewright
