// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Options.h"
#include "api/StreamFaults.h"
#include "base/Json.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace tidewright::demo {

/// How the server misbehaves on purpose. Starts as the command line says; a POST to /demo/control changes it
/// while the server runs, so that a test can break and mend one server. Safe from any thread.
class Disturbance
{
public:
    explicit Disturbance(const Options &options);

    /// Called before a request is served: waits for the latency, blocks while the server hangs, and throws
    /// ApiError while it fails.
    void pass();

    /// {"hang": bool, "fail": code or 0, "latency": ms, "logRate": lines per second, "logPause": bool,
    /// "disturb": faults as FaultPlan reads them}, each optional. Throws ApiError 400. Returns the settings
    /// now in force, and how many watches are open.
    json change(const json &wanted);

    /// What is planned for watches; another object each time that it is set.
    std::shared_ptr<FaultPlan> faults() const;

    /// Counts a watch as open for as long as it lives.
    class OpenWatch
    {
    public:
        explicit OpenWatch(Disturbance &disturbance)
            : m_disturbance(disturbance)
        {
            ++m_disturbance.m_watches;
        }
        ~OpenWatch() { --m_disturbance.m_watches; }
        OpenWatch(const OpenWatch &) = delete;
        OpenWatch &operator=(const OpenWatch &) = delete;

    private:
        Disturbance &m_disturbance;
    };

    double logRate() const;
    bool logsPaused() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_mended;
    bool m_hang;
    int m_failCode;
    int m_latencyMs;
    double m_logRate;
    bool m_logPause = false;
    std::shared_ptr<FaultPlan> m_faults;
    std::atomic<int> m_watches{0};
};

} // namespace tidewright::demo
