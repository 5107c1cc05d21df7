// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/Availability.h"
#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// Columns that every kind has.
Column nameColumn(int width = 260);
/// Ordered by time, the youngest first; unknown ages stand at the end.
Column ageColumn(int width = 100);

/// The order of texts as people count: "web-2" before "web-10".
SortKey textSortKey(const QString &text);
/// Of a timestamp: the latest first; what is none stands at the end.
SortKey timeSortKey(const QString &timestamp);

// The columns of a kind whose rows are `Item`. What a column shows is a member of the row or a function of
// it.

template <typename Item, typename Text>
Column textColumn(const char *identifier, const QString &title, Text text, int width)
{
    const auto get = [text](const KubeTableItem &item) -> QString {
        return std::invoke(text, static_cast<const Item &>(item));
    };
    return {QString::fromLatin1(identifier), title, get,
        [get](const KubeTableItem &item) { return textSortKey(get(item)); }, Qt::AlignLeft | Qt::AlignVCenter,
        width};
}

template <typename Item, typename Number>
Column numberColumn(const char *identifier, const QString &title, Number number, int width)
{
    const auto get = [number](const KubeTableItem &item) -> qint64 {
        return std::invoke(number, static_cast<const Item &>(item));
    };
    return {QString::fromLatin1(identifier), title,
        [get](const KubeTableItem &item) { return QString::number(get(item)); },
        [get](const KubeTableItem &item) { return SortKey(static_cast<double>(get(item))); },
        Qt::AlignRight | Qt::AlignVCenter, width};
}

/// The time since `timestamp`, in the words of `text`.
template <typename Item, typename Text, typename Timestamp>
Column timeColumn(const char *identifier, const QString &title, Text text, Timestamp timestamp, int width)
{
    Column column = textColumn<Item>(identifier, title, text, width);
    column.sortKey = [timestamp](const KubeTableItem &item) {
        return timeSortKey(std::invoke(timestamp, static_cast<const Item &>(item)));
    };
    column.movesWithTime = true;
    return column;
}

/// Whether there are as many as wanted: an image with words, the worst first.
template <typename Item, typename Available, typename Wanted>
Column availabilityColumn(Available available, Wanted wanted, int width)
{
    Column column = textColumn<Item>(
        "status", QStringLiteral("Status"),
        [available, wanted](const Item &item) {
            return availabilityText(std::invoke(available, item), std::invoke(wanted, item));
        },
        width);
    column.sortKey = [available, wanted](const KubeTableItem &row) {
        const auto &item = static_cast<const Item &>(row);
        const qint64 want = std::invoke(wanted, item);
        const auto there = static_cast<double>(std::invoke(available, item));
        return SortKey(want > 0 ? there / static_cast<double>(want) : 2);
    };
    column.image = [available, wanted](const KubeTableItem &row) {
        const auto &item = static_cast<const Item &>(row);
        return availabilityImage(std::invoke(available, item), std::invoke(wanted, item));
    };
    return column;
}

} // namespace tidewright
