// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogScan.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tidewright {

namespace {

void appendMerged(std::vector<LogRange> &ranges, const std::vector<LogRange> &more)
{
    for (const LogRange &range : more) {
        if (!ranges.empty() && ranges.back().end() == range.start) {
            ranges.back().length += range.length;
        } else {
            ranges.push_back(range);
        }
    }
}

/// The store's positions for bytes of a text that was put together from ranges, asked for in ascending order.
class Positions
{
public:
    explicit Positions(const std::vector<LogRange> &ranges)
        : m_ranges(ranges)
    {
    }

    qint64 operator()(qint64 at)
    {
        seek(at);
        return m_ranges[m_next].start + at - m_before;
    }

    /// The stored bytes behind a part of the text, which does not begin before the last one asked for.
    void append(qint64 from, qint64 to, std::vector<LogRange> &result)
    {
        while (from < to) {
            const qint64 start = (*this)(from);
            const qint64 count = std::min(to - from, m_ranges[m_next].end() - start);
            appendMerged(result, {{start, count}});
            from += count;
        }
    }

private:
    void seek(qint64 at)
    {
        while (at >= m_before + m_ranges[m_next].length) {
            m_before += m_ranges[m_next++].length;
        }
    }

    const std::vector<LogRange> &m_ranges;
    std::size_t m_next = 0;
    qint64 m_before = 0;
};

struct Line
{
    qint64 start;
    qint64 textEnd; ///< without the line end
    qint64 end;
};

/// Walks over the lines of a text, long ones in one piece.
class LineWalk
{
public:
    LineWalk(QByteArrayView text, bool isEnd)
        : m_text(text)
        , m_isEnd(isEnd)
    {
    }

    /// False when no whole line is left; `line` is then the beginning of one.
    bool next(Line &line)
    {
        const qint64 start = m_at;
        const qint64 stop = std::min(find('\n', m_lineFeed), find('\r', m_return));
        line = {start, stop, stop};
        if (stop == m_text.size()) {
            m_at = m_isEnd ? stop : start;
            return m_isEnd && stop > start;
        }
        if (m_text[stop] == '\r' && stop + 1 == m_text.size() && !m_isEnd) {
            return false; // a line feed may follow
        }
        const bool isPair = m_text[stop] == '\r' && stop + 1 < m_text.size() && m_text[stop + 1] == '\n';
        line.end = stop + (isPair ? 2 : 1);
        m_at = line.end;
        return true;
    }

private:
    /// The next such byte from here on; `known` remembers it.
    qint64 find(char byte, qint64 &known) const
    {
        if (known < m_at) {
            const void *found
                = std::memchr(m_text.data() + m_at, byte, static_cast<std::size_t>(m_text.size() - m_at));
            known = found ? static_cast<const char *>(found) - m_text.data() : m_text.size();
        }
        return known;
    }

    QByteArrayView m_text;
    bool m_isEnd;
    qint64 m_at = 0;
    qint64 m_lineFeed = -1;
    qint64 m_return = -1;
};

} // namespace

LogScan::Lines LogScan::lines(const LogFilter &filter, LineSplitter splitter, Surroundings surroundings) const
{
    Lines result{.ranges = {},
        .starts = {},
        .splitter = std::move(splitter),
        .surroundings = std::move(surroundings),
        .unfinished = {}};
    const QByteArray text = bytes.read(ranges);
    if (filter.isEmpty()) {
        result.splitter.feed(text, result.starts);
        result.ranges = ranges;
        return result;
    }
    Positions positions(ranges);
    LineWalk lines(text, isEnd);
    qint64 consumed = 0;
    for (Line line{}; !isCancelled() && lines.next(line); consumed = line.end) {
        const QByteArrayView view = QByteArrayView(text).sliced(line.start, line.end - line.start);
        const LogPattern::Matches found = filter.pattern().matches(view.first(line.textEnd - line.start), 1);
        result.cutOff += found.cutOff ? 1 : 0;
        const bool isMatch = !found.ranges.empty();
        // A line that the pattern is too complicated for is left out either way, and told of.
        const bool isWanted = filter.excludes() ? !isMatch && !found.cutOff : isMatch;
        std::vector<LogRange> stored;
        positions.append(line.start, line.end, stored);
        if (isWanted || result.surroundings.behind > 0) {
            showLine(stored, view, isWanted, filter.around(), result);
        } else if (filter.around() > 0) {
            auto &before = result.surroundings.before;
            before.push_back(std::move(stored));
            before.size() > static_cast<std::size_t>(filter.around()) ? before.pop_front() : void();
        }
    }
    if (consumed < text.size()) {
        result.unfinished = positions(consumed);
    }
    return result;
}

/// With what stands before it, when that is to be seen.
void LogScan::showLine(
    const std::vector<LogRange> &stored, QByteArrayView view, bool isMatch, int around, Lines &result) const
{
    Surroundings &surroundings = result.surroundings;
    surroundings.behind = isMatch ? around : surroundings.behind - 1;
    for (const std::vector<LogRange> &before : std::exchange(surroundings.before, {})) {
        result.splitter.feed(bytes.read(before), result.starts);
        appendMerged(result.ranges, before);
    }
    result.splitter.feed(view, result.starts);
    appendMerged(result.ranges, stored);
}

LogScan::Matches LogScan::matches(qint64 most) const
{
    Matches result;
    const QByteArray text = bytes.read(ranges);
    Positions positions(ranges);
    const auto look = [&](const Line &line, std::vector<qint64> &found) {
        const QByteArrayView view = QByteArrayView(text).sliced(line.start, line.textEnd - line.start);
        const LogPattern::Matches matches = pattern.matches(view, static_cast<std::size_t>(most));
        for (const LogRange &match : matches.ranges) {
            found.push_back(positions(line.start + match.start));
        }
        return matches.cutOff;
    };
    LineWalk lines(text, isEnd);
    Line line{};
    const auto isEnough = [&] { return std::ssize(result.found) >= most; };
    for (; !isCancelled() && !isEnough() && lines.next(line); result.consumed = line.end) {
        result.cutOff += look(line, result.found) ? 1 : 0;
    }
    if (!isCancelled() && !isEnough() && line.textEnd > line.start && line.start >= result.consumed) {
        result.isLastCutOff = look(line, result.inLastLine);
    }
    return result;
}

DispatchQueue &logQueue()
{
    static auto *queue = new DispatchQueue("logQueue"); // outlives main(): its threads may still be running
    return *queue;
}

} // namespace tidewright
