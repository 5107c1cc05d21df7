// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/settings/AtomicFile.h"

#include <QStringBuilder>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <unistd.h>

namespace tidewright {

namespace {

constexpr int mostLinks = 40; // as many as the kernel follows
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

/// 0 or an errno value.
int writeAll(int file, const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written
            = ::write(file, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done));
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        done += std::max<ssize_t>(written, 0);
    }
    return 0;
}

/// Fills a new file and waits until the disk has it; 0 or an errno value.
int writeNewFile(const QByteArray &path, const QByteArray &bytes, FileIdentity &identity)
{
    ::unlink(path.constData()); // left by a process that was killed
    FileDescriptor file(
        ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
    if (!file.isOpen()) {
        return errno;
    }
    if (const int error = writeAll(file.get(), bytes)) {
        return error;
    }
    struct stat status = {};
    if (::fsync(file.get()) != 0 || ::fstat(file.get(), &status) != 0) {
        return errno;
    }
    identity = FileIdentity::of(status);
    return 0;
}

} // namespace

FileIdentity FileIdentity::of(const struct stat &status)
{
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

FileIdentity FileIdentity::at(const QByteArray &path)
{
    struct stat status = {};
    return ::stat(path.constData(), &status) == 0 ? of(status) : FileIdentity();
}

QByteArray followLinks(QByteArray path)
{
    for (int links = 0; links < mostLinks; ++links) {
        std::error_code error;
        const std::filesystem::path link(path.toStdString());
        const auto target = std::filesystem::read_symlink(link, error);
        if (error) {
            return path;
        }
        path = QByteArray::fromStdString((link.parent_path() / target).string());
    }
    errno = ELOOP;
    return {};
}

int replaceFile(
    const QByteArray &path, const QByteArray &bytes, FileIdentity &identity, const QByteArray &aside)
{
    const QByteArray fresh = path + ".new";
    int error = writeNewFile(fresh, bytes, identity);
    bool linked = false;
    if (error == 0 && !aside.isEmpty()) {
        linked = ::link(path.constData(), aside.constData()) == 0;
        // Some file systems give a file one name only.
        error = linked || ::rename(path.constData(), aside.constData()) == 0 ? 0 : errno;
    }
    if (error == 0 && ::rename(fresh.constData(), path.constData()) != 0) {
        error = errno;
        if (linked) {
            ::unlink(aside.constData());
        } else if (!aside.isEmpty()) {
            ::rename(aside.constData(), path.constData());
        }
    }
    if (error != 0) {
        ::unlink(fresh.constData());
    }
    return error;
}

FileLock::FileLock(const QByteArray &path)
{
    do {
        m_file
            = FileDescriptor(::open(path.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
        m_error = m_file.isOpen() ? 0 : errno;
        while (m_error == 0 && ::flock(m_file.get(), LOCK_EX) != 0) {
            m_error = errno == EINTR ? 0 : errno;
        }
    } while (m_error == 0 && !isStillAt(path));
}

/// Somebody may have removed the lock file, and the next process would lock another one.
bool FileLock::isStillAt(const QByteArray &path) const
{
    struct stat held = {};
    struct stat named = {};
    return ::fstat(m_file.get(), &held) == 0 && ::stat(path.constData(), &named) == 0
        && held.st_ino == named.st_ino && held.st_dev == named.st_dev;
}

} // namespace tidewright
