// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QStringList>

namespace tidewright {

/// Which object of a kind is meant.
struct ObjectName
{
    QString nameSpace; ///< without meaning for kinds that the whole cluster shares
    QString name;

    bool operator==(const ObjectName &) const = default;
};

using ObjectNames = QList<ObjectName>;

} // namespace tidewright
