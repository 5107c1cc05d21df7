// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QStringList>

#include <utility>
#include <vector>

namespace tidewright {

/// Which object of a kind is meant.
struct ObjectName
{
    QString nameSpace; ///< without meaning for kinds that the whole cluster shares
    QString name;

    bool operator==(const ObjectName &) const = default;
};

using ObjectNames = QList<ObjectName>;

/// The names of each namespace, both in the order in which they come first.
std::vector<std::pair<QString, QStringList>> byNamespace(const ObjectNames &objects);

} // namespace tidewright
