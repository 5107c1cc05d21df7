// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>

namespace tidewright::bench {

/// The longest time in which the event loop did not serve a timer that is always due: what a key press would
/// have waited. Main thread.
class StallMeter
{
public:
    StallMeter();
    void start();
    /// Seconds; stops measuring.
    double longest();
    /// The most CPU that the thread spent between two turns of the timer: the same for a machine that others
    /// use too.
    double longestCpu() const { return m_longestCpu; }

private:
    void beat();

    QTimer m_timer;
    double m_last = 0;
    double m_longest = 0;
    double m_lastCpu = 0;
    double m_longestCpu = 0;
};

} // namespace tidewright::bench
