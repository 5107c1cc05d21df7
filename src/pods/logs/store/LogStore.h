// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/FileDescriptor.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <sys/types.h>
#include <unistd.h>
#include <vector>

namespace tidewright {

/// A part of a log, in bytes from the log's beginning.
struct LogRange
{
    qint64 start = 0;
    qint64 length = 0;

    qint64 end() const { return start + length; }
    friend bool operator==(const LogRange &, const LogRange &) = default;
};

qint64 totalLength(const std::vector<LogRange> &ranges);

/// The bytes of a log as they were at one moment; cheap to copy, and readable from any thread while the log
/// grows or goes away.
class LogBytes
{
public:
    qint64 size() const { return m_size; }
    /// What lies in one piece of memory from `start` on, at most `length` bytes; empty only at the end.
    QByteArrayView piece(qint64 start, qint64 length) const;
    /// The bytes of the ranges, one after another.
    QByteArray read(const std::vector<LogRange> &ranges) const;
    QByteArray read(qint64 start, qint64 length) const { return read({{start, length}}); }
    char at(qint64 position) const { return piece(position, 1).front(); }

private:
    friend class LogStore;
    /// Memory at one address, and what lets it go.
    struct Part
    {
        qint64 start;
        std::shared_ptr<const char> memory;
    };

    std::shared_ptr<const std::vector<Part>> m_parts;
    qint64 m_size = 0;
};

/// Of a file system, in bytes.
struct DiskSpace
{
    qint64 free = 0; ///< for users
    qint64 total = 0; ///< 0 where it is not known
};
/// Of the one that an open file lies on.
DiskSpace spaceAround(int file);

/// What a log needs of the disk; a test may answer in its place.
struct LogDisk
{
    std::function<ssize_t(int file, const void *bytes, size_t count, off_t position)> write = ::pwrite;
    std::function<DiskSpace(int file)> space = spaceAround;
};

/// Keeps all bytes of a log: in a file that no name leads to, which only this user could have opened and
/// which goes away with the store, however the program ends; mapped into memory for reading, so that the
/// kernel may put it back to the disk. When the file cannot be written any more, or when it would leave too
/// little of the disk to other programs, the bytes go to memory, up to a limit. Main thread, but `bytes()`
/// may be handed to any.
class LogStore
{
public:
    /// Bytes kept in memory once the file takes no more.
    static constexpr qint64 memoryLimit = qint64(64) << 20;

    /// Uses the first of the folders that is on a disk with space to spare, else the first that can be
    /// written at all.
    explicit LogStore(const QStringList &folders, LogDisk disk = {});

    /// Adds bytes (whole characters) at the end and returns how many of them are kept: all, unless the limit
    /// is reached.
    qint64 append(QByteArrayView bytes);
    LogBytes bytes() const;
    qint64 size() const { return m_size; }
    /// Why the log is not in its file, as a sentence to show; empty while it is.
    QString problem() const;
    /// Nothing more can be kept.
    bool isFull() const { return m_full; }

private:
    bool openIn(const QString &folder, bool onDisk);
    /// Room for more bytes at the end; false when there is none.
    bool makeRoom();
    bool mapNextPart();
    void leaveFile(const QString &reason);
    /// Why the file should not grow; empty while there is enough space.
    QString scarcity() const;
    void addPart(std::shared_ptr<const char> memory, qint64 length);

    const LogDisk m_disk;
    FileDescriptor m_file;
    std::shared_ptr<const std::vector<LogBytes::Part>> m_parts;
    char *m_memory = nullptr; ///< the writable last part, when it is memory
    qint64 m_room = 0; ///< bytes that the last part can still take
    qint64 m_size = 0;
    qint64 m_inMemory = 0;
    QString m_fileProblem; ///< why the file is not used any more
    bool m_full = false;
};

} // namespace tidewright
