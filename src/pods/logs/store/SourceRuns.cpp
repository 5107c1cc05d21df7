// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/store/SourceRuns.h"

#include <algorithm>

namespace tidewright {

void SourceRuns::append(qint64 position, int source)
{
    if (!m_sources.empty() && sourceAt(m_sources.size() - 1) == source) {
        return;
    }
    m_starts.append(position);
    if (source > 0xFF && m_high.empty()) {
        m_high.resize(m_sources.size());
    }
    m_sources.push_back(static_cast<quint8>(source & 0xFF));
    if (source > 0xFF || !m_high.empty()) {
        m_high.push_back(static_cast<quint8>(source >> 8));
    }
}

int SourceRuns::sourceAt(std::size_t run) const
{
    return m_sources[run] | (m_high.empty() ? 0 : m_high[run] << 8);
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
        const int source = sourceAt(static_cast<std::size_t>(start.index()));
        start.next();
        const qint64 end
            = start.index() < m_starts.size() ? std::min(range.end(), start.value()) : range.end();
        result.push_back({{from, end - from}, source});
        from = end;
    }
    return result;
}

} // namespace tidewright
