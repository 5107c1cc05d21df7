// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/text/NaturalOrder.h"
#include "platform/text/Timestamp.h"
#include "resources/kinds/ResourceKind.h"

#include <limits>

namespace tidewright {

/// A row with a number, and a text that a line leaves as it was when its field is empty.
struct SampleItem : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 count = 0;
    QString note;

    void assign(const QString &countField, const QString &noteField, const QString &startField)
    {
        count = countField.toLongLong();
        note = noteField.isEmpty() ? note : noteField;
        startTimeString = startField;
    }

    friend bool operator==(const SampleItem &, const SampleItem &) = default;
};

inline const SampleItem &sample(const KubeTableItem &item)
{
    return static_cast<const SampleItem &>(item);
}

inline ResourceKind sampleKind()
{
    ResourceKind kind = kindOf<SampleItem>();
    kind.fieldCount = 4;
    kind.assign = [](const Fields &fields, KubeTableItem &item) {
        static_cast<SampleItem &>(item).assign(
            QString::fromUtf8(fields[1]), QString::fromUtf8(fields[2]), QString::fromUtf8(fields[3]));
    };
    const auto column = [&kind](const QString &identifier, auto text, auto sortKey) {
        kind.columns.push_back({identifier, identifier.toUpper(), text, sortKey});
    };
    using Item = KubeTableItem;
    column(
        QStringLiteral("name"), [](const Item &i) { return i.name; },
        [](const Item &i) { return SortKey(i.nameSortKey); });
    column(
        QStringLiteral("count"), [](const Item &i) { return QString::number(sample(i).count); },
        [](const Item &i) { return SortKey(static_cast<double>(sample(i).count)); });
    kind.columns.back().showsNumber = true;
    column(
        QStringLiteral("note"), [](const Item &i) { return sample(i).note; },
        [](const Item &i) { return SortKey(naturalSortKey(sample(i).note)); });
    column(
        QStringLiteral("age"), [](const Item &i) { return i.getAge(); },
        [](const Item &i) {
            const auto start = parseTimestamp(i.startTimeString);
            return SortKey(start ? -static_cast<double>(*start) : std::numeric_limits<double>::quiet_NaN());
        });
    kind.columns.back().movesWithTime = true;
    return kind;
}

} // namespace tidewright
