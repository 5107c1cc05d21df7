// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/SourceRuns.h"

#include <algorithm>

namespace tidewright {

void SourceRuns::append(qint64 position, int source)
{
    if (m_sources.empty() || m_sources.back() != source) {
        m_starts.append(position);
        m_sources.push_back(static_cast<quint16>(source));
    }
}

std::vector<SourceRuns::Run> SourceRuns::runs(const LogRange &range) const
{
    std::vector<Run> result;
    const qint64 first = m_starts.upperBound(range.start) - 1;
    if (first < 0) {
        return result;
    }
    AscendingList::Cursor start(m_starts, first);
    for (qint64 from = range.start; from < range.end();) {
        const int source = m_sources[static_cast<std::size_t>(start.index())];
        start.next();
        const qint64 end
            = start.index() < m_starts.size() ? std::min(range.end(), start.value()) : range.end();
        result.push_back({{from, end - from}, source});
        from = end;
    }
    return result;
}

} // namespace tidewright
