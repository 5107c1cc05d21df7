// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/running/Console.h"
#include "core/running/Shell.h"
#include "platform/process/FileDescriptor.h"

#include <QTemporaryFile>

#include <chrono>
#include <ctime>
#include <future>

namespace tidewright::test {

/// How long a thing that must happen may take, sanitizers and a busy machine included.
inline constexpr std::chrono::seconds deadline(20);

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool sanitized = true;
#else
inline constexpr bool sanitized = false;
#endif

/// A console that keeps its entries as "command|response|error", and notes calls from a wrong thread.
class RecordingConsole : public Console
{
public:
    using Console::Console;
    void addEntry(
        const QString &command, const QString &response, const std::optional<ConsoleError> &error) override;
    QStringList entries;
};

/// What the calling thread has computed until now, in milliseconds: unlike the clock on the wall it does not
/// count what others do on a busy machine.
inline double threadTime()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

QString fakeToolPath();
/// The fake tool with a script whose words are separated by single spaces.
QStringList fakeTool(const QByteArray &script);

/// Calls `function` on a thread of the queue. Letting the future go does not wait.
template <typename Function>
auto inBackground(Function function, DispatchQueue &queue = shellQueue()) -> std::future<decltype(function())>
{
    auto promise = std::make_shared<std::promise<decltype(function())>>();
    auto future = promise->get_future();
    queue.post([promise, function = std::move(function)] { promise->set_value(function()); });
    return future;
}

/// The result of a blocking run in the background, or an error that says that it did not end in time.
ShellResult runToEnd(const std::shared_ptr<Shell> &shell, const QStringList &arguments);

template <typename Value> bool arrives(const std::future<Value> &future)
{
    return future.wait_for(deadline) == std::future_status::ready;
}

/// While it lives, the standard output goes to a file.
class CapturedOutput
{
public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput &) = delete;
    CapturedOutput &operator=(const CapturedOutput &) = delete;

    QString text() const;

private:
    QTemporaryFile m_file;
    int m_before = -1;
};

/// A pipe that takes nothing more: nobody reads it.
Pipe fullPipe();

/// While it lives, this process can open no descriptor.
class NoDescriptorsLeft
{
public:
    NoDescriptorsLeft();
    NoDescriptorsLeft(const NoDescriptorsLeft &) = delete;
    NoDescriptorsLeft &operator=(const NoDescriptorsLeft &) = delete;

private:
    std::vector<FileDescriptor> m_taken;
};

/// Whether a process is there and has not ended (one that nobody has reaped yet has ended).
bool isAlive(qint64 pid);
/// The numbers that processes left in a folder by the fake tool's pidfile.
QList<qint64> pidsIn(const QString &folder);

} // namespace tidewright::test
