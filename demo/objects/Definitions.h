// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

namespace tidewright::demo {

/// Serves the kind that a custom resource definition declares, in its first two versions, and marks the
/// definition as established. Later changes of the definition change nothing but what tables show.
const ResourceType &serveDefined(ObjectStore &store, const StoredObject &definition);
/// The definition is gone: so are all objects of its kind.
void stopServingDefined(ObjectStore &store, const StoredObject &definition);

} // namespace tidewright::demo
