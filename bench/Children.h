// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <thread>

namespace tidewright::bench {

/// Seconds of CPU: of this process, and of its children, those that run as well as those that have ended.
double processCpuSeconds();
double allChildrenCpuSeconds();

/// The largest memory of any kubectl that runs while this lives, in megabytes. Looks from a thread of its
/// own.
class PeakMemory
{
public:
    PeakMemory();
    ~PeakMemory();
    /// How much of the program's file is resident depends on who else has read it: it was 34 MB and 51 MB of
    /// two copies of one kubectl. So what it has taken beside that is told apart.
    double resident() const { return static_cast<double>(m_resident) / 1024; }
    double own() const { return static_cast<double>(m_own) / 1024; }

private:
    std::atomic<long> m_resident = 0; // kilobytes
    std::atomic<long> m_own = 0;
    std::atomic<bool> m_isOver = false;
    std::thread m_thread;
};

} // namespace tidewright::bench
