// SPDX-License-Identifier: GPL-3.0-or-later
#include "StallMeter.h"

#include "Measure.h"

#include <algorithm>

namespace tidewright::bench {

namespace {

constexpr double interval = 0.001;

} // namespace

StallMeter::StallMeter()
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(1);
    m_timer.callOnTimeout([this] { beat(); });
}

void StallMeter::start()
{
    m_longest = 0;
    m_last = wallSeconds();
    m_longestCpu = 0;
    m_lastCpu = threadCpuSeconds();
    m_timer.start();
}

double StallMeter::longest()
{
    beat();
    m_timer.stop();
    return m_longest;
}

void StallMeter::beat()
{
    const double now = wallSeconds();
    m_longest = std::max(m_longest, now - m_last - interval);
    m_last = now;
    const double cpu = threadCpuSeconds();
    m_longestCpu = std::max(m_longestCpu, cpu - m_lastCpu);
    m_lastCpu = cpu;
}

} // namespace tidewright::bench
