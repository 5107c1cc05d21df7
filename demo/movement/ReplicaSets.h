// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

namespace tidewright::demo {

/// The replica set with the pods of a deployment as it is now (`parsed`): the one of its template, which
/// becomes the newest revision, or a new one without replicas. Of a paused one it stays the current one.
ObjectPtr replicaSetFor(ObjectStore &store, const StoredObject &deployment, const json &parsed);

} // namespace tidewright::demo
