// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/ActionQueue.h"

namespace tidewright {

DispatchQueue &customActionQueue()
{
    static auto *queue = new DispatchQueue("customActionQueue"); // outlives main(): scripts may still run
    return *queue;
}

} // namespace tidewright
