// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/LogStore.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/magic.h>
#include <numeric>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace tidewright {

namespace {

constexpr qint64 filePart = qint64(64) << 20;
constexpr qint64 memoryPart = qint64(1) << 20;
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

QString tr(const char *text)
{
    return QCoreApplication::translate("LogStore", text);
}

/// A file without a name; on file systems that cannot make one, its name is taken away at once.
FileDescriptor nameless(const QByteArray &folder)
{
    FileDescriptor file(::open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC | O_EXCL, ownerOnly));
    if (!file.isOpen()) {
        QByteArray path = folder + "/log-XXXXXX";
        file = FileDescriptor(::mkostemp(path.data(), O_CLOEXEC));
        if (file.isOpen()) {
            ::unlink(path.constData());
        }
    }
    return file;
}

} // namespace

qint64 totalLength(const std::vector<LogRange> &ranges)
{
    return std::accumulate(ranges.cbegin(), ranges.cend(), qint64(0),
        [](qint64 sum, const LogRange &range) { return sum + range.length; });
}

QByteArrayView LogBytes::piece(qint64 start, qint64 length) const
{
    length = std::min(length, m_size - start);
    if (length <= 0) {
        return {};
    }
    const auto behind = std::upper_bound(m_parts->cbegin(), m_parts->cend(), start,
        [](qint64 wanted, const Part &part) { return wanted < part.start; });
    const Part &part = *std::prev(behind);
    if (behind != m_parts->cend()) {
        length = std::min(length, behind->start - start);
    }
    return {part.memory.get() + (start - part.start), static_cast<qsizetype>(length)};
}

QByteArray LogBytes::read(const std::vector<LogRange> &ranges) const
{
    QByteArray result;
    result.reserve(static_cast<qsizetype>(totalLength(ranges)));
    for (LogRange range : ranges) {
        while (range.length > 0) {
            const QByteArrayView next = piece(range.start, range.length);
            if (next.isEmpty()) {
                return result;
            }
            result.append(next);
            range.start += next.size();
            range.length -= next.size();
        }
    }
    return result;
}

LogStore::LogStore(const QStringList &folders, Write write)
    : m_write(write ? std::move(write) : Write(::pwrite))
    , m_parts(std::make_shared<std::vector<LogBytes::Part>>())
{
    const auto opens = [&](bool onDisk) {
        return std::any_of(
            folders.cbegin(), folders.cend(), [&](const QString &folder) { return openIn(folder, onDisk); });
    };
    if (!opens(true) && !opens(false)) {
        leaveFile(errno);
    }
}

bool LogStore::openIn(const QString &folder, bool onDisk)
{
    const QByteArray path = QFile::encodeName(folder);
    struct statfs system = {};
    if (folder.isEmpty() || ::statfs(path.constData(), &system) != 0
        || (onDisk && (system.f_type == TMPFS_MAGIC || system.f_type == RAMFS_MAGIC))) {
        return false;
    }
    m_file = nameless(path);
    return m_file.isOpen();
}

QString LogStore::problem() const
{
    if (m_fileError == 0) {
        return {};
    }
    const QString reason = QString::fromLocal8Bit(std::strerror(m_fileError));
    return (m_full
            ? tr("The log cannot be written to the disk (%1), and the %2 MB of memory for it are used up.")
            : tr("The log cannot be written to the disk (%1); up to %2 MB more is kept in memory."))
        .arg(reason)
        .arg(memoryLimit >> 20);
}

LogBytes LogStore::bytes() const
{
    LogBytes bytes;
    bytes.m_parts = m_parts;
    bytes.m_size = m_size;
    return bytes;
}

qint64 LogStore::append(QByteArrayView bytes)
{
    if (m_full) {
        return 0;
    }
    const QByteArrayView all = bytes;
    while (!bytes.isEmpty() && makeRoom()) {
        const auto count = static_cast<qsizetype>(std::min<qint64>(m_room, bytes.size()));
        ssize_t written = count;
        if (m_memory) {
            std::memcpy(m_memory, bytes.data(), static_cast<std::size_t>(count));
            m_memory += count;
            m_inMemory += count;
        } else {
            written = m_write(m_file.get(), bytes.data(), static_cast<std::size_t>(count), m_size);
            if (written <= 0) {
                if (written == 0 || errno != EINTR) {
                    leaveFile(written == 0 ? ENOSPC : errno);
                }
                continue;
            }
        }
        m_size += written;
        m_room -= written;
        bytes = bytes.sliced(written);
    }
    qsizetype kept = all.size() - bytes.size();
    while (m_full && kept > 0 && (static_cast<unsigned char>(all[kept]) & 0xC0) == 0x80) {
        --kept; // whole characters only
        --m_size;
    }
    return kept;
}

bool LogStore::makeRoom()
{
    if (m_room > 0) {
        return true;
    }
    if (m_file.isOpen() && mapNextPart()) {
        return true;
    }
    if (m_inMemory >= memoryLimit) {
        m_full = true;
        return false;
    }
    const std::shared_ptr<char> memory(
        new char[static_cast<std::size_t>(memoryPart)], [](char *block) { delete[] block; });
    m_memory = memory.get();
    addPart(memory, memoryPart);
    return true;
}

bool LogStore::mapNextPart()
{
    // Mapped in whole before the file has grown so far: only what has been written is ever read.
    void *address = ::mmap(nullptr, static_cast<std::size_t>(filePart), PROT_READ, MAP_SHARED, m_file.get(),
        static_cast<off_t>(m_size));
    if (address == MAP_FAILED) {
        leaveFile(errno);
        return false;
    }
    addPart({static_cast<const char *>(address),
                [](const char *memory) {
                    ::munmap(const_cast<char *>(memory), static_cast<std::size_t>(filePart));
                }},
        filePart);
    return true;
}

void LogStore::leaveFile(int error)
{
    m_file = FileDescriptor();
    m_room = 0;
    m_fileError = error;
}

void LogStore::addPart(std::shared_ptr<const char> memory, qint64 length)
{
    auto parts = std::make_shared<std::vector<LogBytes::Part>>(*m_parts);
    // A part whose file failed before its first byte holds nothing.
    while (!parts->empty() && parts->back().start == m_size) {
        parts->pop_back();
    }
    parts->push_back({m_size, std::move(memory)});
    m_parts = std::move(parts);
    m_room = length;
}

} // namespace tidewright
