// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/store/LogStore.h"

#include "platform/text/Utf8.h"

#include <QCoreApplication>
#include <QFile>
#include <QLocale>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/magic.h>
#include <numeric>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace tidewright {

namespace {

constexpr qint64 filePart = qint64(64) << 20;
constexpr qint64 memoryPart = qint64(1) << 20;
/// What stays free of a disk: this much, and one part in so many.
constexpr qint64 smallestReserve = qint64(1) << 30;
constexpr qint64 reservedShare = 20;
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

QString tr(const char *text)
{
    return QCoreApplication::translate("LogStore", text);
}

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
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

DiskSpace spaceAround(int file)
{
    struct statvfs system = {};
    if (::fstatvfs(file, &system) != 0) {
        return {};
    }
    const auto block = static_cast<qint64>(system.f_frsize);
    return {static_cast<qint64>(system.f_bavail) * block, static_cast<qint64>(system.f_blocks) * block};
}

LogStore::LogStore(const QStringList &folders, LogDisk disk)
    : m_disk(std::move(disk))
    , m_parts(std::make_shared<std::vector<LogBytes::Part>>())
{
    const auto opens = [&](bool onDisk) {
        return std::any_of(
            folders.cbegin(), folders.cend(), [&](const QString &folder) { return openIn(folder, onDisk); });
    };
    if (!opens(true) && !opens(false)) {
        leaveFile(errorText(errno));
    }
}

QString LogStore::scarcity() const
{
    const DiskSpace space = m_disk.space(m_file.get());
    const qint64 reserve = std::max(smallestReserve, space.total / reservedShare);
    if (space.total == 0 || space.free >= reserve) {
        return {};
    }
    const QLocale locale;
    const auto size
        = [&](qint64 bytes) { return locale.formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat); };
    return tr("only %1 of it are free, and a log leaves %2 to other programs")
        .arg(size(space.free), size(reserve));
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
    return m_file.isOpen() && (!onDisk || scarcity().isEmpty());
}

QString LogStore::problem() const
{
    if (m_fileProblem.isEmpty()) {
        return {};
    }
    return (m_full
            ? tr("The log cannot be written to the disk (%1), and the %2 MB of memory for it are used up.")
            : tr("The log cannot be written to the disk (%1); up to %2 MB more is kept in memory."))
        .arg(m_fileProblem)
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
            written = m_disk.write(m_file.get(), bytes.data(), static_cast<std::size_t>(count), m_size);
            if (written <= 0) {
                if (written == 0 || errno != EINTR) {
                    leaveFile(errorText(written == 0 ? ENOSPC : errno));
                }
                continue;
            }
        }
        m_size += written;
        m_room -= written;
        bytes = bytes.sliced(written);
    }
    qsizetype kept = all.size() - bytes.size();
    if (m_full) {
        const qsizetype cut = incompleteUtf8Tail(all.first(kept)); // whole characters only
        kept -= cut;
        m_size -= cut;
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
    if (const QString reason = scarcity(); !reason.isEmpty()) {
        leaveFile(reason);
        return false;
    }
    // Mapped in whole before the file has grown so far: only what has been written is ever read.
    void *address = ::mmap(nullptr, static_cast<std::size_t>(filePart), PROT_READ, MAP_SHARED, m_file.get(),
        static_cast<off_t>(m_size));
    if (address == MAP_FAILED) {
        leaveFile(errorText(errno));
        return false;
    }
    addPart({static_cast<const char *>(address),
                [](const char *memory) {
                    ::munmap(const_cast<char *>(memory), static_cast<std::size_t>(filePart));
                }},
        filePart);
    return true;
}

void LogStore::leaveFile(const QString &reason)
{
    m_file = FileDescriptor();
    m_room = 0;
    m_fileProblem = reason;
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
