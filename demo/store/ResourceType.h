// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace tidewright::demo {

/// One served kind of object: its words in URLs, discovery and on the command line.
struct ResourceType
{
    std::string group; ///< empty for the core group
    std::string version;
    std::string plural;
    std::string singular;
    std::string kind;
    std::vector<std::string> shortNames;
    bool namespaced = true;
    bool inCategoryAll = false;
    std::vector<std::string> subresources; ///< status, scale, log
    std::string olderVersion; ///< a second version of the group that carries the same objects
    bool isCustom = false; ///< defined by a custom resource definition
    bool isReadOnly = false; ///< can be got and listed, nothing else

    std::string apiVersion() const { return apiVersionAs(version); }
    /// "GROUP/VERSION", or the version alone for the core group.
    std::string apiVersionAs(const std::string &asked) const;
    bool hasSubresource(const std::string &name) const;
};

/// Those that every cluster has; a store knows the custom ones too.
const std::vector<ResourceType> &resourceTypes();

/// Kinds are unique here, so the kind alone names the type. The kind must be one of the table.
const ResourceType &typeOfKind(const std::string &kind);

/// Whether a path of these words means the type, by its older version too.
bool isAddressed(const ResourceType &type, const std::string &group, const std::string &version,
    const std::string &plural);

} // namespace tidewright::demo
