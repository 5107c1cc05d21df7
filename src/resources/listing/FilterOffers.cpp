// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/FilterOffers.h"

#include "platform/text/DisplayText.h"
#include "platform/text/NaturalOrder.h"
#include "resources/kinds/Columns.h"
#include "resources/listing/RowFilter.h"

#include <QObject>
#include <QSet>

#include <algorithm>

namespace tidewright {

namespace {

constexpr std::size_t rowsLookedAt = 5000;
constexpr qsizetype valuesOffered = 12;
constexpr qsizetype longestValue = 60;

QString descriptionOf(const Column &column)
{
    return column.showsNumber  ? QObject::tr("%1: 0, >0, <=3").arg(column.title)
        : column.movesWithTime ? QObject::tr("%1: <1h, >2d").arg(column.title)
                               : QObject::tr("in the column %1").arg(column.title);
}

/// Columns with a word of their own come first, under that.
bool hasOtherWord(const Column &column)
{
    static const QStringList identifiers{QStringLiteral("name"), QStringLiteral("namespace"),
        QStringLiteral("status"), QStringLiteral("reason")};
    return identifiers.contains(column.identifier);
}

QStringList examples(const Column &column)
{
    return column.showsNumber  ? QStringList{QStringLiteral(">0"), QStringLiteral("0")}
        : column.movesWithTime ? QStringList{QStringLiteral("<10m"), QStringLiteral("<1h"),
              QStringLiteral("<1d"), QStringLiteral(">7d")}
                               : QStringList();
}

bool canBeOffered(const QString &value)
{
    return !value.isEmpty() && value.size() <= longestValue && !value.contains(QLatin1Char('"'))
        && display_text::clean(value) == value;
}

/// The distinct texts of a column that contain `part`, as people count.
QStringList valuesOf(const Column &column, const Rows &rows, const QString &part)
{
    QSet<QString> values;
    const std::size_t step = rows.size() / rowsLookedAt + 1;
    for (std::size_t i = 0; i < rows.size() && values.size() < valuesOffered; i += step) {
        const QString value = column.text(*rows[i]);
        if (value.contains(part, Qt::CaseInsensitive) && canBeOffered(value)) {
            values.insert(value);
        }
    }
    QStringList sorted(values.cbegin(), values.cend());
    std::sort(sorted.begin(), sorted.end(),
        [](const QString &a, const QString &b) { return naturalSortKey(a) < naturalSortKey(b); });
    return sorted;
}

QList<FilterOffer> valueOffers(const FilterWord &word, const ResourceKind &kind, const Rows &rows)
{
    QStringList values;
    for (const Column *column : columnsOfWord(word.column, kind.columns)) {
        const bool isText = !column->showsNumber && !column->movesWithTime;
        values += isText ? valuesOf(*column, rows, word.text) : examples(*column).filter(word.text);
    }
    values.removeDuplicates();
    values.removeAll(word.text); // it stands there
    QList<FilterOffer> offers;
    for (const QString &value : values) {
        offers.append({word.column + QLatin1Char(':') + quotedForFilter(value), {}});
    }
    return offers;
}

} // namespace

QList<FilterOffer> filterHelp(const ResourceKind &kind)
{
    QList<FilterOffer> help;
    if (kind.namespaced) {
        help.append({QStringLiteral("ns:"), QObject::tr("the namespace")});
    }
    if (!columnsOfWord(QStringLiteral("status"), kind.columns).empty()) {
        help.append({QStringLiteral("status:"), QObject::tr("the status, or its reason")});
    }
    help.append({QStringLiteral("label:"), QObject::tr("a label, such as label:app=cart")});
    for (const Column &column : kind.columns) {
        if (!hasOtherWord(column)) {
            help.append({QString(column.title).remove(QLatin1Char(' ')).toLower() + QLatin1Char(':'),
                descriptionOf(column)});
        }
    }
    return help;
}

FilterOffers filterOffers(const QString &text, qsizetype cursor, const ResourceKind &kind, const Rows &rows)
{
    const std::vector<FilterWord> words = filterWords(text.first(cursor));
    FilterWord word;
    word.begin = word.end = cursor;
    if (!words.empty() && words.back().end == cursor) {
        word = words.back();
    }
    FilterOffers result{word.begin, word.end, word.namesColumn, {}};
    QList<FilterOffer> all = word.namesColumn ? valueOffers(word, kind, rows) : filterHelp(kind);
    const QString part = word.text == QLatin1String("?") ? QString() : word.text;
    for (FilterOffer &offer : all) {
        if (word.namesColumn || offer.word.startsWith(part, Qt::CaseInsensitive)) {
            offer.word.prepend(word.isExcluding ? QStringLiteral("-") : QString());
            result.offers.append(offer);
        }
    }
    return result;
}

} // namespace tidewright
