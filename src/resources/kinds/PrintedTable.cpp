// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/PrintedTable.h"

#include "platform/text/Utf8.h"

#include <algorithm>

namespace tidewright {

namespace {

constexpr QByteArrayView gap("  ");

/// Where characters stand in the bytes of one line, for places that ascend.
class Characters
{
public:
    explicit Characters(QByteArrayView line)
        : m_line(line)
    {
    }

    /// The byte at which that character begins, counted from 0; the end of a line that is shorter.
    qsizetype byteOf(qsizetype character)
    {
        while (m_byte < m_line.size() && (m_character < character || isContinuation(m_line[m_byte]))) {
            m_character += isContinuation(m_line[m_byte]) ? 0 : 1;
            ++m_byte;
        }
        return m_byte;
    }

private:
    QByteArrayView m_line;
    qsizetype m_byte = 0;
    qsizetype m_character = 0;
};

std::vector<QByteArrayView> piecesBetweenGaps(QByteArrayView line)
{
    std::vector<QByteArrayView> pieces;
    for (QByteArrayView rest = line.trimmed(); !rest.isEmpty();) {
        const qsizetype end = rest.indexOf(gap);
        pieces.push_back(end < 0 ? rest : rest.first(end));
        rest = end < 0 ? QByteArrayView() : rest.sliced(end).trimmed();
    }
    return pieces;
}

/// The character at which each piece of the line begins.
std::vector<qsizetype> placesOf(const std::vector<QByteArrayView> &pieces, QByteArrayView line)
{
    std::vector<qsizetype> places;
    for (const QByteArrayView piece : pieces) {
        const QByteArrayView before = line.first(piece.data() - line.data());
        places.push_back(
            std::count_if(before.begin(), before.end(), [](char byte) { return !isContinuation(byte); }));
    }
    return places;
}

/// Nothing when a cell reaches over the place at which the next one begins.
std::vector<QByteArrayView> cellsAt(const std::vector<qsizetype> &places, QByteArrayView line)
{
    std::vector<QByteArrayView> cells;
    Characters characters(line);
    qsizetype begin = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const qsizetype end = i + 1 < places.size() ? characters.byteOf(places[i + 1]) : line.size();
        const QByteArrayView cell = line.sliced(begin, end - begin);
        if (end < line.size() && !cell.endsWith(gap)) {
            return {};
        }
        cells.push_back(cell.trimmed());
        begin = end;
    }
    return cells;
}

void appendField(QByteArray &line, QByteArrayView cell)
{
    const qsizetype begin = line.size();
    line.append(cell);
    std::replace(line.begin() + begin, line.end(), '\t', ' '); // it would be two fields
}

} // namespace

PrintedTable PrintedTable::parse(QByteArrayView printed)
{
    PrintedTable table;
    std::vector<QByteArrayView> titles;
    std::vector<qsizetype> places;
    for (qsizetype begin = 0; begin < printed.size();) {
        const qsizetype newline = printed.indexOf('\n', begin);
        const qsizetype end = newline < 0 ? printed.size() : newline;
        QByteArrayView line = printed.sliced(begin, end - begin);
        begin = end + 1;
        if (line.endsWith('\r')) {
            line.chop(1);
        }
        if (line.trimmed().isEmpty()) {
            continue;
        }
        if (titles.empty() || line.startsWith(titles.front())) {
            const auto pieces = piecesBetweenGaps(line);
            if (titles.empty() || pieces == titles) {
                titles = pieces;
                places = placesOf(pieces, line);
                continue;
            }
        }
        std::vector<QByteArrayView> cells = cellsAt(places, line);
        if (cells.empty()) {
            cells = piecesBetweenGaps(line);
        }
        if (cells.size() != titles.size()) {
            cells.clear();
        }
        table.lines.push_back({std::move(cells), line});
    }
    for (const QByteArrayView title : titles) {
        table.titles.append(QString::fromUtf8(title));
    }
    return table;
}

QByteArray listingLines(const PrintedTable &table, bool namespaceFirst)
{
    const qsizetype name = table.titles.indexOf(QLatin1String("NAME"));
    const std::size_t others = namespaceFirst ? 1 : 0;
    QByteArray lines;
    for (const auto &[cells, text] : table.lines) {
        if (cells.empty() || name < 0) {
            lines += text;
        } else {
            appendField(lines, cells[static_cast<std::size_t>(name)]);
            for (std::size_t i = others; i < cells.size(); ++i) {
                if (i != static_cast<std::size_t>(name)) {
                    lines += '\t';
                    appendField(lines, cells[i]);
                }
            }
            if (namespaceFirst) {
                lines += '\t';
                appendField(lines, cells.front());
            }
        }
        lines += '\n';
    }
    return lines;
}

} // namespace tidewright
