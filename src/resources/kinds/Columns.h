// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/text/NaturalOrder.h"
#include "resources/kinds/Availability.h"
#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// Columns that every kind has.
Column nameColumn(int width = 260);
/// For tables of all namespaces, behind the name. Its identifier is `namespaceColumnId`.
Column namespaceColumn();
inline constexpr QLatin1String namespaceColumnId("namespace");
/// Ordered by time, the youngest first; unknown ages stand at the end.
Column ageColumn(int width = 100);

/// The order of texts as people count: "web-2" before "web-10".
SortKey textSortKey(const QString &text);
/// Of a timestamp: the latest first; what is none stands at the end.
SortKey timeSortKey(const QString &timestamp);

// The columns of a kind whose rows are `Item`. What a column shows is a member of the row or a function of
// it.

/// That member or function, for any row of the kind.
template <typename Item, typename Member> auto ofRow(Member member)
{
    return [member](const KubeTableItem &row) -> decltype(auto) {
        return std::invoke(member, static_cast<const Item &>(row));
    };
}

/// The column with the name of a state image beside its text.
template <typename Item, typename Image> Column withImage(Column column, Image image)
{
    column.image = ofRow<Item>(image);
    return column;
}

/// The column with the name of a text colour.
template <typename Item, typename Colour> Column withColour(Column column, Colour colour)
{
    column.colour = ofRow<Item>(colour);
    return column;
}

/// The column ordered by a number.
template <typename Item, typename Number> Column sortedBy(Column column, Number number)
{
    column.sortKey = [of = ofRow<Item>(number)](
                         const KubeTableItem &row) { return SortKey(static_cast<double>(of(row))); };
    return column;
}

template <typename Item, typename Text>
Column textColumn(const char *identifier, const QString &title, Text text, int width)
{
    const auto get = ofRow<Item>(text);
    return {QString::fromLatin1(identifier), title, get,
        [get](const KubeTableItem &item) { return textSortKey(get(item)); }, Qt::AlignLeft | Qt::AlignVCenter,
        width};
}

template <typename Item, typename Number>
Column numberColumn(const char *identifier, const QString &title, Number number, int width)
{
    const auto get = ofRow<Item>(number);
    Column column{QString::fromLatin1(identifier), title,
        [get](const KubeTableItem &item) { return QString::number(get(item)); },
        [get](const KubeTableItem &item) { return SortKey(static_cast<double>(get(item))); },
        Qt::AlignRight | Qt::AlignVCenter, width};
    column.showsNumber = true;
    return column;
}

/// The time since `timestamp`, in the words of `text`.
template <typename Item, typename Text, typename Timestamp>
Column timeColumn(const char *identifier, const QString &title, Text text, Timestamp timestamp, int width)
{
    Column column = textColumn<Item>(identifier, title, text, width);
    column.sortKey = [of = ofRow<Item>(timestamp)](const KubeTableItem &row) { return timeSortKey(of(row)); };
    column.movesWithTime = true;
    return column;
}

/// The column, hidden until the header's menu shows it.
Column hiddenAtFirst(Column column);

/// How bad a state image is, 0 being the worst: red, amber, green, what has been completed, and no image.
int rankOfImage(const QString &name);

/// The column with a state image, ordered by that, trouble first, and then by its text.
template <typename Item, typename Image> Column troubleFirst(Column column, Image image)
{
    column = withImage<Item>(std::move(column), image);
    column.sortKey = [text = column.text, image = column.image](const KubeTableItem &row) {
        const auto rank = static_cast<char>('0' + rankOfImage(image(row)));
        return SortKey(rank + naturalSortKey(text(row)));
    };
    return column;
}

/// The state of an object, in words and as what a user has to make of it.
struct ObjectState
{
    enum class Grade {
        Trouble, ///< somebody has to look
        Progress, ///< on its way, or so on purpose
        Good,
        Plain, ///< no picture
    };
    QString text;
    Grade grade = Grade::Plain;
};

/// The name of the state image of a grade; empty for none.
QString gradeImage(ObjectState::Grade grade);

/// A state with its picture, trouble first.
template <typename Item, typename State>
Column stateColumn(const char *identifier, const QString &title, State state, int width)
{
    const auto get = ofRow<Item>(state);
    const auto text = [get](const Item &item) { return get(item).text; };
    const auto image = [get](const Item &item) { return gradeImage(get(item).grade); };
    return troubleFirst<Item>(textColumn<Item>(identifier, title, text, width), image);
}

/// Whether there are as many as wanted: an image with words, the worst first.
template <typename Item, typename Available, typename Wanted>
Column availabilityColumn(Available available, Wanted wanted, int width)
{
    const auto text = [available, wanted](const Item &item) {
        return availabilityText(std::invoke(available, item), std::invoke(wanted, item));
    };
    const auto part = [available, wanted](const Item &item) {
        const qint64 want = std::invoke(wanted, item);
        const auto there = static_cast<double>(std::invoke(available, item));
        return want > 0 ? there / static_cast<double>(want) : 2;
    };
    const auto image = [available, wanted](const Item &item) {
        return availabilityImage(std::invoke(available, item), std::invoke(wanted, item));
    };
    const Column column = textColumn<Item>("status", QStringLiteral("Status"), text, width);
    return withImage<Item>(sortedBy<Item>(column, part), image);
}

} // namespace tidewright
