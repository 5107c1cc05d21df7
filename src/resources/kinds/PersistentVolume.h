// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the persistent volume table.
struct PersistentVolume : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString capacity; ///< a quantity such as "20Gi"
    QString accessModes; ///< "RWO, ReadOnlyMany"
    QString reclaimPolicy;
    QString status; ///< the phase: Available, Bound, Released, Failed
    QString claim; ///< NAMESPACE/NAME
    QString storageClass;
    QString reason; ///< always empty

    /// "NSStatusAvailable" while the volume can be claimed, otherwise "NSStatusUnavailable".
    QString statusImage() const;

    friend bool operator==(const PersistentVolume &, const PersistentVolume &) = default;
};

/// How persistent volumes are listed, read and shown.
ResourceKind persistentVolumeKind();

} // namespace tidewright
