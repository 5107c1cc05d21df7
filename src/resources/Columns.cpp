// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/Columns.h"

#include "platform/Timestamp.h"

#include <limits>

namespace tidewright {

Column nameColumn(int width)
{
    return {QStringLiteral("name"), QStringLiteral("Name"),
        [](const KubeTableItem &item) { return item.name; },
        [](const KubeTableItem &item) { return SortKey(item.nameSortKey); }, Qt::AlignLeft | Qt::AlignVCenter,
        width};
}

Column ageColumn()
{
    const auto sortKey = [](const KubeTableItem &item) {
        const std::optional<qint64> start = parseTimestamp(item.startTimeString);
        return SortKey(start ? -static_cast<double>(*start) : std::numeric_limits<double>::infinity());
    };
    return {QStringLiteral("age"), QStringLiteral("Age"),
        [](const KubeTableItem &item) { return item.getAge(); }, sortKey, Qt::AlignLeft | Qt::AlignVCenter,
        100};
}

} // namespace tidewright
