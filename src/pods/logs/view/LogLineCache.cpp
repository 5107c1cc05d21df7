// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogLineCache.h"

#include <algorithm>
#include <limits>

namespace tidewright {

namespace {

constexpr int mostLines = 400; // more than a large screen has rows
constexpr qint64 linesBefore = 16; // that a match, and a colour, in a long line comes from

} // namespace

LogLineCache::LogLineCache(const LogDocument &document, const LogAppearance &appearance)
    : m_document(document)
    , m_appearance(appearance)
    , m_lines(mostLines)
    , m_found(mostLines)
{
}

QByteArray LogLineCache::bytes(qint64 line) const
{
    const LogProjection &shown = m_document.shown();
    return m_document.bytes().read(shown.ranges(shown.lineStart(line), shown.lineEnd(line)));
}

bool LogLineCache::continues(qint64 line) const
{
    const LogProjection &shown = m_document.shown();
    const qint64 start = shown.lineStart(line);
    const char before = start > 0 ? m_document.bytes().at(shown.position(start - 1)) : '\n';
    return before != '\n' && before != '\r';
}

void LogLineCache::setPattern(const LogPattern &pattern)
{
    if (pattern != m_pattern) {
        m_pattern = pattern.quick();
        m_found.clear();
    }
}

const std::vector<LogRange> &LogLineCache::matches(qint64 line)
{
    static const std::vector<LogRange> none;
    if (m_pattern.isEmpty() || !m_pattern.isValid()) {
        return none;
    }
    const LogProjection &shown = m_document.shown();
    const bool goesOn = line + 1 < shown.lineCount() && continues(line + 1);
    const qint64 end = shown.lineEnd(goesOn ? line + 1 : line);
    if (const Found *known = m_found.object(line); known && known->end == end) {
        return known->ranges;
    }
    qint64 first = line;
    while (first > 0 && line - first < linesBefore && continues(first)) {
        --first;
    }
    const qint64 begin = shown.lineStart(first);
    const qint64 before = shown.lineStart(line) - begin;
    const QByteArray text = m_document.bytes().read(shown.ranges(begin, end));
    QByteArrayView content(text);
    while (!content.isEmpty() && (content.back() == '\n' || content.back() == '\r')) {
        content.chop(1);
    }
    auto *found = new Found{end, {}};
    for (const LogRange &range : m_pattern.matches(content, std::numeric_limits<std::size_t>::max()).ranges) {
        if (range.end() > before && range.start < shown.lineEnd(line) - begin) {
            found->ranges.push_back({range.start - before, range.length});
        }
    }
    m_found.insert(line, found);
    return found->ranges;
}

void LogLineCache::clear()
{
    m_lines.clear();
    m_found.clear();
}

const LogLineLayout &LogLineCache::layout(qint64 line)
{
    const LogProjection &shown = m_document.shown();
    const qint64 end = shown.lineEnd(line);
    if (Entry *known = m_lines.object(line);
        known && known->end == end && known->layout.covers(m_neededWidth)) {
        return known->layout;
    }
    auto *entry = new Entry{end, {textOf(line, lookBefore(line)), m_appearance, m_wrapWidth, m_neededWidth}};
    m_lines.insert(line, entry);
    return entry->layout;
}

/// Colours end with the line, not where a long one is cut.
LogLook LogLineCache::lookBefore(qint64 line)
{
    qint64 first = line;
    const Entry *known = nullptr;
    while (!known && first > 0 && line - first < linesBefore && continues(first)) {
        known = m_lines.object(--first);
    }
    LogLook look = known ? known->layout.text().lookBehind : LogLook();
    for (qint64 before = known ? first + 1 : first; before < line; ++before) {
        look = textOf(before, look).lookBehind;
    }
    return look;
}

LogLineText LogLineCache::textOf(qint64 line, const LogLook &look) const
{
    const LogProjection &shown = m_document.shown();
    const std::vector<LogRange> ranges = shown.ranges(shown.lineStart(line), shown.lineEnd(line));
    std::vector<SourceRuns::Run> sources;
    qint64 before = 0;
    for (const LogRange &range : ranges) {
        for (SourceRuns::Run run : m_document.runs(range)) {
            run.range.start += before - range.start;
            sources.push_back(run);
        }
        before += range.length;
    }
    return makeLineText(m_document.bytes().read(ranges), sources, look);
}

LogHit LogLineCache::hitOf(qint64 position)
{
    const LogProjection &shown = m_document.shown();
    const qint64 place = shown.place(position);
    const qint64 line = shown.lineAt(place);
    const LogLineLayout &lineLayout = layout(line);
    const qsizetype unit = lineLayout.text().unitOf(place - shown.lineStart(line));
    return {line, lineLayout.rowOf(unit), unit};
}

qint64 LogLineCache::positionOf(const LogHit &hit)
{
    const LogProjection &shown = m_document.shown();
    const LogLineText &text = layout(hit.line).text();
    const qsizetype unit = std::clamp<qsizetype>(hit.unit, 0, text.text.size());
    return shown.position(shown.lineStart(hit.line) + text.bytes[static_cast<std::size_t>(unit)]);
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
