// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/threads/DispatchQueue.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <pthread.h>
#include <system_error>
#include <thread>

namespace tidewright {

struct DispatchQueue::State
{
    std::mutex mutex;
    std::condition_variable workArrived;
    std::deque<std::function<void()>> tasks;
    std::size_t idleThreads = 0;
    std::string label;
};

namespace {

constexpr auto idleLifetime = std::chrono::seconds(10);

template <typename State> void work(const std::shared_ptr<State> &state)
{
    pthread_setname_np(pthread_self(), state->label.substr(0, 15).c_str());
    std::unique_lock lock(state->mutex);
    for (;;) {
        while (!state->tasks.empty()) {
            std::function<void()> task = std::move(state->tasks.front());
            state->tasks.pop_front();
            lock.unlock();
            task();
            task = nullptr;
            lock.lock();
        }
        ++state->idleThreads;
        const bool found
            = state->workArrived.wait_for(lock, idleLifetime, [&state] { return !state->tasks.empty(); });
        --state->idleThreads;
        if (!found) {
            return;
        }
    }
}

} // namespace

DispatchQueue::DispatchQueue(std::string label)
    : m_state(std::make_shared<State>())
{
    m_state->label = std::move(label);
}

void DispatchQueue::post(std::function<void()> task)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->tasks.push_back(std::move(task));
    if (m_state->tasks.size() > m_state->idleThreads) {
        // Detached: a task may be blocked for minutes when the process wants to end, and nobody waits for it
        // then.
        try {
            std::thread([state = m_state] { work(state); }).detach();
        } catch (const std::system_error &) {
            // No more threads to be had: the task waits for the next one that is free.
        }
    } else {
        // All: glibc before 2.41 can lose the signal to one of several waiters (its bug 25847), and the task
        // would lie there until one has been idle long enough.
        m_state->workArrived.notify_all();
    }
}

} // namespace tidewright
