// SPDX-License-Identifier: GPL-3.0-or-later
#include "Measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <sys/resource.h>

namespace tidewright::bench {

namespace {

double seconds(clockid_t clock)
{
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

} // namespace

double threadCpuSeconds()
{
    return seconds(CLOCK_THREAD_CPUTIME_ID);
}

double childrenCpuSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double wallSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Report::ratio(
    const std::string &what, double measured, double reference, double limit, const std::string &unit)
{
    const double value = measured / reference;
    const bool kept = value <= limit;
    m_allKept = m_allKept && kept;
    std::printf("%-58s %8.2f %s / %8.2f %s = %6.2f  (at most %5.2f) %s\n", what.c_str(), measured * 1e3,
        unit.c_str(), reference * 1e3, unit.c_str(), value, limit, kept ? "kept" : "MISSED");
    std::fflush(stdout);
}

void Report::absolute(const std::string &what, double measured, double limit, const std::string &unit)
{
    const bool kept = measured <= limit;
    m_allKept = m_allKept && kept;
    std::printf("%-58s %8.2f %-26s  (at most %5.2f) %s\n", what.c_str(), measured, unit.c_str(), limit,
        kept ? "kept" : "MISSED");
    std::fflush(stdout);
}

} // namespace tidewright::bench
