// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace tidewright {

/// The way of the streams' pieces to the main thread, in the order in which they arrive. When more waits than
/// the main thread keeps up with, whoever brings more has to wait; so a flood fills the pipe of its child and
/// not the memory.
class LogIntake
{
public:
    /// Bytes that may wait.
    static constexpr qsizetype mostWaiting = 2 * 1024 * 1024;

    struct Piece
    {
        enum class Kind { Output, Error, End };
        int source = 0;
        Kind kind = Kind::Output;
        QByteArray bytes = {};
        std::optional<QString> failure = {}; ///< of an end: what the source ended with
    };

    /// `wake` is called when pieces wait where none did before, on the thread that brought the first.
    explicit LogIntake(std::function<void()> wake);

    /// Blocks while too much waits. Any thread but the main one.
    void put(Piece piece);
    /// Says that a source has ended, and what with if not well. Never blocks; any thread.
    void end(int source, const std::optional<QString> &failure);
    /// All that waits.
    std::vector<Piece> take();
    /// Nobody takes any more: what waits and what comes is dropped.
    void close();

private:
    void add(std::unique_lock<std::mutex> &lock, Piece piece);

    const std::function<void()> m_wake;
    std::mutex m_mutex; // guards the rest
    std::condition_variable m_taken;
    std::vector<Piece> m_pieces;
    qsizetype m_waiting = 0;
    bool m_closed = false;
};

} // namespace tidewright
