// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/streams/LogStreams.h"

#include "platform/desktop/Diagnostics.h"
#include "platform/threads/MainQueue.h"

#include <algorithm>

namespace tidewright {

LogStreams::LogStreams()
{
    constexpr int millisecondsHeldUp = 20;
    m_later.setSingleShot(true);
    m_later.setInterval(millisecondsHeldUp);
    m_later.callOnTimeout(this, &LogStreams::takePieces);
    renewIntake();
}

LogStreams::~LogStreams()
{
    close();
}

void LogStreams::renewIntake()
{
    m_intake = std::make_shared<LogIntake>([self = QPointer<LogStreams>(this)] {
        postToMain(self, [](LogStreams &streams) { streams.takePieces(); });
    });
}

bool LogStreams::hasRunning() const
{
    return std::any_of(m_sources.cbegin(), m_sources.cend(),
        [](const LogSource &source) { return !source.ended && !source.waits; });
}

int LogStreams::add()
{
    m_sources.emplace_back().waits = true;
    m_shells.emplace_back();
    return count() - 1;
}

void LogStreams::start(int source, std::shared_ptr<Shell> shell, const QStringList &arguments,
    std::shared_ptr<LogTimestamps> timestamps)
{
    const auto index = static_cast<std::size_t>(source);
    m_sources[index].begin();
    m_shells[index] = shell;
    using Kind = LogIntake::Piece::Kind;
    shell->runStreaming(
        arguments,
        [intake = m_intake, source, timestamps](
            const QByteArray &output, const std::optional<QByteArray> &error) {
            if (error) {
                intake->put({source, Kind::Error, *error});
            } else if (const QByteArray text = timestamps ? timestamps->take(output) : output;
                       !text.isEmpty()) {
                intake->put({source, Kind::Output, text});
            }
        },
        [intake = m_intake, source, timestamps](const auto &failure) {
            if (const QByteArray rest = timestamps ? timestamps->finish() : QByteArray(); !rest.isEmpty()) {
                intake->put({source, Kind::Output, rest});
            }
            intake->end(source, failure);
        });
    Q_EMIT changed({source}, false);
}

void LogStreams::takePieces()
{
    if (m_isHeldUp && m_isHeldUp()) {
        m_later.start();
        return;
    }
    QList<int> changedSources;
    bool isNews = false;
    for (const LogIntake::Piece &piece : m_intake->take()) {
        LogSource &source = m_sources[static_cast<std::size_t>(piece.source)];
        if (piece.kind == LogIntake::Piece::Kind::Output) {
            source.hasWritten = true;
            Q_EMIT arrived(piece.source, piece.bytes);
            continue;
        }
        if (piece.kind == LogIntake::Piece::Kind::End) {
            source.ended = true;
            source.endedAt = QDateTime::currentDateTime();
            source.failure = piece.failure;
        } else {
            isNews = isNews || source.said.isEmpty();
            source.hear(piece.bytes);
        }
        isNews = isNews || source.failure;
        if (!changedSources.contains(piece.source)) {
            changedSources.append(piece.source);
        }
    }
    if (!changedSources.isEmpty()) {
        Q_EMIT changed(changedSources, isNews);
    }
}

void LogStreams::cancel()
{
    for (const auto &shell : m_shells) {
        if (shell) {
            shell->cancel();
        }
    }
}

void LogStreams::forget()
{
    m_intake->close();
    cancel();
    m_shells.clear();
    m_sources.clear();
    renewIntake();
}

void LogStreams::close()
{
    if (m_closed) {
        return;
    }
    m_closed = true;
    m_intake->close();
    for (const auto &shell : m_shells) {
        const std::shared_ptr<ChildProcess> process = shell ? shell->process() : nullptr;
        const bool isRunning = process && process->isRunning();
        if (shell) {
            shell->cancel(); // also one whose child is only about to start
        }
        if (isRunning) {
            writeDiagnostic(QStringLiteral("Process terminated"));
        }
    }
}

} // namespace tidewright
