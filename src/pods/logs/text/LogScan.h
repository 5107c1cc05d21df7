// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/threads/DispatchQueue.h"
#include "pods/logs/store/LineSplitter.h"
#include "pods/logs/text/LogFilter.h"

#include <atomic>
#include <deque>

namespace tidewright {

/// Work on a part of a log that is done off the main thread: takes values and yields values.
struct LogScan
{
    /// Bytes that one scan looks at, as a rule: a few milliseconds of work.
    static constexpr qint64 usualSpan = qint64(4) << 20;
    /// A line that is longer is looked at in parts.
    static constexpr qint64 longestSpan = qint64(64) << 20;
    /// The span of the next scan when one of `scanned` bytes has come to the end of lines behind `consumed`
    /// of them: a line that the span is too short for gets a longer one, and keeps it until it ends.
    static constexpr qint64 nextSpan(qint64 span, qint64 scanned, qint64 consumed)
    {
        return consumed > 0 ? usualSpan : scanned == span ? span * 2 : span;
    }

    LogBytes bytes;
    std::vector<LogRange> ranges; ///< what is looked at, as if it were one text
    LogPattern pattern; ///< of `matches`
    /// The text ends here: its last line is whole also without a line end.
    bool isEnd = false;
    std::shared_ptr<const std::atomic<bool>> cancelled; ///< stops a scan whose result nobody wants any more

    /// What the lines of one scan have to do with those of the next.
    struct Surroundings
    {
        /// The last lines, which are not shown yet, in stored bytes; a match behind them shows them.
        std::deque<std::vector<LogRange>> before = {};
        int behind = 0; ///< lines to show whatever is in them: a match is before them
    };
    /// The lines that a filter shows.
    struct Lines
    {
        std::vector<LogRange> ranges; ///< the stored bytes of the lines
        std::vector<qint64> starts; ///< where lines begin, in bytes of all lines found
        LineSplitter splitter; ///< to go on with
        Surroundings surroundings; ///< to go on with as well
        std::optional<qint64> unfinished; ///< the stored position of a line that has not ended yet
        qint64 cutOff = 0; ///< lines that the pattern is too complicated for
    };
    Lines lines(const LogFilter &filter, LineSplitter splitter, Surroundings surroundings) const;

    /// The places where the pattern is found.
    struct Matches
    {
        std::vector<qint64> found; ///< positions in the store
        std::vector<qint64> inLastLine; ///< the same in the line that has not ended yet
        qint64 consumed = 0; ///< bytes looked at: up to the last line end
        qint64 cutOff = 0; ///< lines that the pattern is too complicated for, but for the last one
        bool isLastCutOff = false;
    };
    /// Not many more than `most` of them.
    Matches matches(qint64 most) const;

private:
    void showLine(const std::vector<LogRange> &stored, QByteArrayView view, bool isMatch, int around,
        Lines &result) const;
    bool isCancelled() const { return cancelled && *cancelled; }
};

/// Where scans, copies and exports of logs run.
DispatchQueue &logQueue();

} // namespace tidewright
