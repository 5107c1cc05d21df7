// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Time.h"
#include "store/ObjectStore.h"

#include <string>

namespace tidewright::demo {

/// Objects that belong to no namespace, and the events of seeded pods.
void plantNodes(ObjectStore &store, Seconds age);
void plantVolumes(ObjectStore &store);
void plantClusterRoles(ObjectStore &store);
void plantPodEvents(
    ObjectStore &store, const StoredObject &pod, const json &parsed, const std::string &waitingReason);

} // namespace tidewright::demo
