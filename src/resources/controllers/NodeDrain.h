// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QStringList>

namespace tidewright {

/// What draining a node does to the pods on it. A plain value.
struct DrainPlan
{
    QStringList leaving; ///< "NAMESPACE/NAME" of the pods that are evicted
    QStringList staying; ///< of daemon sets, or of the node itself
    QStringList unmanaged; ///< among the leaving: nothing brings them back
    QStringList withLocalData; ///< among the leaving: they keep data in volumes that go with them

    /// The words behind "kubectl" that list the pods of a node as `read` wants them.
    static QStringList podsArguments(const QString &node);
    static DrainPlan read(const QByteArray &pods);

    /// What goes, what stays, and what may keep kubectl from it; several lines.
    QString text(const QString &node) const;
};

} // namespace tidewright
