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

    // Told by live streams only.
    QString node;
    QString ip;
    QString created; ///< a timestamp
    bool isDeleting = false;
    QString podReason; ///< of the pod as a whole, such as Evicted
    QString initReason; ///< the distinct state reasons of the init containers, joined by ", "

    Usage usage; ///< of its containers together

    /// "NSStatusAvailable", "statusCompleted", "NSStatusPartiallyAvailable" while it comes or goes, or
    /// "NSStatusUnavailable".
    QString isReadyImage() const;
    /// "1/2 Running", "Succeeded", "Pending: ContainerCreating" ...
    QString isReadyText() const;

    /// Why it is as it is, the most telling word first: "Terminating", "Evicted", "Init: CrashLoopBackOff",
    /// "ImagePullBackOff" ...; empty when there is nothing to say.
    QString why() const;
    /// The age goes by the creation time while the pod has not been started.
    QString getAge() const override;
    const QString &ageTime() const { return startTimeString.isEmpty() ? created : startTimeString; }

    friend bool operator==(const Pod &a, const Pod &b);
};

/// How pods are listed, read and shown.
ResourceKind podKind();

} // namespace tidewright
