// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Disturbance.h"

#include "store/ApiError.h"

#include <chrono>
#include <thread>

namespace tidewright::demo {

namespace {

long long numberFrom(const json &wanted, const char *name, long long least, long long most, long long present)
{
    if (!wanted.contains(name)) {
        return present;
    }
    const json &value = wanted[name];
    if (!value.is_number_integer() || value.get<long long>() < least || value.get<long long>() > most) {
        throw ApiError::badRequest(std::string(name) + " must be a number from " + std::to_string(least)
            + " to " + std::to_string(most));
    }
    return value.get<long long>();
}

} // namespace

Disturbance::Disturbance(const Options &options)
    : m_hang(options.hang)
    , m_failCode(options.failCode)
    , m_latencyMs(options.latencyMs)
    , m_logRate(options.logRate)
    , m_faults(std::make_shared<FaultPlan>(options.disturb))
{
}

void Disturbance::pass()
{
    std::unique_lock lock(m_mutex);
    m_mended.wait(lock, [this] { return !m_hang; });
    if (m_latencyMs > 0) {
        const std::chrono::milliseconds latency(m_latencyMs);
        lock.unlock();
        std::this_thread::sleep_for(latency);
        lock.lock();
    }
    if (m_failCode != 0) {
        throw ApiError::ofCode(m_failCode);
    }
}

json Disturbance::change(const json &wanted)
{
    if (!wanted.is_object()) {
        throw ApiError::badRequest("the body must be an object, such as {\"fail\": 503}");
    }
    const std::lock_guard lock(m_mutex);
    for (const char *name : {"hang", "logPause"}) {
        if (wanted.contains(name) && !wanted[name].is_boolean()) {
            throw ApiError::badRequest(std::string(name) + " must be true or false");
        }
    }
    const int latency = int(numberFrom(wanted, "latency", 0, 600000, m_latencyMs));
    const int failCode = int(numberFrom(wanted, "fail", 0, 599, m_failCode));
    if (failCode != 0 && failCode < 400) {
        throw ApiError::badRequest("fail must be 0 or a code from 400 to 599");
    }
    if (wanted.contains("disturb")) {
        m_faults = std::make_shared<FaultPlan>(textAt(wanted, "/disturb"));
    }
    m_logRate = double(numberFrom(wanted, "logRate", 0, 10000000, (long long)m_logRate));
    m_latencyMs = latency;
    m_failCode = failCode;
    m_hang = flagAt(wanted, "/hang", m_hang);
    m_logPause = flagAt(wanted, "/logPause", m_logPause);
    m_mended.notify_all();
    return {{"hang", m_hang}, {"fail", m_failCode}, {"latency", m_latencyMs}, {"logRate", m_logRate},
        {"logPause", m_logPause}, {"disturb", m_faults->text()}, {"watches", m_watches.load()}};
}

std::shared_ptr<FaultPlan> Disturbance::faults() const
{
    const std::lock_guard lock(m_mutex);
    return m_faults;
}

double Disturbance::logRate() const
{
    const std::lock_guard lock(m_mutex);
    return m_logRate;
}

bool Disturbance::logsPaused() const
{
    const std::lock_guard lock(m_mutex);
    return m_logPause;
}

} // namespace tidewright::demo
