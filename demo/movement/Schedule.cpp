// SPDX-License-Identifier: GPL-3.0-or-later
#include "movement/Schedule.h"

#include <thread>

namespace tidewright::demo {

void Schedule::after(Delay delay, Task task)
{
    const std::lock_guard lock(m_mutex);
    m_tasks.emplace(Clock::now() + delay, std::move(task));
    m_wake.notify_one();
}

void Schedule::start()
{
    if (!m_still) {
        std::thread([this] { work(); }).detach();
    }
}

void Schedule::settle()
{
    if (!m_still) {
        return;
    }
    const std::lock_guard settling(m_settling);
    std::unique_lock lock(m_mutex);
    while (!m_tasks.empty()) {
        const Task task = std::move(m_tasks.begin()->second);
        m_tasks.erase(m_tasks.begin());
        lock.unlock();
        task();
        lock.lock();
    }
}

void Schedule::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        if (m_tasks.empty()) {
            m_wake.wait(lock);
        } else if (const Clock::time_point due = m_tasks.begin()->first; due > Clock::now()) {
            m_wake.wait_until(lock, due);
        } else {
            const Task task = std::move(m_tasks.begin()->second);
            m_tasks.erase(m_tasks.begin());
            lock.unlock();
            task();
            lock.lock();
        }
    }
}

} // namespace tidewright::demo
