// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/LogLineCache.h"

namespace tidewright {

namespace {

constexpr int mostLines = 400; // more than a large screen has rows

} // namespace

LogLineCache::LogLineCache(const LogDocument &document)
    : m_document(document)
    , m_lines(mostLines)
{
}

QByteArray LogLineCache::bytes(qint64 line) const
{
    const LogProjection &shown = m_document.shown();
    return m_document.bytes().read(shown.ranges(shown.lineStart(line), shown.lineEnd(line)));
}

const LogLineLayout &LogLineCache::layout(qint64 line)
{
    const LogProjection &shown = m_document.shown();
    const qint64 start = shown.lineStart(line);
    const qint64 end = shown.lineEnd(line);
    if (Entry *known = m_lines.object(line);
        known && known->end == end && known->layout.covers(m_neededWidth)) {
        return known->layout;
    }
    const std::vector<LogRange> ranges = shown.ranges(start, end);
    std::vector<SourceRuns::Run> sources;
    qint64 before = 0;
    for (const LogRange &range : ranges) {
        for (SourceRuns::Run run : m_document.runs(range)) {
            run.range.start += before - range.start;
            sources.push_back(run);
        }
        before += range.length;
    }
    auto *entry = new Entry{end,
        {makeLineText(m_document.bytes().read(ranges), sources), m_appearance, m_wrapWidth, m_neededWidth}};
    m_lines.insert(line, entry);
    return entry->layout;
}

LogAppearance &LogLineCache::changeAppearance()
{
    m_lines.clear();
    return m_appearance;
}

void LogLineCache::setWrapWidth(qreal width)
{
    if (width != m_wrapWidth) {
        m_wrapWidth = width;
        m_lines.clear();
    }
}

} // namespace tidewright
