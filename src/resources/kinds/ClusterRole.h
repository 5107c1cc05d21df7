// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the cluster role table.
struct ClusterRole : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 ruleCount = 0;

    friend bool operator==(const ClusterRole &, const ClusterRole &) = default;
};

/// How cluster roles are listed, read and shown.
ResourceKind clusterRoleKind();

} // namespace tidewright
