// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/store/LogFile.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
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

/// Keeps all bytes of a log: in a file that no name leads to, which only this user could have opened and
/// which goes away with the store, however the program ends; mapped into memory for reading, so that the
/// kernel may put it back to the disk. What is not in the file yet is in memory; when the file cannot be
/// written any more, or when it would leave too little of the disk to other programs, it stays there, up to a
/// limit. Main thread, but `bytes()` may be handed to any.
class LogStore
{
public:
    /// Bytes kept in memory once the file takes no more.
    static constexpr qint64 memoryLimit = qint64(64) << 20;

    /// Uses the first of the folders that is on a local disk with space to spare, else the first in memory
    /// that can be written. Never one on another machine, or behind a program: it may hang, or go.
    explicit LogStore(const QStringList &folders, LogDisk disk = {});

    /// Adds bytes (whole characters) at the end and returns how many of them are kept: all, unless the limit
    /// is reached. Never waits for the disk.
    qint64 append(QByteArrayView bytes);
    LogBytes bytes() const;
    qint64 size() const { return m_size; }
    /// Takes over what has come into the file meanwhile. False when all that can be is there.
    bool settle();
    /// So much waits for the disk that no more should come for now.
    bool isBehind() const;
    /// Why the log is not in its file, as a sentence to show; empty while it is.
    QString problem() const;
    /// Nothing more can be kept.
    bool isFull() const { return m_full; }

private:
    FileDescriptor openIn(const QString &folder, bool onDisk) const;
    /// How many more bytes can be put at the end now; 0 when none can.
    qint64 makeRoom();
    void leaveFile(const QString &reason);
    void addBlock();

    const LogDisk m_disk;
    std::shared_ptr<LogFile> m_file; ///< null when it is not used any more
    QString m_fileProblem; ///< why
    /// Those of the file, and then the blocks that it does not hold yet.
    std::shared_ptr<const std::vector<LogBytes::Part>> m_parts;
    std::size_t m_mapped = 0; ///< how many are of the file
    char *m_end = nullptr; ///< in the last block
    qint64 m_room = 0; ///< what the last block can still take
    qint64 m_size = 0;
    qint64 m_inFile = 0;
    bool m_full = false;
};

} // namespace tidewright
