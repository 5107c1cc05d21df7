// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the persistent volume claim table.
struct PersistentVolumeClaim : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString phase; ///< Pending, Bound or Lost
    bool isTerminating = false;
    QString volume; ///< empty while none is bound
    QString capacity; ///< a quantity: of the volume
    QString requested; ///< a quantity
    QString accessModes; ///< "RWO, ROX"
    QString storageClass;
    QString volumeMode; ///< Filesystem or Block

    friend bool operator==(const PersistentVolumeClaim &, const PersistentVolumeClaim &) = default;
};

/// How persistent volume claims are listed, read and shown.
ResourceKind persistentVolumeClaimKind();

} // namespace tidewright
