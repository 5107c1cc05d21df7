// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

#include <string>
#include <vector>

namespace tidewright::demo {

// The meta.k8s.io/v1 Table that kubectl asks for when it prints rows itself. includeObject is the request's
// parameter: "Object", "None" or metadata alone.
std::string tableText(const ResourceType &type, const std::vector<ObjectPtr> &objects,
    const json &listMetadata, const std::string &includeObject);

} // namespace tidewright::demo
