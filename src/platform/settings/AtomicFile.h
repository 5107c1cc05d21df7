// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/FileDescriptor.h"

#include <QByteArray>

#include <cstdint>
#include <sys/stat.h>

namespace tidewright {

/// Tells one state of a file from another without reading it. All zero when there is no such file.
struct FileIdentity
{
    static FileIdentity of(const struct stat &status);
    /// Of the file at `path`, links followed; all zero also when it cannot be looked at.
    static FileIdentity at(const QByteArray &path);

    bool operator==(const FileIdentity &) const = default;

    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedSeconds = 0;
    std::int64_t modifiedNanoseconds = 0;
};

/// The file that `path` stands for: the end of its chain of symbolic links, which need not exist. Empty, with
/// errno set, when the chain has no end.
QByteArray followLinks(QByteArray path);

/// Puts `bytes` in the place of the file at `path`, readable by its owner alone. Whatever happens meanwhile
/// (kill, power cut, full disk), the file holds the old bytes or the new ones, whole; after a power cut it
/// may be the old ones. A link at `path` itself is replaced: see followLinks(). The new bytes go through
/// PATH.new, so callers take turns with a FileLock. With a name in `aside`, the old file goes on under it.
/// QSaveFile was weighed: it reports success when the disk refuses to sync (quota, NFS), and each kill in the
/// middle leaves one more file behind (3 after 200 kills). Sets `identity` of the new file; returns 0 or an
/// errno value, and then nothing has changed. Waits for the disk. Any thread.
int replaceFile(
    const QByteArray &path, const QByteArray &bytes, FileIdentity &identity, const QByteArray &aside = {});

/// The exclusive lock of a lock file, held from construction to destruction, between processes and threads
/// alike. Waits for its turn without end; the kernel ends the turn of a process that died.
class FileLock
{
public:
    /// The lock file is made when there is none and stays.
    explicit FileLock(const QByteArray &path);

    /// 0 when the lock is held, otherwise the errno value that says why it could not be had.
    int error() const { return m_error; }

private:
    bool isStillAt(const QByteArray &path) const;

    FileDescriptor m_file;
    int m_error = 0;
};

} // namespace tidewright
