// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/store/AscendingList.h"
#include "pods/logs/store/LogStore.h"

namespace tidewright {

/// What is shown of a log: some of its bytes, or all, one after another, in lines. A *place* counts the bytes
/// that are shown, a *position* counts all that are stored. Grows at its end only. Main thread.
class LogProjection
{
public:
    /// Shows further bytes, which lie behind all that are shown.
    void appendRange(const LogRange &range);
    /// Places at which lines begin.
    void appendLines(const std::vector<qint64> &starts);

    /// Bytes shown.
    qint64 size() const { return m_size; }
    qint64 lineCount() const { return m_lineStarts.size(); }
    qint64 lineStart(qint64 line) const { return m_lineStarts.at(line); }
    qint64 lineEnd(qint64 line) const;
    /// The line that a place is in; the last one for the end. There is at least one line.
    qint64 lineAt(qint64 place) const;

    qint64 position(qint64 place) const;
    /// The place of a position, or of the next one that is shown.
    qint64 place(qint64 position) const;
    /// The stored bytes behind the places from `from` to before `to`.
    std::vector<LogRange> ranges(qint64 from, qint64 to) const;

private:
    AscendingList m_spanPlaces;
    AscendingList m_spanPositions;
    AscendingList m_lineStarts;
    qint64 m_size = 0;
    qint64 m_endPosition = -1; ///< behind the last shown byte
};

} // namespace tidewright
