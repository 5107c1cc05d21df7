// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/Merge.h"

#include "platform/text/Timestamp.h"
#include "resources/kinds/FreeText.h"
#include "resources/kinds/PrintedTable.h"

#include <QHash>

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>

namespace tidewright {

namespace {

constexpr qsizetype keptLineLength = 200;

/// Finds the first row of an object among the rows of a snapshot.
class RowIndex
{
public:
    /// Namespace and name.
    using Key = std::pair<QByteArrayView, QByteArrayView>;

    explicit RowIndex(const Rows &rows)
    {
        m_positions.reserve(static_cast<qsizetype>(rows.size()));
        for (std::size_t i = rows.size(); i-- > 0;) {
            m_positions.insert({nameSpaceOf(*rows[i]), nameOf(*rows[i])},
                i); // an earlier row takes the place of a later one
        }
    }

    std::optional<std::size_t> positionOf(const Key &key) const
    {
        const auto found = m_positions.constFind(key);
        return found == m_positions.cend() ? std::nullopt : std::optional(*found);
    }

private:
    QByteArrayView nameOf(const KubeTableItem &row)
    {
        if (const qsizetype end = row.line.indexOf('\t'); end >= 0) {
            return QByteArrayView(row.line).first(end);
        }
        return m_encodedNames.emplace_back(row.name.toUtf8());
    }

    /// Namespaces are few.
    QByteArrayView nameSpaceOf(const KubeTableItem &row)
    {
        if (row.nameSpace.isEmpty()) {
            return {};
        }
        auto &encoded = m_encodedNameSpaces[row.nameSpace];
        if (!encoded) {
            encoded = std::make_unique<QByteArray>(row.nameSpace.toUtf8());
        }
        return *encoded;
    }

    std::deque<QByteArray> m_encodedNames;
    std::unordered_map<QString, std::unique_ptr<QByteArray>> m_encodedNameSpaces;
    QHash<Key, std::size_t> m_positions; // views into the rows and into what is encoded
};

void split(QByteArrayView text, char mark, std::vector<QByteArrayView> &pieces)
{
    pieces.clear();
    qsizetype begin = 0;
    for (qsizetype end = 0; (end = text.indexOf(mark, begin)) >= 0; begin = end + 1) {
        pieces.push_back(text.sliced(begin, end - begin));
    }
    pieces.push_back(text.sliced(begin));
}

std::vector<QByteArrayView> linesOf(QByteArrayView listing)
{
    std::vector<QByteArrayView> lines;
    if (listing.endsWith('\n')) {
        listing.chop(1);
    }
    if (!listing.isEmpty()) {
        split(listing, '\n', lines);
    }
    return lines;
}

QString keptPart(QByteArrayView line)
{
    constexpr qsizetype longestCharacter = 4;
    const qsizetype enough = std::min(line.size(), longestCharacter * keptLineLength);
    QString text = QString::fromUtf8(line.first(enough)).left(keptLineLength);
    if (text.size() == keptLineLength && text.back().isHighSurrogate()) {
        text.chop(1);
    }
    return text;
}

class Merge
{
public:
    Merge(const ResourceKind &kind, const Rows &snapshot, LineForm form)
        : m_kind(kind)
        , m_snapshot(snapshot)
        , m_form(form)
        , m_index(snapshot)
        , m_listed(snapshot.size())
        , m_candidates(snapshot.size())
    {
    }

    void take(QByteArrayView line)
    {
        ++m_result.lines;
        QByteArrayView nameSpace;
        if (m_form == LineForm::WithNamespace && line.contains('\t')) {
            const qsizetype end = line.lastIndexOf('\t');
            nameSpace = line.sliced(end + 1);
            line = line.first(end);
        }
        const qsizetype nameEnd = line.indexOf('\t');
        const auto position = m_index.positionOf({nameSpace, nameEnd < 0 ? line : line.first(nameEnd)});
        if (position && isUnchanged(*position, line)) {
            m_listed[*position] = true;
        } else if (split(line, '\t', m_fields); m_fields.size() != m_kind.fieldCount) {
            skip(line);
            return;
        } else if (position) {
            update(*position, line);
        } else {
            const auto row = m_kind.create(QString::fromUtf8(m_fields.front()));
            row->nameSpace = shared(nameSpace);
            if (m_kind.firstListed) {
                m_kind.firstListed(*row, m_moment);
            }
            assign(*row, line);
            m_result.added.push_back(row);
        }
        if (m_kind.lineTaken) {
            m_kind.lineTaken(line);
        }
    }

    MergeResult finish()
    {
        for (std::size_t i = 0; i < m_snapshot.size(); ++i) {
            if (!m_listed[i]) {
                m_result.stale.push_back(i);
            } else if (m_candidates[i] && !m_kind.equal(*m_candidates[i], *m_snapshot[i])) {
                m_result.changed.emplace_back(i, std::move(m_candidates[i]));
            }
        }
        return std::move(m_result);
    }

private:
    void skip(QByteArrayView line)
    {
        if (!m_kind.listRemainder.isEmpty() && line.trimmed() == m_kind.listRemainder) {
            --m_result.lines;
            return;
        }
        if (m_result.skippedLines++ == 0) {
            m_result.firstSkippedLine = keptPart(line);
        }
        if (m_kind.lineSkipped) {
            m_kind.lineSkipped(line, m_fields.size());
        }
    }

    /// The usual case: nothing to split, decode, copy or compare.
    bool isUnchanged(std::size_t position, QByteArrayView line) const
    {
        return !m_candidates[position] && !line.isEmpty() && line == listedPart(m_snapshot[position]->line);
    }

    void update(std::size_t position, QByteArrayView line)
    {
        m_listed[position] = true;
        auto &candidate = m_candidates[position];
        if (!candidate) {
            candidate = m_kind.copy(*m_snapshot[position]);
        }
        assign(*candidate, line);
    }

    /// Many rows share a namespace, and its text.
    QString shared(QByteArrayView nameSpace)
    {
        if (nameSpace != m_lastNameSpace.first) {
            m_lastNameSpace = {nameSpace, QString::fromUtf8(nameSpace)};
        }
        return m_lastNameSpace.second;
    }

    void assign(KubeTableItem &row, QByteArrayView line)
    {
        m_kind.assign(m_fields, row);
        row.line = line.toByteArray();
    }

    const ResourceKind &m_kind;
    const double m_moment = currentTime();
    const Rows &m_snapshot;
    const LineForm m_form;
    RowIndex m_index;
    std::pair<QByteArrayView, QString> m_lastNameSpace;
    std::vector<bool> m_listed;
    std::vector<std::shared_ptr<KubeTableItem>> m_candidates; // copies that listed lines were assigned to
    Fields m_fields;
    MergeResult m_result;
};

MergeResult mergeLines(
    const ResourceKind &kind, const QByteArray &listing, const Rows &snapshot, LineForm form)
{
    Merge merge(kind, snapshot, form);
    const std::size_t fields = kind.fieldCount + (form == LineForm::WithNamespace ? 1 : 0);
    std::vector<QByteArrayView> lines = linesOf(listing);
    if (kind.freeTextField) {
        lines = free_text::wholeLines(lines, *kind.freeTextField, fields);
    }
    if (kind.lastLineFirst) {
        std::reverse(lines.begin(), lines.end());
    }
    for (const QByteArrayView line : lines) {
        merge.take(kind.freeTextField ? free_text::onOneLine(line, *kind.freeTextField, fields) : line);
    }
    return merge.finish();
}

MergeResult mergePrinted(
    const ResourceKind &kind, const QByteArray &printed, const Rows &snapshot, LineForm form)
{
    const PrintedTable table = PrintedTable::parse(printed);
    const bool namespaceFirst
        = form == LineForm::WithNamespace && table.titles.value(0) == QLatin1String("NAMESPACE");
    const QStringList titles = namespaceFirst ? table.titles.sliced(1) : table.titles;
    if (titles != *kind.printedTitles && titles.contains(QLatin1String("NAME"))) {
        MergeResult other;
        other.otherTitles = titles;
        return other;
    }
    return mergeLines(kind, listingLines(table, namespaceFirst), snapshot, form);
}

} // namespace

MergeResult mergeListing(
    const ResourceKind &kind, const QByteArray &listing, const Rows &snapshot, LineForm form)
{
    return kind.printedTitles ? mergePrinted(kind, listing, snapshot, form)
                              : mergeLines(kind, listing, snapshot, form);
}

QStringList withNamespaceField(const QStringList &outputArguments)
{
    QStringList result = outputArguments;
    QString &listing = result.last();
    const qsizetype lineEnd = listing.lastIndexOf(QLatin1Char('\n'));
    listing.insert(std::max<qsizetype>(lineEnd, 0),
        listing.startsWith(QLatin1String("--template=")) ? QStringLiteral("\t{{.metadata.namespace}}")
                                                         : QStringLiteral("\t{.metadata.namespace}"));
    return result;
}

} // namespace tidewright
