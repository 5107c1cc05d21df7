// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

namespace tidewright {

/// Owns one file descriptor and closes it. Not shared between threads.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd)
        : m_fd(fd)
    {
    }
    FileDescriptor(FileDescriptor &&other) noexcept
        : m_fd(std::exchange(other.m_fd, -1))
    {
    }
    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~FileDescriptor() { close(); }

    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    void close();

private:
    int m_fd = -1;
};

/// A pipe whose ends no other child inherits. Both ends are closed when the pipe cannot be made (no
/// descriptors left).
struct Pipe
{
    FileDescriptor readEnd;
    FileDescriptor writeEnd;

    /// Large: fewer wake-ups for what comes at full speed, but pages that all of the user's pipes share.
    enum class Size { Usual, Large };
    static Pipe make(Size size = Size::Usual);
};

/// Wakes a thread that polls. Signalling is safe from any thread; once signalled it stays readable.
class WakeSignal
{
public:
    WakeSignal();
    int descriptor() const { return m_fd.get(); }
    void signal() const;
    void clear() const;

private:
    FileDescriptor m_fd;
};

} // namespace tidewright
