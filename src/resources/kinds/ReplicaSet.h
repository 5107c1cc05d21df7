// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the replica set table.
struct ReplicaSet : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 desired = 0;
    qint64 current = 0; ///< available replicas
    qint64 ready = 0;

    friend bool operator==(const ReplicaSet &, const ReplicaSet &) = default;
};

/// How replica sets are listed, read and shown.
ResourceKind replicaSetKind();

} // namespace tidewright
