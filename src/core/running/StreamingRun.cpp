// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/StreamingRun.h"

#include "platform/text/Utf8.h"

#include <utility>

namespace tidewright {

StreamingRun::StreamingRun(std::shared_ptr<ChildProcess> child, Pipe output, Pipe error, PieceHandler handler)
    : m_child(std::move(child))
    , m_output(std::move(output))
    , m_error(std::move(error))
    , m_handler(std::move(handler))
{
}

void StreamingRun::read()
{
    PipeReader reader(m_output.readEnd.get(), m_error.readEnd.get());
    const auto end = reader.read(m_stop.descriptor(), m_child->exitDescriptor(),
        [this](PipeReader::Stream stream, QByteArrayView bytes) {
            deliver(stream, bytes);
            return !m_stopped;
        });
    if (end == PipeReader::End::EndOfFile && !m_stopped) {
        // The child closed its output and lives on; the stream is over when it is.
        m_child->waitUntilExit();
    }
    for (const auto stream : {PipeReader::Stream::Output, PipeReader::Stream::Error}) {
        // The rest of the character never came.
        pass(stream, std::exchange(m_cutCharacters[static_cast<std::size_t>(stream)], {}));
    }
}

std::optional<QString> StreamingRun::failure() const
{
    if (m_stopped) {
        return std::nullopt;
    }
    if (const auto signal = m_child->terminationSignal()) {
        return QStringLiteral("The command was ended by signal %1.").arg(*signal);
    }
    const int status = m_child->exitStatus().value_or(0);
    return status == 0 ? std::nullopt
                       : std::optional(QStringLiteral("The command ended with status %1.").arg(status));
}

void StreamingRun::stop()
{
    m_stopped = true;
    m_child->terminate();
    m_stop.signal();
}

void StreamingRun::deliver(PipeReader::Stream stream, QByteArrayView bytes)
{
    QByteArray &cut = m_cutCharacters[static_cast<std::size_t>(stream)];
    QByteArray piece = std::exchange(cut, {}) + bytes;
    const qsizetype tail = incompleteUtf8Tail(piece);
    cut = piece.last(tail);
    piece.chop(tail);
    pass(stream, piece);
}

void StreamingRun::pass(PipeReader::Stream stream, const QByteArray &piece)
{
    if (piece.isEmpty() || m_stopped) {
        return;
    }
    if (stream == PipeReader::Stream::Output) {
        m_handler(piece, std::nullopt);
    } else {
        m_handler(QByteArray(), piece);
    }
}

} // namespace tidewright
