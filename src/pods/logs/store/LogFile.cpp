// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/store/LogFile.h"

#include "platform/threads/DispatchQueue.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <sys/mman.h>
#include <sys/statvfs.h>

namespace tidewright {

namespace {

/// What stays free of a disk: this much, and one part in so many.
constexpr qint64 smallestReserve = qint64(1) << 30;
constexpr qint64 reservedShare = 20;

DispatchQueue &logFileQueue()
{
    static auto *queue = new DispatchQueue("logFileQueue"); // outlives main(): it may hang in a write
    return *queue;
}

// A page of a mapped file that the disk does not give back raises SIGBUS, which would end the program.
struct MappedPart
{
    std::atomic<std::uintptr_t> start = 0; ///< its address; 0: there is none
    std::atomic<bool> hasLost = false;
};
constexpr std::size_t mostParts = 4096;
std::array<MappedPart, mostParts> mappedParts;
struct sigaction earlierAction = {};

/// Puts zeros in the place of such a page. Async-signal-safe.
void handleBusError(int number, siginfo_t *info, void *)
{
    const int savedError = errno;
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    for (MappedPart &part : mappedParts) {
        const std::uintptr_t start = part.start;
        if (start == 0 || address < start || address >= start + std::uintptr_t(LogFile::partLength)) {
            continue;
        }
        const auto page = static_cast<std::uintptr_t>(::getpagesize());
        void *const place = reinterpret_cast<void *>(address / page * page);
        if (::mmap(place, page, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == place) {
            part.hasLost = true;
            errno = savedError;
            return;
        }
    }
    ::sigaction(number, &earlierAction, nullptr); // somebody else's: it happens again at once
    errno = savedError;
}

void handleBusErrors()
{
    static const bool once = [] {
        struct sigaction action = {};
        action.sa_sigaction = handleBusError;
        action.sa_flags = SA_SIGINFO | SA_RESTART;
        return ::sigaction(SIGBUS, &action, &earlierAction) == 0;
    }();
    static_cast<void>(once);
}

void enterPart(const void *memory)
{
    handleBusErrors();
    for (MappedPart &part : mappedParts) {
        std::uintptr_t none = 0;
        if (part.start.compare_exchange_strong(none, reinterpret_cast<std::uintptr_t>(memory))) {
            part.hasLost = false;
            return;
        }
    }
}

void removePart(const char *memory)
{
    for (MappedPart &part : mappedParts) {
        auto own = reinterpret_cast<std::uintptr_t>(memory);
        part.start.compare_exchange_strong(own, 0);
    }
    ::munmap(const_cast<char *>(memory), static_cast<std::size_t>(LogFile::partLength));
}

} // namespace

DiskSpace spaceAround(int file)
{
    struct statvfs system = {};
    if (::fstatvfs(file, &system) != 0) {
        return {};
    }
    const auto block = static_cast<qint64>(system.f_frsize);
    return {static_cast<qint64>(system.f_bavail) * block, static_cast<qint64>(system.f_blocks) * block};
}

QString LogDisk::scarcity(int file) const
{
    const DiskSpace around = space(file);
    const qint64 reserve = std::max(smallestReserve, around.total / reservedShare);
    if (around.total == 0 || around.free >= reserve) {
        return {};
    }
    const QLocale locale;
    const auto size
        = [&](qint64 bytes) { return locale.formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat); };
    return QCoreApplication::translate(
        "LogStore", "only %1 of it are free, and a log leaves %2 to other programs")
        .arg(size(around.free), size(reserve));
}

LogFile::LogFile(FileDescriptor file, LogDisk disk)
    : m_file(std::move(file))
    , m_disk(std::move(disk))
{
}

void LogFile::write(std::shared_ptr<const char> block)
{
    const std::lock_guard lock(m_mutex);
    if (!m_problem.isEmpty()) {
        return;
    }
    m_waiting.push_back(std::move(block));
    if (!std::exchange(m_isWorking, true)) {
        logFileQueue().post([self = shared_from_this()] { self->work(); });
    }
}

qint64 LogFile::written() const
{
    const std::lock_guard lock(m_mutex);
    return m_written;
}

QString LogFile::problem() const
{
    const std::lock_guard lock(m_mutex);
    return m_problem;
}

void LogFile::work()
{
    std::unique_lock lock(m_mutex);
    while (!m_waiting.empty()) {
        const std::shared_ptr<const char> block = m_waiting.front();
        const qint64 start = m_written;
        lock.unlock();
        const QString scarcity = start % partLength == 0 ? m_disk.scarcity(m_file.get()) : QString();
        if (!scarcity.isEmpty()) {
            fail(scarcity);
        } else if (writeBlock(block.get(), start)) {
            const std::lock_guard done(m_mutex);
            m_waiting.pop_front();
        }
        lock.lock();
    }
    m_isWorking = false;
}

/// False when it failed, and nothing more is to be written.
bool LogFile::writeBlock(const char *block, qint64 start)
{
    for (qint64 done = 0; done < blockLength;) {
        const ssize_t count = m_disk.write(
            m_file.get(), block + done, static_cast<std::size_t>(blockLength - done), start + done);
        if (count > 0) {
            done += count;
            const std::lock_guard lock(m_mutex);
            m_written = start + done;
        } else if (count == 0 || errno != EINTR) {
            fail(QString::fromLocal8Bit(std::strerror(count == 0 ? ENOSPC : errno)));
            return false;
        }
    }
    return true;
}

void LogFile::fail(const QString &problem)
{
    const std::lock_guard lock(m_mutex);
    m_problem = problem;
    m_waiting.clear();
}

std::shared_ptr<const char> LogFile::map(qint64 start) const
{
    // Mapped in whole before the file has grown so far: only what has been written is ever read.
    void *const memory = ::mmap(nullptr, static_cast<std::size_t>(partLength), PROT_READ, MAP_SHARED,
        m_file.get(), static_cast<off_t>(start));
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    enterPart(memory);
    return {static_cast<const char *>(memory), removePart};
}

bool LogFile::hasLost(const char *part)
{
    return std::any_of(mappedParts.begin(), mappedParts.end(), [part](const MappedPart &mapped) {
        return mapped.start == reinterpret_cast<std::uintptr_t>(part) && mapped.hasLost;
    });
}

} // namespace tidewright
