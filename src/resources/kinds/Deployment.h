// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the deployment table.
struct Deployment : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 previousDesired = 0; ///< the replica count last read from the cluster
    /// What the table shows and the user changes; differs from `previousDesired` only while a scale is being
    /// confirmed.
    qint64 desired = 0;
    qint64 current = 0; ///< ready replicas
    qint64 upToDate = 0;
    qint64 available = 0;

    friend bool operator==(const Deployment &, const Deployment &) = default;
};

/// How deployments are listed, read and shown.
ResourceKind deploymentKind();

} // namespace tidewright
