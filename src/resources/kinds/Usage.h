// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/Columns.h"

#include <QObject>

namespace tidewright {

// What objects use of a machine, for kinds of which `kubectl top` tells it (ResourceKind::topWord).

/// In cores, with three decimals; a dash for an unknown amount. Any thread.
QString usedCoresText(double cores);
/// "34 Mi", "1.5 Gi"; a dash for an unknown amount. Any thread.
QString usedBytesText(double bytes);
/// What is unknown has no place in an order.
double usedSortKey(double amount);

/// The column, hidden at first, with where its figures come from.
Column asUsage(Column column, const QString &explanation);

// `Item` has a member `usage`.

template <typename Item> Column usedCoresColumn(const char *identifier, const QString &title)
{
    Column column = textColumn<Item>(
        identifier, title, [](const Item &item) { return usedCoresText(item.usage.cores); }, 85);
    column
        = sortedBy<Item>(std::move(column), [](const Item &item) { return usedSortKey(item.usage.cores); });
    column.showsNumber = true;
    return asUsage(std::move(column), QObject::tr("CPU cores in use."));
}

template <typename Item> Column usedBytesColumn(const char *identifier, const QString &title)
{
    Column column = textColumn<Item>(
        identifier, title, [](const Item &item) { return usedBytesText(item.usage.bytes); }, 110);
    column
        = sortedBy<Item>(std::move(column), [](const Item &item) { return usedSortKey(item.usage.bytes); });
    return asUsage(std::move(column), QObject::tr("Memory in use."));
}

/// Says what `kubectl top` calls the kind, whose rows are `Item`.
template <typename Item> void setUsage(ResourceKind &kind, const QString &topWord)
{
    kind.topWord = topWord;
    kind.usage = [](const KubeTableItem &row) { return static_cast<const Item &>(row).usage; };
    kind.assignUsage = [](const Usage &usage, KubeTableItem &row) { static_cast<Item &>(row).usage = usage; };
}

} // namespace tidewright
