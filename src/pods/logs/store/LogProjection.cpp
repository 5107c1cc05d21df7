// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/store/LogProjection.h"

#include <algorithm>

namespace tidewright {

void LogProjection::appendRange(const LogRange &range)
{
    if (range.length <= 0) {
        return;
    }
    if (range.start != m_endPosition) {
        m_spanPlaces.append(m_size);
        m_spanPositions.append(range.start);
    }
    m_size += range.length;
    m_endPosition = range.end();
}

void LogProjection::appendLines(const std::vector<qint64> &starts)
{
    for (const qint64 start : starts) {
        m_lineStarts.append(start);
    }
}

qint64 LogProjection::lineEnd(qint64 line) const
{
    return line + 1 < m_lineStarts.size() ? m_lineStarts.at(line + 1) : m_size;
}

qint64 LogProjection::lineAt(qint64 place) const
{
    return std::max<qint64>(0, m_lineStarts.upperBound(place) - 1);
}

qint64 LogProjection::position(qint64 place) const
{
    const qint64 span = m_spanPlaces.upperBound(place) - 1;
    return span < 0 ? 0 : m_spanPositions.at(span) + place - m_spanPlaces.at(span);
}

qint64 LogProjection::place(qint64 position) const
{
    const qint64 span = m_spanPositions.upperBound(position) - 1;
    if (span < 0) {
        return 0;
    }
    const qint64 end = span + 1 < m_spanPlaces.size() ? m_spanPlaces.at(span + 1) : m_size;
    return std::min(end, m_spanPlaces.at(span) + position - m_spanPositions.at(span));
}

std::vector<LogRange> LogProjection::ranges(qint64 from, qint64 to) const
{
    std::vector<LogRange> result;
    to = std::min(to, m_size);
    const qint64 first = m_spanPlaces.upperBound(from) - 1;
    if (from >= to || first < 0) {
        return result;
    }
    AscendingList::Cursor place(m_spanPlaces, first);
    AscendingList::Cursor position(m_spanPositions, first);
    while (from < to) {
        const qint64 start = position.value() + from - place.value();
        place.next();
        position.next();
        const qint64 end = place.index() < m_spanPlaces.size() ? std::min(to, place.value()) : to;
        result.push_back({start, end - from});
        from = end;
    }
    return result;
}

} // namespace tidewright
