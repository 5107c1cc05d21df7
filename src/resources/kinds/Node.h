// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the node table.
struct Node : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString ready; ///< the status of the condition Ready: True, False or Unknown; empty without one
    QStringList pressures; ///< the other conditions that hold, such as "MemoryPressure"
    bool isCordoned = false;
    QString roles; ///< joined by ", "
    QString version; ///< of its kubelet
    QString internalIp; ///< the first one
    QString externalIp; ///< the first one, or empty
    QString cpu; ///< a quantity: what pods can have of it
    QString memory; ///< a quantity: what pods can have of it
    qint64 pods = 0; ///< how many it takes
    qint64 taints = 0;
    QString system; ///< the operating system's image
    QString kernel;
    QString runtime; ///< of containers, with its version
    Usage usage;

    friend bool operator==(const Node &, const Node &) = default;
};

/// How nodes are listed, read and shown.
ResourceKind nodeKind();

} // namespace tidewright
