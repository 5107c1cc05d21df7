// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Columns.h"

#include "platform/text/NaturalOrder.h"
#include "platform/text/Timestamp.h"

#include <limits>

namespace tidewright {

SortKey textSortKey(const QString &text)
{
    constexpr qsizetype ordered = 1000; // no more of a text is shown
    return SortKey(naturalSortKey(text.left(ordered)));
}

SortKey timeSortKey(const QString &timestamp)
{
    const std::optional<qint64> time = parseTimestamp(timestamp);
    return SortKey(time ? -static_cast<double>(*time) : std::numeric_limits<double>::infinity());
}

QString gradeImage(ObjectState::Grade grade)
{
    switch (grade) {
    case ObjectState::Grade::Trouble:
        return QStringLiteral("NSStatusUnavailable");
    case ObjectState::Grade::Progress:
        return QStringLiteral("NSStatusPartiallyAvailable");
    case ObjectState::Grade::Good:
        return QStringLiteral("NSStatusAvailable");
    case ObjectState::Grade::Plain:
        break;
    }
    return {};
}

Column hiddenAtFirst(Column column)
{
    column.hidden = true;
    return column;
}

int rankOfImage(const QString &name)
{
    static const QStringList worstFirst{QStringLiteral("NSStatusUnavailable"),
        QStringLiteral("NSStatusPartiallyAvailable"), QStringLiteral("NSStatusAvailable"),
        QStringLiteral("statusCompleted")};
    const qsizetype place = worstFirst.indexOf(name);
    return static_cast<int>(place < 0 ? worstFirst.size() : place);
}

Column nameColumn(int width)
{
    return {QStringLiteral("name"), QStringLiteral("Name"),
        [](const KubeTableItem &item) { return item.name; },
        [](const KubeTableItem &item) { return SortKey(item.nameSortKey); }, Qt::AlignLeft | Qt::AlignVCenter,
        width};
}

Column namespaceColumn()
{
    Column column = textColumn<KubeTableItem>(
        namespaceColumnId.data(), QStringLiteral("Namespace"), &KubeTableItem::nameSpace, 130);
    column.hidden = true;
    return column;
}

Column ageColumn(int width)
{
    return timeColumn<KubeTableItem>(
        "age", QStringLiteral("Age"), &KubeTableItem::getAge, &KubeTableItem::startTimeString, width);
}

} // namespace tidewright
