// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/StreamingRun.h"

#include "platform/PipeReader.h"
#include "platform/Utf8.h"

namespace tidewright {

StreamingRun::StreamingRun(
    std::shared_ptr<ChildProcess> child, Pipe output, Pipe error, Shell::PieceHandler handler)
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
            deliver(static_cast<std::size_t>(stream), bytes);
            return !m_stopped;
        });
    if (end == PipeReader::End::EndOfFile && !m_stopped) {
        // The child closed its output and lives on; the stream is over when it is.
        m_child->waitUntilExit();
    }
}

void StreamingRun::stop()
{
    m_stopped = true;
    m_child->terminate();
    m_stop.signal();
}

void StreamingRun::deliver(std::size_t stream, QByteArrayView bytes)
{
    QByteArray &cut = m_cutCharacters[stream];
    const QByteArray piece = cut + bytes;
    const qsizetype tail = incompleteUtf8Tail(piece);
    std::optional<QString> text = decodeUtf8(QByteArrayView(piece).chopped(tail));
    if (!text && !cut.isEmpty()) {
        // The character's rest never came; that does not make these bytes bad.
        text = decodeUtf8(bytes.chopped(tail));
    }
    cut = piece.last(tail);
    if (!text || text->isEmpty() || m_stopped) {
        return;
    }
    if (stream == static_cast<std::size_t>(PipeReader::Stream::Output)) {
        m_handler(*text, std::nullopt);
    } else {
        m_handler(QString(), *text);
    }
}

} // namespace tidewright
