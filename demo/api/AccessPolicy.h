// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/ApiCall.h"
#include "base/Json.h"

#include <string>
#include <utility>
#include <vector>

namespace tidewright::demo {

/// What the only user of the clusters may not do; at first he may do everything. The same in every cluster
/// and namespace.
class AccessPolicy
{
public:
    /// "delete pods, create pods/exec, * secrets": verbs and resources with "*" for any of them; "pods" does
    /// not mean its subresources, "*" does. Throws ApiError 400 for anything else.
    explicit AccessPolicy(const std::string &denied);

    bool allows(const std::string &verb, const std::string &resource) const;

    /// Throws ApiError 403 for a request that is not allowed. A connection into a container creates it, by
    /// whatever method it is asked for.
    void check(const ApiCall &call) const;

    /// The answer to a SelfSubjectRulesReview: rules that allow the rest, of each kind that the cluster
    /// serves.
    json review(const Cluster &cluster) const;

private:
    std::vector<std::pair<std::string, std::string>> m_denied; ///< verb, resource
};

/// Whether the path is where reviews are created.
bool isRulesReview(const std::vector<std::string> &path);

/// exec, attach and the like, which are served by no handler.
bool isConnection(const std::string &subresource);

} // namespace tidewright::demo
