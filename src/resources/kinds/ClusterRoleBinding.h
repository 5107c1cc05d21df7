// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/Subjects.h"

namespace tidewright {

/// One row of the cluster role binding table.
struct ClusterRoleBinding : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    RoleGrant grant;

    friend bool operator==(const ClusterRoleBinding &, const ClusterRoleBinding &) = default;
};

/// How cluster role bindings are listed, read and shown.
ResourceKind clusterRoleBindingKind();

} // namespace tidewright
