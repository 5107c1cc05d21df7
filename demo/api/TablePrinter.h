// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

#include <string>
#include <vector>

namespace tidewright::demo {

struct TableForm
{
    std::string includeObject; ///< the request's parameter: "Object", "None" or metadata alone
    bool hasColumns = true; ///< the later events of a watch name none
};

/// The meta.k8s.io/v1 Table that kubectl asks for when it prints rows itself. The columns of a custom kind
/// are those of its definition in the store.
std::string tableText(const ObjectStore &store, const ResourceType &type,
    const std::vector<ObjectPtr> &objects, const json &listMetadata, const TableForm &form);

} // namespace tidewright::demo
