// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/ObjectName.h"

#include <QHash>

namespace tidewright {

std::vector<std::pair<QString, QStringList>> byNamespace(const ObjectNames &objects)
{
    std::vector<std::pair<QString, QStringList>> groups;
    QHash<QString, std::size_t> places;
    for (const auto &[nameSpace, name] : objects) {
        if (!places.contains(nameSpace)) {
            places.insert(nameSpace, groups.size());
            groups.emplace_back(nameSpace, QStringList());
        }
        groups[places.value(nameSpace)].second.append(name);
    }
    return groups;
}

} // namespace tidewright
