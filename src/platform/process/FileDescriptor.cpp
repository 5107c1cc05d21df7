// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/FileDescriptor.h"

#include <cstdint>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tidewright {

void FileDescriptor::close()
{
    if (m_fd >= 0) {
        ::close(std::exchange(m_fd, -1));
    }
}

Pipe Pipe::make(Size size)
{
    int ends[2] = {-1, -1};
    Pipe pipe;
    if (::pipe2(ends, O_CLOEXEC) == 0) {
        pipe.readEnd = FileDescriptor(ends[0]);
        pipe.writeEnd = FileDescriptor(ends[1]);
        if (size == Size::Large) {
            ::fcntl(ends[0], F_SETPIPE_SZ, 1 << 18); // in vain where the user's allowance is used up
        }
    }
    return pipe;
}

WakeSignal::WakeSignal()
    : m_fd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

void WakeSignal::signal() const
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_fd.get(), &one, sizeof one);
}

void WakeSignal::clear() const
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = ::read(m_fd.get(), &count, sizeof count);
}

} // namespace tidewright
