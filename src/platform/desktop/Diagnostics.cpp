// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Diagnostics.h"

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <poll.h>
#include <pthread.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tidewright {

namespace {

constexpr qsizetype capacity = qsizetype(4) << 20;
constexpr auto patienceWithFatalMessages = std::chrono::milliseconds(500);

/// Not through stdio: a write that blocks would hold a lock there, which others wait for when the process
/// ends. What cannot be written because nobody will ever read it is passed over.
void writeAll(int descriptor, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count >= 0) {
            bytes = bytes.sliced(count);
        } else if (errno == EAGAIN) {
            pollfd writable{descriptor, POLLOUT, 0};
            ::poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            return;
        }
    }
}

/// The lines on their way to one descriptor, and the thread that writes them.
class LineWriter
{
public:
    explicit LineWriter(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    void add(const QByteArray &line)
    {
        const std::lock_guard lock(m_mutex);
        // Once a line is missing the rest waits for the note that says so.
        if (m_dropped > 0 || m_waiting.size() + line.size() > capacity) {
            ++m_dropped;
        } else {
            m_waiting += line;
        }
        startThread();
        m_changed.notify_all();
    }

    bool waitUntilWritten(std::chrono::steady_clock::time_point end)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_until(lock, end, [this] { return !hasWork() && !m_isWriting; });
    }

private:
    bool hasWork() const { return !m_waiting.isEmpty() || m_dropped > 0; }

    void startThread()
    {
        try {
            if (!m_hasThread) {
                std::thread([this] { work(); }).detach();
                m_hasThread = true;
            }
        } catch (const std::system_error &) {
            // No more threads to be had: the next line tries again.
        }
    }

    void work()
    {
        pthread_setname_np(pthread_self(), "diagnostics");
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return hasWork(); });
            QByteArray batch = std::exchange(m_waiting, {});
            if (const qint64 dropped = std::exchange(m_dropped, 0)) {
                batch += QByteArray::number(dropped) + " lines dropped\n";
            }
            m_isWriting = true;
            lock.unlock();
            writeAll(m_descriptor, batch);
            lock.lock();
            m_isWriting = false;
            m_changed.notify_all();
        }
    }

    const int m_descriptor;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    QByteArray m_waiting; ///< whole lines
    qint64 m_dropped = 0; ///< lines that belong behind them
    bool m_isWriting = false;
    bool m_hasThread = false;
};

LineWriter &writer(DiagnosticStream stream)
{
    // Both outlive main(): their threads may still be blocked.
    static auto *output = new LineWriter(STDOUT_FILENO);
    static auto *error = new LineWriter(STDERR_FILENO);
    return stream == DiagnosticStream::StandardOutput ? *output : *error;
}

void writeQtMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    writeDiagnostic(qFormatLogMessage(type, context, message), DiagnosticStream::StandardError);
    if (type == QtFatalMsg) {
        flushDiagnostics(patienceWithFatalMessages);
    }
}

} // namespace

void writeDiagnostic(const QString &line, DiagnosticStream stream)
{
    writer(stream).add(line.toUtf8() + '\n');
}

bool flushDiagnostics(std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    const bool output = writer(DiagnosticStream::StandardOutput).waitUntilWritten(end);
    const bool error = writer(DiagnosticStream::StandardError).waitUntilWritten(end);
    return output && error;
}

void sendQtMessagesToDiagnostics()
{
    qInstallMessageHandler(writeQtMessage);
}

} // namespace tidewright
