// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

#include <QStringList>

namespace tidewright {

/// One row of the pod table. Its `startTimeString` is the pod's start time, not its creation time.
struct Pod : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 readyCount = 0;
    qint64 notReadyCount = 0;
    QString status; ///< the phase: Running, Succeeded, Pending, Failed ...
    QString reason; ///< the distinct state reasons of the containers, joined by ", "
    qint64 restarts = 0; ///< of all containers together
    QStringList containers; ///< in kubectl's order

    /// "NSStatusAvailable", "statusCompleted" or "NSStatusUnavailable".
    QString isReadyImage() const;
    /// "1/2 Running", "Succeeded", "Pending: ContainerCreating" ...
    QString isReadyText() const;

    friend bool operator==(const Pod &a, const Pod &b);
};

/// How pods are listed, read and shown.
ResourceKind podKind();

} // namespace tidewright
