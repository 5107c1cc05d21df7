// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Time.h"
#include "store/ObjectStore.h"

#include <string>

namespace tidewright::demo {

struct EventText
{
    std::string type; ///< Normal or Warning
    std::string reason;
    std::string message;
    std::string component = "kubelet";
};

/// Adds an event about an object to the object's namespace; returns its name.
std::string recordEvent(ObjectStore &store, const StoredObject &about, const EventText &text,
    Seconds time = now(), int count = 1);

} // namespace tidewright::demo
