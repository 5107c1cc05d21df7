// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the stateful set table.
struct StatefulSet : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 wanted = 0; ///< what its specification says
    qint64 current = 0; ///< pods that are there
    qint64 ready = 0;
    qint64 upToDate = 0; ///< pods of the newest revision
    bool updatesOnDelete = false; ///< a new revision waits for somebody to delete the old pods
    QString service; ///< the one that names its pods
    QString images; ///< of its containers, joined by ", "

    friend bool operator==(const StatefulSet &, const StatefulSet &) = default;
};

/// How stateful sets are listed, read and shown.
ResourceKind statefulSetKind();

} // namespace tidewright
