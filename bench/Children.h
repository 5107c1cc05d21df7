// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <thread>

namespace tidewright::bench {

/// Seconds of CPU: of this process, and of its children, those that run as well as those that have ended.
double processCpuSeconds();
double allChildrenCpuSeconds();

/// The largest resident memory of any kubectl that runs while this lives. Looks from a thread of its own.
class PeakMemory
{
public:
    PeakMemory();
    ~PeakMemory();
    double megabytes() const { return m_kilobytes / 1024.0; }

private:
    std::atomic<long> m_kilobytes = 0;
    std::atomic<bool> m_isOver = false;
    std::thread m_thread;
};

} // namespace tidewright::bench
