// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/RowFilter.h"

#include "platform/text/Timestamp.h"
#include "resources/kinds/Columns.h"

#include <QObject>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tidewright {

namespace {

enum class Relation { Contains, Equal, Less, LessOrEqual, Greater, GreaterOrEqual };

struct Comparison
{
    Relation relation = Relation::Contains;
    QString operand;
};

Comparison comparisonOf(const QString &text)
{
    static const std::pair<QLatin1String, Relation> signs[]{{QLatin1String(">="), Relation::GreaterOrEqual},
        {QLatin1String("<="), Relation::LessOrEqual}, {QLatin1String(">"), Relation::Greater},
        {QLatin1String("<"), Relation::Less}, {QLatin1String("="), Relation::Equal}};
    for (const auto &[sign, relation] : signs) {
        if (text.startsWith(sign)) {
            return {relation, text.sliced(sign.size()).trimmed()};
        }
    }
    return {Relation::Contains, text};
}

bool holds(double value, Relation relation, double operand)
{
    switch (relation) {
    case Relation::Less:
        return value < operand;
    case Relation::LessOrEqual:
        return value <= operand;
    case Relation::Greater:
        return value > operand;
    case Relation::GreaterOrEqual:
        return value >= operand;
    default:
        return value == operand;
    }
}

/// Seconds of "90s", "1h30m", "2d"; nothing for a text that is no duration, or not yet.
std::optional<double> durationOf(const QString &text)
{
    double sum = 0;
    qsizetype begin = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i].toLower();
        if (c.isDigit() || c == QLatin1Char('.')) {
            continue;
        }
        const double unit = c == QLatin1Char('s') ? 1
            : c == QLatin1Char('m')               ? 60
            : c == QLatin1Char('h')               ? 3600
            : c == QLatin1Char('d')               ? 86400
                                                  : 0;
        bool isNumber = false;
        const double count = QStringView(text).sliced(begin, i - begin).toDouble(&isNumber);
        if (unit == 0 || !isNumber) {
            return std::nullopt;
        }
        sum += count * unit;
        begin = i + 1;
    }
    return begin > 0 && begin == text.size() ? std::optional(sum) : std::nullopt;
}

/// For columns ordered by a number, which is what they show, or by a time, the latest first.
double numberOf(const Column &column, const KubeTableItem &row)
{
    const SortKey key = column.sortKey(row);
    const double *number = std::get_if<double>(&key);
    return number ? *number : std::nan("");
}

/// That the text of a column is the operand, or only contains it.
std::function<bool(const KubeTableItem &)> textCondition(
    const Column &column, bool isWhole, const QString &operand, const QString &homeNamespace)
{
    auto text = column.text;
    if (column.identifier == namespaceColumnId) {
        text = [homeNamespace](const KubeTableItem &row) {
            return row.nameSpace.isEmpty() ? homeNamespace : row.nameSpace;
        };
    }
    if (isWhole) {
        return [text, operand](
                   const KubeTableItem &row) { return text(row).compare(operand, Qt::CaseInsensitive) == 0; };
    }
    return [text, matcher = QStringMatcher(operand, Qt::CaseInsensitive)](
               const KubeTableItem &row) { return matcher.indexIn(text(row)) >= 0; };
}

bool isBlank(QChar c)
{
    return c.isSpace();
}

} // namespace

std::vector<FilterWord> filterWords(const QString &text)
{
    std::vector<FilterWord> words;
    for (qsizetype i = 0; i < text.size();) {
        if (isBlank(text[i])) {
            ++i;
            continue;
        }
        FilterWord word;
        word.begin = i;
        word.isExcluding = text[i] == QLatin1Char('-');
        i += word.isExcluding ? 1 : 0;
        bool isQuoted = false;
        for (; i < text.size() && (isQuoted || !isBlank(text[i])); ++i) {
            if (text[i] == QLatin1Char('"')) {
                isQuoted = !isQuoted;
            } else if (text[i] == QLatin1Char(':') && !isQuoted && !word.namesColumn
                && !word.text.isEmpty()) {
                word.namesColumn = true;
                word.column = std::exchange(word.text, QString());
            } else {
                word.text += text[i];
            }
        }
        word.end = i;
        words.push_back(word);
    }
    return words;
}

QString quotedForFilter(const QString &text)
{
    const bool needsQuotes = std::any_of(text.cbegin(), text.cend(), isBlank);
    return needsQuotes ? QLatin1Char('"') + text + QLatin1Char('"') : text;
}

std::vector<const Column *> columnsOfWord(const QString &name, const std::vector<Column> &columns)
{
    const auto isCalled = [](const Column &column, const QString &word) {
        return column.identifier.compare(word, Qt::CaseInsensitive) == 0
            || QString(column.title).remove(QLatin1Char(' ')).compare(word, Qt::CaseInsensitive) == 0;
    };
    QStringList names{name};
    if (name.compare(QLatin1String("ns"), Qt::CaseInsensitive) == 0) {
        names = QStringList{namespaceColumnId};
    } else if (name.compare(QLatin1String("status"), Qt::CaseInsensitive) == 0) {
        names.append(QStringLiteral("reason"));
    }
    std::vector<const Column *> found;
    for (const Column &column : columns) {
        if (std::any_of(
                names.cbegin(), names.cend(), [&](const QString &each) { return isCalled(column, each); })) {
            found.push_back(&column);
        }
    }
    return found;
}

RowFilter::RowFilter(const QString &text, const std::vector<Column> &columns, const QString &homeNamespace)
{
    for (const FilterWord &word : filterWords(text)) {
        const auto meant
            = word.namesColumn ? columnsOfWord(word.column, columns) : std::vector<const Column *>();
        if (word.namesColumn && word.column.compare(QLatin1String("label"), Qt::CaseInsensitive) == 0) {
            addLabel(word);
        } else if (!meant.empty()) {
            addColumns(word, meant, homeNamespace);
        } else if (word.namesColumn) {
            m_notes.append(QObject::tr("This table has no column “%1”: the word is looked for in names.")
                               .arg(word.column));
            addName(word, word.column + QLatin1Char(':') + word.text);
        } else if (!word.text.isEmpty() && word.text != QLatin1String("?")) {
            addName(word, word.text);
        }
    }
}

void RowFilter::addName(const FilterWord &word, const QString &text)
{
    m_names.push_back({QStringMatcher(text.toCaseFolded()), word.isExcluding});
}

void RowFilter::addLabel(const FilterWord &word)
{
    const QString selector = word.text.trimmed();
    if (selector.isEmpty()) {
        return;
    }
    if (!word.isExcluding) {
        m_labels.append(selector);
        return;
    }
    const auto is = [&selector](const char *text) { return selector.contains(QLatin1String(text)); };
    if (is("!") || is(",") || is(" ")) {
        m_notes.append(
            QObject::tr("“-label:” excludes a label such as “app” or “app=cart”, and no more than that."));
    } else if (is("=")) {
        const qsizetype sign = selector.indexOf(QLatin1Char('='));
        const QString value = selector.sliced(sign + (selector.contains(QLatin1String("==")) ? 2 : 1));
        m_labels.append(selector.first(sign) + QLatin1String("!=") + value);
    } else {
        m_labels.append(QLatin1Char('!') + selector);
    }
}

void RowFilter::addColumns(
    const FilterWord &word, const std::vector<const Column *> &columns, const QString &homeNamespace)
{
    ColumnWord result{{}, word.isExcluding};
    for (const Column *column : columns) {
        if (Condition found = condition(word, *column, homeNamespace)) {
            result.conditions.push_back(std::move(found));
            m_movesWithTime = m_movesWithTime || column->movesWithTime;
            m_readsUsage = m_readsUsage || column->showsUsage;
        }
    }
    if (!result.conditions.empty()) {
        m_columns.push_back(std::move(result));
    }
}

RowFilter::Condition RowFilter::condition(
    const FilterWord &word, const Column &column, const QString &homeNamespace)
{
    const auto [relation, operand] = comparisonOf(word.text);
    if (operand.isEmpty()) {
        return {};
    }
    bool isNumber = false;
    const double number = operand.toDouble(&isNumber);
    if (column.showsNumber && isNumber) {
        return [column, relation = relation, number](
                   const KubeTableItem &row) { return holds(numberOf(column, row), relation, number); };
    }
    if (column.movesWithTime && relation != Relation::Contains && relation != Relation::Equal) {
        const std::optional<double> duration = durationOf(operand);
        if (!duration && !isNumber) { // of a number the unit is missing, perhaps not for long
            m_notes.append(QObject::tr("“%1” is no time such as 90s, 5m, 2h or 3d.").arg(operand));
        }
        if (!duration) {
            return {};
        }
        return [column, relation = relation, seconds = *duration](const KubeTableItem &row) {
            const double since = currentTime() + numberOf(column, row);
            return std::isfinite(since) && holds(since, relation, seconds);
        };
    }
    if (relation != Relation::Contains && relation != Relation::Equal) {
        m_notes.append(column.showsNumber ? QObject::tr("“%1” is no number.").arg(operand)
                                          : QObject::tr("The column %1 holds no numbers.").arg(column.title));
        return {};
    }
    return textCondition(column, relation == Relation::Equal, operand, homeNamespace);
}

bool RowFilter::accepts(const KubeTableItem &row) const
{
    for (const NameWord &word : m_names) {
        const bool isFound
            = word.matcher.indexIn(row.foldedName) >= 0 || word.matcher.indexIn(row.nameSpace) >= 0;
        if (isFound == word.isExcluding) {
            return false;
        }
    }
    for (const ColumnWord &word : m_columns) {
        const bool isFound = std::any_of(word.conditions.cbegin(), word.conditions.cend(),
            [&row](const Condition &condition) { return condition(row); });
        if (isFound == word.isExcluding) {
            return false;
        }
    }
    return true;
}

} // namespace tidewright
