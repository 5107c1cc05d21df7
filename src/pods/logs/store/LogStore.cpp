// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/store/LogStore.h"

#include "platform/text/Utf8.h"

#include <QFile>
#include <QObject>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <linux/magic.h>
#include <numeric>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace tidewright {

namespace {

constexpr qint64 mostWaiting = qint64(16) << 20; ///< for the disk, before others wait
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

bool isInMemory(qint64 system)
{
    return system == TMPFS_MAGIC || system == RAMFS_MAGIC;
}

/// On another machine, or behind a program.
bool isRemote(qint64 system)
{
    constexpr std::array<qint64, 8> remote{NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, CIFS_SUPER_MAGIC,
        SMB2_SUPER_MAGIC, V9FS_MAGIC, AFS_SUPER_MAGIC, CEPH_SUPER_MAGIC, FUSE_SUPER_MAGIC};
    return std::find(remote.begin(), remote.end(), system & 0xFFFFFFFF) != remote.end();
}

/// Pages of their own, which go back to the system at once.
std::shared_ptr<char> newBlock()
{
    constexpr auto length = static_cast<std::size_t>(LogFile::blockLength);
    void *const memory = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return {memory == MAP_FAILED ? nullptr : static_cast<char *>(memory), [](char *block) {
                if (block) {
                    ::munmap(block, length);
                }
            }};
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

LogStore::LogStore(const QStringList &folders, LogDisk disk)
    : m_disk(std::move(disk))
    , m_parts(std::make_shared<std::vector<LogBytes::Part>>())
{
    QString scarcity;
    int error = ENOENT;
    for (const bool onDisk : {true, false}) {
        for (const QString &folder : folders) {
            FileDescriptor file = openIn(folder, onDisk);
            if (!file.isOpen()) {
                error = errno;
                continue;
            }
            scarcity = m_disk.scarcity(file.get());
            if (scarcity.isEmpty()) {
                m_file = std::make_shared<LogFile>(std::move(file), m_disk);
                return;
            }
        }
    }
    leaveFile(scarcity.isEmpty() ? errorText(error) : scarcity);
}

/// Closed, with errno set, when it cannot be had there.
FileDescriptor LogStore::openIn(const QString &folder, bool onDisk) const
{
    const QByteArray path = QFile::encodeName(folder);
    struct statfs system = {};
    if (folder.isEmpty() || ::statfs(path.constData(), &system) != 0) {
        errno = folder.isEmpty() ? ENOENT : errno;
        return {};
    }
    if (isRemote(system.f_type) || onDisk == isInMemory(system.f_type)) {
        errno = EOPNOTSUPP;
        return {};
    }
    return nameless(path);
}

QString LogStore::problem() const
{
    const QString reason = m_file ? m_file->problem() : m_fileProblem;
    if (reason.isEmpty()) {
        const bool hasLost = std::any_of(m_parts->begin(), m_parts->begin() + std::ptrdiff_t(m_mapped),
            [](const LogBytes::Part &part) { return LogFile::hasLost(part.memory.get()); });
        return hasLost
            ? QObject::tr("The disk does not give back all of the log: what is missing reads as zeros.")
            : QString();
    }
    return (m_full
            ? QObject::tr(
                "The log cannot be written to the disk (%1), and the %2 MB of memory for it are used up.")
            : QObject::tr("The log cannot be written to the disk (%1); up to %2 MB more is kept in memory."))
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
    settle();
    qint64 kept = 0;
    while (kept < bytes.size()) {
        const qint64 count = std::min<qint64>(makeRoom(), bytes.size() - kept);
        if (count == 0) {
            m_full = true;
            const qsizetype cut = incompleteUtf8Tail(bytes.first(kept)); // whole characters only
            m_size -= cut;
            return kept - cut;
        }
        std::memcpy(m_end, bytes.data() + kept, static_cast<std::size_t>(count));
        kept += count;
        m_end += count;
        m_room -= count;
        m_size += count;
        if (m_room == 0 && m_file) {
            m_file->write(m_parts->back().memory);
        }
    }
    return kept;
}

qint64 LogStore::makeRoom()
{
    if (m_full) {
        return 0;
    }
    const qint64 allowed = m_file ? std::numeric_limits<qint64>::max() : memoryLimit - (m_size - m_inFile);
    if (m_room == 0 && allowed > 0) {
        addBlock();
    }
    return std::min(m_room, allowed);
}

void LogStore::addBlock()
{
    const std::shared_ptr<char> block = newBlock();
    if (block) {
        auto parts = std::make_shared<std::vector<LogBytes::Part>>(*m_parts);
        parts->push_back({m_size, block});
        m_parts = std::move(parts);
        m_end = block.get();
        m_room = LogFile::blockLength;
    }
}

bool LogStore::settle()
{
    if (!m_file) {
        return false;
    }
    const QString problem = m_file->problem();
    m_inFile = m_file->written();
    const qint64 whole = m_inFile - m_inFile % LogFile::blockLength;
    std::vector<LogBytes::Part> parts(m_parts->begin(), m_parts->begin() + std::ptrdiff_t(m_mapped));
    while (qint64(parts.size()) * LogFile::partLength < whole) {
        const qint64 start = qint64(parts.size()) * LogFile::partLength;
        auto memory = m_file->map(start);
        if (!memory) {
            leaveFile(errorText(errno));
            m_inFile = start;
            return false;
        }
        parts.push_back({start, std::move(memory)});
    }
    const auto firstWaiting = std::find_if(m_parts->begin() + std::ptrdiff_t(m_mapped), m_parts->end(),
        [whole](const LogBytes::Part &block) { return block.start + LogFile::blockLength > whole; });
    if (firstWaiting != m_parts->begin() + std::ptrdiff_t(m_mapped)) {
        m_mapped = parts.size();
        parts.insert(parts.end(), firstWaiting, m_parts->end());
        m_parts = std::make_shared<std::vector<LogBytes::Part>>(std::move(parts));
    }
    if (!problem.isEmpty()) {
        leaveFile(problem);
    }
    return m_file && m_size - m_inFile >= LogFile::blockLength;
}

bool LogStore::isBehind() const
{
    return m_file && m_size - m_file->written() > mostWaiting;
}

void LogStore::leaveFile(const QString &reason)
{
    m_file.reset();
    m_fileProblem = reason;
}

} // namespace tidewright
