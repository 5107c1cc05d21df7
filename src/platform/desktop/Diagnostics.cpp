// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Diagnostics.h"

#include "platform/text/DisplayText.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidewright {

namespace {

/// Another way to the same pipe or terminal, which does not wait: a terminal that has room for one byte
/// counts as writable and would keep a whole line waiting. None (-1) to files, which never wait, and to
/// sockets.
int impatientTwin(int descriptor)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || (!S_ISFIFO(status.st_mode) && !S_ISCHR(status.st_mode))) {
        return -1;
    }
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(descriptor);
    return ::open(path.constData(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

void writeQtMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    writeDiagnostic(qFormatLogMessage(type, context, message), DiagnosticStream::StandardError);
}

} // namespace

void writeDiagnostic(const QString &line, DiagnosticStream stream)
{
    static std::mutex mutex; // keeps lines whole, and the room that poll() has found
    const std::lock_guard lock(mutex);
    const int own = stream == DiagnosticStream::StandardOutput ? STDOUT_FILENO : STDERR_FILENO;
    const int twin = impatientTwin(own);
    constexpr qsizetype longest = 10'000; // of a line that may hold one of a listing
    const QByteArray bytes = display_text::clean(display_text::shortened(line, longest)).toUtf8() + '\n';
    pollfd writable{twin >= 0 ? twin : own, POLLOUT, 0};
    for (QByteArrayView rest(bytes); !rest.isEmpty() && ::poll(&writable, 1, 0) == 1;) {
        // What poll() calls writable takes so many bytes at once.
        const auto count = static_cast<std::size_t>(std::min<qsizetype>(rest.size(), PIPE_BUF));
        const ssize_t written = ::write(writable.fd, rest.data(), count);
        if (written < 0 && errno != EINTR) {
            break;
        }
        rest = rest.sliced(std::max<ssize_t>(0, written));
    }
    if (twin >= 0) {
        ::close(twin);
    }
}

void sendQtMessagesToDiagnostics()
{
    qInstallMessageHandler(writeQtMessage);
}

} // namespace tidewright
