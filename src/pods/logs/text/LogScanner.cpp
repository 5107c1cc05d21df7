// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogScanner.h"

#include <algorithm>

namespace tidewright {

LogScanner::~LogScanner()
{
    *m_cancelled = true;
}

void LogScanner::restart()
{
    *m_cancelled = true;
    m_cancelled = std::make_shared<std::atomic<bool>>(false);
    ++m_request;
    m_place = 0;
    m_span = LogScan::usualSpan;
    m_waitingAt = -1;
    m_scanning = false;
}

std::optional<LogRange> LogScanner::next(qint64 size) const
{
    if (m_scanning || m_place >= size || m_waitingAt == size) {
        return std::nullopt;
    }
    return LogRange{m_place, std::min(size - m_place, m_span)};
}

void LogScanner::advance(const LogRange &part, qint64 place)
{
    m_scanning = false;
    m_place = place;
    m_span = LogScan::nextSpan(m_span, part.length, place - part.start);
    m_waitingAt = part.end(); // more may have arrived since, and then the text is longer
}

} // namespace tidewright
