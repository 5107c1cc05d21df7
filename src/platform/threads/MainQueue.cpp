// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/threads/MainQueue.h"

#include <QCoreApplication>
#include <QEvent>

namespace tidewright {

void MainQueue::post(Task task)
{
    // Tasks lie in a list of our own, under our own lock: the event is only the bell.
    bool first = false;
    {
        const std::lock_guard lock(m_mutex);
        first = m_tasks.empty();
        m_tasks.push_back(std::move(task));
    }
    if (first) {
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
}

void MainQueue::customEvent(QEvent *)
{
    // Only what waits now: a task that posts again lets the event loop handle input and paint first.
    std::deque<Task> tasks;
    {
        const std::lock_guard lock(m_mutex);
        tasks.swap(m_tasks);
    }
    for (Task &task : tasks) {
        task();
        task = nullptr;
    }
}

MainQueue &mainQueue()
{
    static auto *queue
        = new MainQueue; // outlives main(): background threads may still post while the process ends
    return *queue;
}

} // namespace tidewright
