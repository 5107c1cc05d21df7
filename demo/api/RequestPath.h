// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

#include <optional>
#include <string>
#include <vector>

namespace tidewright::demo {

/// What a URL path names, below the cluster's own prefix: a kind, maybe a namespace, maybe one object, maybe
/// a subresource of it.
struct ResourcePath
{
    const ResourceType *type = nullptr;
    std::string version; ///< as asked; may be the type's older version
    std::string ns;
    std::string name;
    std::string subresource;
};

/// "/api/v1/namespaces/shop/pods/x/log" in its parts; empty parts are dropped.
std::vector<std::string> splitPath(const std::string &path);

/// Nothing when the parts do not name a kind that the store serves.
std::optional<ResourcePath> parseResourcePath(
    const std::vector<std::string> &parts, const ObjectStore &store);

} // namespace tidewright::demo
