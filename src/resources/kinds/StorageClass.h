// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the storage class table.
struct StorageClass : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    bool isDefault = false; ///< claims that name no class get this one
    bool hasOldMark = false; ///< it is so by the annotation of clusters before 1.6, or by that too
    QString provisioner;
    QString reclaimPolicy;
    QString bindingMode;
    bool canExpand = false;

    friend bool operator==(const StorageClass &, const StorageClass &) = default;
};

/// How storage classes are listed, read and shown.
ResourceKind storageClassKind();

} // namespace tidewright
