// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/ConnectionThreads.h"

#include <thread>

namespace tidewright::demo {

void ConnectionThreads::enqueue(std::function<void()> task)
{
    const std::lock_guard lock(m_mutex);
    m_tasks.push_back(std::move(task));
    if (m_idle >= m_tasks.size()) {
        m_wake.notify_one();
    } else {
        std::thread([this] { work(); }).detach();
    }
}

void ConnectionThreads::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        ++m_idle;
        m_wake.wait(lock, [this] { return !m_tasks.empty(); });
        --m_idle;
        const std::function<void()> task = std::move(m_tasks.front());
        m_tasks.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
}

} // namespace tidewright::demo
