// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/ChildProcess.h"
#include "platform/process/PipeReader.h"

#include <QByteArray>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace tidewright {

/// One streaming child from its start to its end. Shared by the shell, which may stop it, and the thread that
/// reads it.
class StreamingRun
{
public:
    /// Shell::PieceHandler
    using PieceHandler
        = std::function<void(const QByteArray &output, const std::optional<QByteArray> &error)>;

    StreamingRun(std::shared_ptr<ChildProcess> child, Pipe output, Pipe error, PieceHandler handler);

    /// Blocks until the child has exited or the run is stopped.
    void read();
    /// Ends the child; the handler gets nothing more. Any thread.
    void stop();
    /// Once `read` has returned: what the child ended with, unless that was status 0 or it was stopped.
    std::optional<QString> failure() const;

private:
    void deliver(PipeReader::Stream stream, QByteArrayView bytes);
    void pass(PipeReader::Stream stream, const QByteArray &piece);

    const std::shared_ptr<ChildProcess> m_child;
    Pipe m_output;
    Pipe m_error;
    const PieceHandler m_handler;
    WakeSignal m_stop;
    std::atomic<bool> m_stopped = false;
    std::array<QByteArray, 2>
        m_cutCharacters; // per stream, the beginning of a character whose rest is to come
};

} // namespace tidewright
