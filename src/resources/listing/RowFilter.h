// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

#include <QStringMatcher>

namespace tidewright {

/// One word of a filter, quotes taken away.
struct FilterWord
{
    qsizetype begin = 0; ///< in the text, with the hyphen of an excluding word
    qsizetype end = 0; ///< behind its last character
    bool isExcluding = false;
    bool namesColumn = false; ///< has the form COLUMN:TEXT
    QString column; ///< what stands in front of the colon
    QString text; ///< what stands behind it, or the word
    bool isEmpty() const { return text.isEmpty() && !namesColumn; }
};

/// The words of a filter: what stands between blanks. Quotation marks hold a text with blanks together, and
/// one that is not closed yet reaches to the end. Any thread.
std::vector<FilterWord> filterWords(const QString &text);
/// The text as one word of a filter can hold it: in quotation marks when it needs them.
QString quotedForFilter(const QString &text);

/// The columns that a word of that name means, by identifier or by title without blanks, in any case; "ns"
/// and "status" are words for the namespace, and for the status with its reason.
std::vector<const Column *> columnsOfWord(const QString &name, const std::vector<Column> &columns);

/// What the filter of a table asks of a row: every one of its words. Case makes no difference.
///
///   cart            is in the name or in the namespace
///   -test           is in neither; a hyphen turns each of the following words too
///   node:harbor     is in the text of that column (columnsOfWord), shown or not
///   status:=Running is that text
///   restarts:>0     a number that is greater; >=, <, <= and = likewise
///   age:<1h         a time that is not so long ago, in s, m, h and d
///   label:app=cart  a label selector: for the server, which has sent matching rows only
///   ?               nothing: asks for help
///
/// A word that is not whole yet asks for nothing, one of an unknown column is looked for in names. Main
/// thread.
class RowFilter
{
public:
    RowFilter() = default;
    /// `homeNamespace` is that of rows that do not tell one.
    RowFilter(const QString &text, const std::vector<Column> &columns, const QString &homeNamespace = {});

    bool accepts(const KubeTableItem &row) const;
    /// Whether rows come and go as time passes.
    bool movesWithTime() const { return m_movesWithTime; }
    /// Whether it asks for what objects use (Column::showsUsage).
    bool readsUsage() const { return m_readsUsage; }
    /// Of all words for the server, joined; empty without any.
    QString labelSelector() const { return m_labels.join(QLatin1Char(',')); }
    /// A sentence for each word that does not do what it looks like; empty as a rule.
    QString note() const { return m_notes.join(QLatin1Char('\n')); }

private:
    using Condition = std::function<bool(const KubeTableItem &)>;
    struct NameWord
    {
        QStringMatcher matcher; ///< for folded names
        bool isExcluding = false;
    };
    struct ColumnWord
    {
        std::vector<Condition> conditions; ///< one is enough
        bool isExcluding = false;
    };

    void addName(const FilterWord &word, const QString &text);
    void addLabel(const FilterWord &word);
    void addColumns(
        const FilterWord &word, const std::vector<const Column *> &columns, const QString &homeNamespace);
    /// Nothing while the word is not whole.
    Condition condition(const FilterWord &word, const Column &column, const QString &homeNamespace);

    std::vector<NameWord> m_names;
    std::vector<ColumnWord> m_columns;
    QStringList m_labels;
    QStringList m_notes;
    bool m_movesWithTime = false;
    bool m_readsUsage = false;
};

} // namespace tidewright
