// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/text/AscendingList.h"
#include "pods/logs/text/LogStore.h"

namespace tidewright {

/// Which source each byte of a log came from. Main thread.
class SourceRuns
{
public:
    struct Run
    {
        LogRange range;
        int source = 0; ///< 0 to 65535

        friend bool operator==(const Run &, const Run &) = default;
    };

    /// The bytes from `position` on come from `source`, until told otherwise.
    void append(qint64 position, int source);
    /// The runs of a part of the log, cut to it.
    std::vector<Run> runs(const LogRange &range) const;

private:
    AscendingList m_starts;
    std::deque<quint16> m_sources; ///< of each run
};

} // namespace tidewright
