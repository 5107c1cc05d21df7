// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/ServedKind.h"

#include "platform/text/DisplayText.h"
#include "platform/text/NaturalOrder.h"
#include "platform/text/Timestamp.h"
#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"
#include "resources/kinds/PrintedTable.h"

#include <QDateTime>
#include <QtEndian>

#include <bit>

namespace tidewright {

namespace {

constexpr qsizetype shownFromTheFirst = 7; // columns
const auto nameTitle = QStringLiteral("NAME");
const auto ageTitle = QStringLiteral("AGE");

struct PrintedItem : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QStringList cells; ///< without the name; empty for the age

    friend bool operator==(const PrintedItem &, const PrintedItem &) = default;
};

/// What may stand in a command line: letters, digits, dots and hyphens between them.
bool isResourceName(const QString &name)
{
    const auto isPart = [](QChar c) {
        return (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
            || (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.')
            || c == QLatin1Char('-');
    };
    return !name.isEmpty() && name.front().isLetterOrNumber()
        && std::all_of(name.begin(), name.end(), isPart);
}

bool isKind(const ServedKind &served)
{
    return isResourceName(served.plural) && (served.group.isEmpty() || isResourceName(served.group))
        && !served.kind.isEmpty() && (served.version.isEmpty() || isResourceName(served.version))
        && std::all_of(served.kind.begin(), served.kind.end(), [](QChar c) { return c.isLetterOrNumber(); });
}

/// "CertificateSigningRequest" in words; an abbreviation stays whole.
QString inWords(const QString &kind)
{
    QString words;
    for (qsizetype i = 0; i < kind.size(); ++i) {
        const bool begins = i > 0 && kind[i].isUpper()
            && (!kind[i - 1].isUpper() || (i + 1 < kind.size() && kind[i + 1].isLower()));
        if (begins) {
            words += QLatin1Char(' ');
        }
        words += kind[i];
    }
    return words;
}

/// A title in capitals in the manner of the other tables: "LAST SEEN" as "Last Seen"; what is short stands
/// for longer words as a rule ("IP").
QString columnTitle(const QString &printed)
{
    QStringList words = display_text::clean(printed).split(QLatin1Char(' '));
    for (QString &word : words) {
        if (word.size() > 3) {
            word = word.front() + word.sliced(1).toLower();
        }
    }
    return words.join(QLatin1Char(' '));
}

Column printedColumn(const QString &title, qsizetype cell)
{
    const auto text = [cell](const KubeTableItem &item) {
        return static_cast<const PrintedItem &>(item).cells.value(cell);
    };
    return {QStringLiteral("%1:%2").arg(cell).arg(title), columnTitle(title), text,
        [text, title](const KubeTableItem &item) { return printedSortKey(text(item), title); }};
}

std::vector<Column> columnsOf(const QStringList &titles)
{
    const qsizetype age = titles.indexOf(ageTitle);
    const bool areMany = titles.size() > shownFromTheFirst;
    std::vector<Column> columns{nameColumn()};
    qsizetype cell = 0;
    const qsizetype name = titles.indexOf(nameTitle);
    for (qsizetype i = 0; i < titles.size(); ++i) {
        if (i == name) {
            continue;
        }
        columns.push_back(i == age ? ageColumn() : printedColumn(titles[i], cell));
        ++cell;
        columns.back().hidden = areMany && age >= 0 && i > age;
    }
    return columns;
}

struct Span
{
    double seconds = 0;
    double precision = 0; ///< seconds that its last unit has
};

/// Of "5d3h"; nothing when it is no such text.
std::optional<Span> spanOf(const QString &age)
{
    Span span;
    double number = -1;
    for (const QChar c : age) {
        if (c >= QLatin1Char('0') && c <= QLatin1Char('9')) {
            number = std::max(number, 0.0) * 10 + c.digitValue();
            continue;
        }
        const double unit = c == QLatin1Char('s') ? 1
            : c == QLatin1Char('m')               ? 60
            : c == QLatin1Char('h')               ? 3600
            : c == QLatin1Char('d')               ? 86400
            : c == QLatin1Char('y')               ? 365.0 * 86400
                                                  : 0;
        if (number < 0 || unit == 0) {
            return std::nullopt;
        }
        span.seconds += number * unit;
        span.precision = unit;
        number = -1;
    }
    return age.isEmpty() || number >= 0 ? std::nullopt : std::optional(span);
}

std::optional<double> valueOf(const QString &cell, const QString &title)
{
    if (cell.isEmpty() || cell.front().isLetter()) { // "inf" and "nan" are words
        return std::nullopt;
    }
    bool isNumber = false;
    const QString plain = cell.endsWith(QLatin1Char('%')) ? cell.chopped(1) : cell;
    if (const double number = plain.toDouble(&isNumber); isNumber) {
        return number;
    }
    const bool isCpu = title.contains(QLatin1String("CPU"));
    if (const auto span = spanOf(cell); span && !isCpu) {
        return span->seconds;
    }
    const double quantity = quantityOf(cell);
    return quantity >= 0 ? std::optional(quantity) : std::nullopt;
}

/// In memcmp order.
QByteArray bytesOf(double number)
{
    const auto bits = std::bit_cast<quint64>(number == 0 ? 0.0 : number);
    constexpr quint64 sign = quint64(1) << 63;
    const quint64 ordered = qToBigEndian(bits & sign ? ~bits : bits | sign);
    return {reinterpret_cast<const char *>(&ordered), sizeof ordered};
}

/// The moment of a birth as `printed` tells it, which is cut to whole units. One that was told before stays
/// as long as both agree: so rows of one age keep their order, and nothing changes but what has changed.
QString birthOf(const QString &printed, const QString &before)
{
    constexpr double onTheWay = 2; // seconds that an age may have been read before it is compared
    const auto span = spanOf(printed);
    if (!span) {
        return {};
    }
    const double now = currentTime();
    if (const auto known = parseTimestamp(before)) {
        const double since = now - static_cast<double>(*known) - span->seconds;
        if (since > -onTheWay && since < span->precision + onTheWay) {
            return before;
        }
    }
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(now - span->seconds), Qt::UTC)
        .toString(Qt::ISODate);
}

/// `age`: the place of that one among the cells; -1 for none.
void assign(const Fields &fields, KubeTableItem &item, qsizetype age)
{
    auto &row = static_cast<PrintedItem &>(item);
    row.cells.clear();
    for (std::size_t i = 1; i < fields.size(); ++i) {
        row.cells.append(textOf(fields[i]));
    }
    if (age >= 0 && age < row.cells.size()) {
        row.startTimeString = birthOf(std::exchange(row.cells[age], {}), row.startTimeString);
    }
}

} // namespace

QString ServedKind::resource() const
{
    return group.isEmpty() ? plural : plural + QLatin1Char('.') + group;
}

QString ServedKind::title() const
{
    const QString singular = kind.toLower();
    qsizetype common = 0;
    while (common < singular.size() && common < plural.size() && singular[common] == plural[common]) {
        ++common;
    }
    if (common == 0) {
        return inWords(kind); // a plural of another word
    }
    return inWords(kind.first(common)) + plural.sliced(common);
}

QStringList servedKindsArguments()
{
    return {QStringLiteral("api-resources"), QStringLiteral("--verbs=list,get"), QStringLiteral("-owide")};
}

std::vector<ServedKind> parseServedKinds(const QByteArray &printed)
{
    const PrintedTable table = PrintedTable::parse(printed);
    const auto place = [&table](const char *title) { return table.titles.indexOf(QLatin1String(title)); };
    const qsizetype version = std::max(place("APIVERSION"), place("APIGROUP"));
    const bool isGroup = place("APIVERSION") < 0;
    std::vector<ServedKind> kinds;
    for (const auto &[cells, line] : table.lines) {
        const auto text = [&cells = cells](qsizetype column) {
            return column < 0 || cells.empty() ? QString() : textOf(cells[static_cast<std::size_t>(column)]);
        };
        const QString apiVersion = text(version);
        const qsizetype slash = apiVersion.indexOf(QLatin1Char('/'));
        const QString verbs = text(place("VERBS"));
        const ServedKind served{.plural = text(place("NAME")),
            .group = isGroup ? apiVersion
                : slash < 0  ? QString()
                             : apiVersion.first(slash),
            .kind = text(place("KIND")),
            .shortNames = text(place("SHORTNAMES")).split(QLatin1Char(','), Qt::SkipEmptyParts),
            .namespaced = text(place("NAMESPACED")) == QLatin1String("true"),
            .version = isGroup ? QString() : apiVersion.sliced(slash + 1),
            .watchable = verbs.isEmpty() || verbs.contains(QLatin1String("watch"))};
        if (isKind(served)) {
            kinds.push_back(served);
        }
    }
    return kinds;
}

QString settingOf(const std::vector<ServedKind> &kinds)
{
    QStringList texts;
    for (const ServedKind &served : kinds) {
        QStringList parts{served.plural, served.group, served.kind,
            served.namespaced ? QStringLiteral("namespaced") : QStringLiteral("cluster")};
        if (served.watchable && !served.version.isEmpty()) {
            parts.append(served.version);
        }
        texts.append(parts.join(QLatin1Char('/')));
    }
    return texts.join(QLatin1Char(' '));
}

std::vector<ServedKind> servedKindsFromSetting(const QString &setting)
{
    std::vector<ServedKind> kinds;
    for (const QString &text : setting.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QStringList parts = text.split(QLatin1Char('/'));
        if (parts.size() != 4 && parts.size() != 5) {
            continue;
        }
        const ServedKind served{.plural = parts[0],
            .group = parts[1],
            .kind = parts[2],
            .namespaced = parts[3] != QLatin1String("cluster"),
            .version = parts.value(4)};
        if (isKind(served)) {
            kinds.push_back(served);
        }
    }
    return kinds;
}

ResourceKind printedKind(const ServedKind &served, const QStringList &titles)
{
    ResourceKind kind = kindOf<PrintedItem>();
    kind.resourceName = served.resource();
    kind.humanReadableResourceName = inWords(served.kind).toLower();
    kind.tableName = served.title();
    kind.pluralNoun = kind.tableName.toLower();
    kind.listWord = served.resource();
    kind.outputArguments = {QStringLiteral("-o"), QStringLiteral("wide")};
    kind.namespaced = served.namespaced;
    kind.printedTitles = titles;
    kind.columns = columnsOf(titles);
    kind.fieldCount = kind.columns.size();
    QStringList others = titles;
    others.removeOne(nameTitle);
    kind.assign = [age = others.indexOf(ageTitle)](
                      const Fields &fields, KubeTableItem &item) { assign(fields, item, age); };
    if (!served.version.isEmpty()) {
        const QString group = served.group.isEmpty() ? QString() : served.group + QLatin1Char('/');
        kind.apiVersion = group + served.version;
    }
    kind.isWatchable = served.watchable;
    return kind;
}

ResourceKind versionsOf(const ResourceKind &printed)
{
    ResourceKind kind = printed;
    kind.printedTitles.reset();
    kind.outputArguments = {
        QStringLiteral("-o=jsonpath={range .items[*]}{.metadata.name}\t{.metadata.resourceVersion}\n{end}")};
    kind.fieldCount = 2;
    return kind;
}

bool showsSpanOfTime(const KubeTableItem &row)
{
    const auto &cells = static_cast<const PrintedItem &>(row).cells;
    return std::any_of(
        cells.begin(), cells.end(), [](const QString &cell) { return spanOf(cell).has_value(); });
}

SortKey printedSortKey(const QString &cell, const QString &title)
{
    if (cell.isEmpty() || cell == QLatin1String("<none>") || cell == QLatin1String("<unknown>")) {
        return SortKey(QByteArray("2"));
    }
    const std::optional<double> value = valueOf(cell, title);
    return SortKey(value ? '0' + bytesOf(*value) : '1' + naturalSortKey(cell));
}

} // namespace tidewright
