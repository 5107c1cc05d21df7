// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogSearch.h"

#include <algorithm>

namespace tidewright {

LogSearch::LogSearch(LogDocument &document, QObject *parent)
    : QObject(parent)
    , m_document(document)
{
    connect(&document, &LogDocument::appended, this, &LogSearch::scanOn);
    connect(&document, &LogDocument::replaced, this, &LogSearch::restart);
}

void LogSearch::setPattern(const LogPattern &pattern, qint64 origin)
{
    m_pattern = pattern;
    m_current = -1;
    m_origin = origin;
    restart();
}

void LogSearch::restart()
{
    m_scanner.restart();
    m_found = AscendingList();
    m_inLastLine.clear();
    m_cutOff = 0;
    m_isLastCutOff = false;
    scanOn();
    Q_EMIT changed();
}

void LogSearch::scanOn()
{
    const LogProjection &shown = m_document.shown();
    const std::optional<LogRange> part = m_scanner.next(shown.size());
    if (!part || hasMore() || m_pattern.isEmpty() || !m_pattern.isValid()) {
        return;
    }
    const bool reachesEnd = part->end() == shown.size();
    LogScan scan{m_document.bytes(), shown.ranges(part->start, part->end()), m_pattern,
        part->length >= LogScan::longestSpan, m_scanner.cancelled()};
    m_scanner.run(
        [scan = std::move(scan), most = mostMatches - m_found.size()] { return scan.matches(most); },
        [this, part = *part, reachesEnd](
            const LogScan::Matches &matches) { scanned(part, reachesEnd, matches); });
}

void LogSearch::scanned(const LogRange &part, bool reachesEnd, const LogScan::Matches &matches)
{
    m_scanner.advance(part, part.start + matches.consumed);
    for (const qint64 position : matches.found) {
        m_found.append(position);
    }
    m_inLastLine = reachesEnd ? matches.inLastLine : std::vector<qint64>();
    m_cutOff += matches.cutOff;
    m_isLastCutOff = reachesEnd && matches.isLastCutOff;
    scanOn();
    if (m_origin && count() > 0) {
        const qint64 index = upperBound(*m_origin - 1);
        if (index < count()) {
            moveTo(index);
        } else if (!isSearching()) {
            moveTo(0);
        }
    } else if (!isSearching()) {
        m_origin.reset(); // what arrives later does not take the user away from where he is
    }
    Q_EMIT changed();
}

qint64 LogSearch::at(qint64 index) const
{
    return index < m_found.size() ? m_found.at(index)
                                  : m_inLastLine[static_cast<std::size_t>(index - m_found.size())];
}

qint64 LogSearch::upperBound(qint64 position) const
{
    const qint64 index = m_found.upperBound(position);
    return index < m_found.size() ? index
                                  : index
            + (std::upper_bound(m_inLastLine.cbegin(), m_inLastLine.cend(), position)
                - m_inLastLine.cbegin());
}

qint64 LogSearch::currentNumber() const
{
    const qint64 index = upperBound(m_current - 1);
    return m_current >= 0 && index < count() && at(index) == m_current ? index + 1 : 0;
}

void LogSearch::moveTo(qint64 index)
{
    m_origin.reset();
    m_current = at(index);
    Q_EMIT currentMoved(m_current);
}

void LogSearch::goOn(bool forward)
{
    if (count() == 0) {
        return;
    }
    const qint64 index = forward ? upperBound(m_current) : upperBound(m_current - 1) - 1;
    moveTo((index + count()) % count());
    Q_EMIT changed();
}

} // namespace tidewright
