// SPDX-License-Identifier: GPL-3.0-or-later
#include "external/CapturedOutput.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tidewright {

namespace {

constexpr off_t capacity = off_t(16) << 20; // memory is taken only for what is written

} // namespace

Pipe makeCapture()
{
    FileDescriptor reader(::memfd_create("output", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    const bool ready = reader.isOpen() && ::ftruncate(reader.get(), capacity) == 0
        && ::fcntl(reader.get(), F_ADD_SEALS, F_SEAL_GROW) == 0;
    FileDescriptor writer(ready ? ::fcntl(reader.get(), F_DUPFD_CLOEXEC, 0) : -1);
    return writer.isOpen() ? Pipe{std::move(reader), std::move(writer)} : Pipe{};
}

QByteArray capturedBytes(const Pipe &capture)
{
    // Both ends share one position, which is where the next byte would go.
    const off_t end = ::lseek(capture.readEnd.get(), 0, SEEK_CUR);
    QByteArray bytes(qMax<qsizetype>(end, 0), Qt::Uninitialized);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pread(
            capture.readEnd.get(), bytes.data() + done, static_cast<std::size_t>(bytes.size() - done), done);
        if (count <= 0) {
            break;
        }
        done += count;
    }
    bytes.truncate(done);
    return bytes;
}

} // namespace tidewright
