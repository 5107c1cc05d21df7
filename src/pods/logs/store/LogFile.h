// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <sys/types.h>
#include <unistd.h>

namespace tidewright {

/// Of a file system, in bytes.
struct DiskSpace
{
    qint64 free = 0; ///< for users
    qint64 total = 0; ///< 0 where it is not known
};
/// Of the one that an open file lies on.
DiskSpace spaceAround(int file);

/// What a log needs of the disk; a test may answer in its place. Asked on any thread.
struct LogDisk
{
    std::function<ssize_t(int file, const void *bytes, size_t count, off_t position)> write = ::pwrite;
    std::function<DiskSpace(int file)> space = spaceAround;

    /// Why a file should not grow; empty while there is enough space.
    QString scarcity(int file) const;
};

/// The file of a log, which a thread of its own writes: a disk that is slow, or hangs, holds up nobody else.
/// Main thread unless it says otherwise.
class LogFile : public std::enable_shared_from_this<LogFile>
{
public:
    /// What is written at a time, and what is mapped at a time; bytes.
    static constexpr qint64 blockLength = qint64(1) << 18;
    static constexpr qint64 partLength = qint64(64) << 20;

    LogFile(FileDescriptor file, LogDisk disk);

    /// Has the next block written behind the earlier ones. It is not changed any more.
    void write(std::shared_ptr<const char> block);
    /// How many bytes are in the file, for good.
    qint64 written() const;
    /// Why nothing is written any more; empty while all is well.
    QString problem() const;

    /// One part of the file in memory, for reading on any thread; null, with errno set, when it cannot be
    /// had. Of what the disk does not give back, zeros are read.
    std::shared_ptr<const char> map(qint64 start) const;
    /// Whether the disk did not give back something of a part.
    static bool hasLost(const char *part);

private:
    void work();
    bool writeBlock(const char *block, qint64 start);
    void fail(const QString &problem);

    const FileDescriptor m_file;
    const LogDisk m_disk;
    mutable std::mutex m_mutex; // guards the rest
    std::deque<std::shared_ptr<const char>> m_waiting;
    bool m_isWorking = false;
    qint64 m_written = 0;
    QString m_problem;
};

} // namespace tidewright
