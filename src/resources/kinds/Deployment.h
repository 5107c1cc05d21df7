// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the deployment table.
struct Deployment : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    /// The replica count last read from the cluster: as a listing has it, that of the pods there are; as a
    /// live stream tells it, that of the pods wanted.
    qint64 previousDesired = 0;
    /// What the table shows and the user changes; differs from `previousDesired` only while a scale is being
    /// confirmed.
    qint64 desired = 0;
    qint64 current = 0; ///< ready replicas
    qint64 upToDate = 0;
    qint64 available = 0;
    /// Told by live streams only: new pods are still to come, and nothing has given up on that.
    bool isRollingOut = false;

    /// Amber while a roll-out is under way.
    QString statusImage() const;

    friend bool operator==(const Deployment &, const Deployment &) = default;
};

/// How deployments are listed, read and shown.
ResourceKind deploymentKind();

} // namespace tidewright
