// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <httplib.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace tidewright::demo {

/// The HTTP library's queue of connections, on threads that grow in number with the connections: every log
/// stream and every watch holds its thread for as long as it lasts. Threads are detached and end with the
/// process.
class ConnectionThreads : public httplib::TaskQueue
{
public:
    void enqueue(std::function<void()> task) override;
    void shutdown() override { }

private:
    void work();

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_tasks;
    size_t m_idle = 0;
};

} // namespace tidewright::demo
