// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogSearch.h"

#include "platform/threads/MainQueue.h"

#include <algorithm>

namespace tidewright {

LogSearch::LogSearch(LogDocument &document, QObject *parent)
    : QObject(parent)
    , m_document(document)
{
    connect(&document, &LogDocument::appended, this, &LogSearch::scanOn);
    connect(&document, &LogDocument::replaced, this, &LogSearch::restart);
}

LogSearch::~LogSearch()
{
    if (m_cancelled) {
        *m_cancelled = true;
    }
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
    if (m_cancelled) {
        *m_cancelled = true;
    }
    m_cancelled = std::make_shared<std::atomic<bool>>(false);
    ++m_request;
    m_found = AscendingList();
    m_inLastLine.clear();
    m_cutOff = 0;
    m_isLastCutOff = false;
    m_place = 0;
    m_span = LogScan::usualSpan;
    m_waitingAt = -1;
    m_scanning = false;
    scanOn();
    Q_EMIT changed();
}

void LogSearch::scanOn()
{
    const LogProjection &shown = m_document.shown();
    if (m_scanning || m_pattern.isEmpty() || !m_pattern.isValid()) {
        return;
    }
    m_idle = m_place >= shown.size() || m_waitingAt == shown.size();
    if (m_idle) {
        return;
    }
    const qint64 begin = m_place;
    const qint64 end = std::min(shown.size(), begin + m_span);
    const bool reachesEnd = end == shown.size();
    LogScan scan{m_document.bytes(), shown.ranges(begin, end), m_pattern, end - begin >= LogScan::longestSpan,
        m_cancelled};
    m_scanning = true;
    logQueue().post([self = QPointer<LogSearch>(this), request = m_request, begin, end, reachesEnd,
                        scan = std::move(scan)] {
        postToMain(self, [=, matches = scan.matches()](LogSearch &search) {
            search.scanned(request, begin, end, reachesEnd, matches);
        });
    });
}

void LogSearch::scanned(
    quint64 request, qint64 begin, qint64 end, bool reachesEnd, const LogScan::Matches &matches)
{
    if (request != m_request) {
        return;
    }
    m_scanning = false;
    for (const qint64 position : matches.found) {
        m_found.append(position);
    }
    m_inLastLine = reachesEnd ? matches.inLastLine : std::vector<qint64>();
    m_cutOff += matches.cutOff;
    m_isLastCutOff = reachesEnd && matches.isLastCutOff;
    m_place = begin + matches.consumed;
    m_span = LogScan::nextSpan(m_span, end - begin, matches.consumed);
    m_waitingAt = reachesEnd ? end : -1; // more may have arrived since
    scanOn();
    if (m_origin && count() > 0) {
        const qint64 index = upperBound(*m_origin - 1);
        if (index < count()) {
            moveTo(index);
        } else if (m_idle) {
            moveTo(0);
        }
    } else if (m_idle) {
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
