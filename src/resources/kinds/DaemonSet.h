// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the daemon set table.
struct DaemonSet : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 desired = 0;
    qint64 current = 0;
    qint64 ready = 0;
    qint64 uptodate = 0;
    qint64 available = 0;
    QString nodeSelector; ///< labels as "disk:ssd zone:a", or kubectl's placeholder when there is no selector

    friend bool operator==(const DaemonSet &, const DaemonSet &) = default;
};

/// How daemon sets are listed, read and shown.
ResourceKind daemonSetKind();

} // namespace tidewright
