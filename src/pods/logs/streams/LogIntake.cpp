// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/streams/LogIntake.h"

#include <utility>

namespace tidewright {

LogIntake::LogIntake(std::function<void()> wake)
    : m_wake(std::move(wake))
{
}

void LogIntake::put(Piece piece)
{
    std::unique_lock lock(m_mutex);
    m_taken.wait(lock, [this] { return m_closed || m_waiting < mostWaiting; });
    add(lock, std::move(piece));
}

void LogIntake::end(int source, const std::optional<QString> &failure)
{
    std::unique_lock lock(m_mutex);
    add(lock, {source, Piece::Kind::End, {}, failure});
}

void LogIntake::add(std::unique_lock<std::mutex> &lock, Piece piece)
{
    if (m_closed) {
        return;
    }
    const bool first = m_pieces.empty();
    m_waiting += piece.bytes.size();
    m_pieces.push_back(std::move(piece));
    lock.unlock();
    if (first) {
        m_wake();
    }
}

std::vector<LogIntake::Piece> LogIntake::take()
{
    const std::lock_guard lock(m_mutex);
    m_waiting = 0;
    m_taken.notify_all();
    return std::exchange(m_pieces, {});
}

void LogIntake::close()
{
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    m_pieces.clear();
    m_taken.notify_all();
}

} // namespace tidewright
