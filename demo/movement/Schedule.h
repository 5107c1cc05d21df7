// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>

namespace tidewright::demo {

/// Tasks to run later, one after another. Moving: a thread runs each when its time has come and sleeps in
/// between. Still: delays mean nothing; settle() runs everything in the order of the delays, on the caller's
/// thread.
class Schedule
{
public:
    using Task = std::function<void()>;
    using Delay = std::chrono::milliseconds;

    explicit Schedule(bool still)
        : m_still(still)
    {
    }

    bool isStill() const { return m_still; }
    void after(Delay delay, Task task);

    /// Starts the thread, which ends with the process. Nothing when still.
    void start();

    /// Runs what is due now that something was changed. Nothing when moving.
    void settle();

private:
    using Clock = std::chrono::steady_clock;

    void work();

    const bool m_still;
    std::mutex m_mutex;
    std::mutex m_settling;
    std::condition_variable m_wake;
    std::multimap<Clock::time_point, Task> m_tasks;
};

} // namespace tidewright::demo
