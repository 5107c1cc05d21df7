// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/ProcessKeeper.h"

#include "platform/desktop/Bundle.h"
#include "platform/process/GroupGuard.h"
#include "platform/process/ProcessSetup.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <future>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tidewright {

namespace {

constexpr auto gracePeriod = std::chrono::seconds(2);
constexpr auto keeperPatience = std::chrono::seconds(2);

int openPidfd(pid_t pid)
{
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)); // close-on-exec by definition
}

std::vector<char *> pointers(QByteArrayList &texts)
{
    std::vector<char *> result;
    for (QByteArray &text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

/// Attributes and file actions of one start, freed at the end of the scope.
struct SpawnSetup
{
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;

    SpawnSetup()
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes, &signals);
        posix_spawnattr_setpgroup(&attributes, 0);
        posix_spawnattr_setflags(
            &attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    SpawnSetup(const SpawnSetup &) = delete;
    SpawnSetup &operator=(const SpawnSetup &) = delete;
    ~SpawnSetup()
    {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }

    void connect(int from, int to)
    {
        if (from >= 0) {
            posix_spawn_file_actions_adddup2(&actions, from, to);
        } else {
            posix_spawn_file_actions_addopen(&actions, to, "/dev/null", O_WRONLY, 0);
        }
    }
};

} // namespace

KeptProcess::KeptProcess(pid_t pid, ChildManners manners)
    : m_pid(pid)
    , m_manners(manners)
{
    if (!m_manners.endsAlone && !m_manners.survives) {
        GroupGuard::instance().watch(m_pid);
    }
}

KeptProcess::~KeptProcess()
{
    if (m_exited) {
        GroupGuard::instance().forget(m_pid);
        ::waitpid(m_pid, nullptr, WNOHANG);
    }
}

std::optional<int> KeptProcess::terminationSignal() const
{
    const int signal = m_terminationSignal;
    return signal ? std::optional(signal) : std::nullopt;
}

std::optional<int> KeptProcess::exitStatus() const
{
    const int status = m_exitStatus;
    return status >= 0 ? std::optional(status) : std::nullopt;
}

void KeptProcess::signal(int number) const
{
    if (!m_isOver) {
        ::kill(m_manners.endsAlone ? m_pid : -m_pid, number);
    }
}

bool KeptProcess::waitUntilExit(std::optional<std::chrono::milliseconds> limit) const
{
    pollfd exit{exitDescriptor(), POLLIN, 0};
    int ready = 0;
    do {
        ready = ::poll(&exit, 1, limit ? static_cast<int>(limit->count()) : -1);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

ProcessKeeper &ProcessKeeper::instance()
{
    static auto *keeper
        = new ProcessKeeper; // outlives main(): ending its thread would end the children abruptly
    return *keeper;
}

ProcessKeeper::ProcessKeeper()
{
    std::thread([this] { work(); }).detach();
}

ProcessKeeper::Started ProcessKeeper::start(const Request &request)
{
    Started started;
    runAndWait([&] { started = spawn(request); });
    return started;
}

void ProcessKeeper::terminate(const std::shared_ptr<KeptProcess> &process)
{
    post([this, process] {
        const auto entry = m_entries.find(process->pid());
        if (entry == m_entries.end()) {
            process->signal(SIGKILL); // the child is over; what it left behind in its group goes too
        } else if (!entry->second.killAt) {
            process->signal(SIGTERM);
            entry->second.killAt = Clock::now() + gracePeriod;
        }
    });
}

void ProcessKeeper::endAll(std::chrono::milliseconds grace)
{
    const auto askAll = [this, grace] {
        signalAll(SIGTERM);
        for (auto &[pid, entry] : m_entries) {
            if (!entry.process->m_manners.survives) {
                entry.killAt = Clock::now() + grace;
            }
        }
    };
    if (!runAndWait(askAll, keeperPatience)) {
        return;
    }
    {
        std::unique_lock lock(m_mutex);
        m_childEnded.wait_for(lock, grace, [this] { return m_running == 0; });
    }
    runAndWait([this] { signalAll(SIGKILL); }, keeperPatience);
}

void ProcessKeeper::signalAll(int signal)
{
    for (const auto &[pid, entry] : m_entries) {
        if (!entry.process->m_manners.survives) {
            entry.process->signal(signal);
        }
    }
    for (const auto &exited : m_exited) {
        if (const auto process = exited.lock()) {
            process->signal(signal);
        }
    }
}

bool ProcessKeeper::runAndWait(std::function<void()> task, std::optional<std::chrono::milliseconds> limit)
{
    const auto done
        = std::make_shared<std::promise<void>>(); // the waiter may be gone before set_value returns
    const std::future<void> ended = done->get_future();
    post([task = std::move(task), done] {
        task();
        done->set_value();
    });
    if (limit) {
        return ended.wait_for(*limit) == std::future_status::ready;
    }
    ended.wait();
    return true;
}

void ProcessKeeper::post(std::function<void()> task)
{
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }
    m_wake.signal();
}

void ProcessKeeper::work()
{
    pthread_setname_np(pthread_self(), "processKeeper");
    for (;;) {
        for (const pid_t pid : waitForEndedChildren()) {
            noteExit(pid);
        }
        runTasks();
        killOverdue();
    }
}

int ProcessKeeper::pollTimeout() const
{
    std::optional<Clock::time_point> next;
    for (const auto &[pid, entry] : m_entries) {
        if (entry.killAt && (!next || *entry.killAt < *next)) {
            next = entry.killAt;
        }
    }
    if (!next) {
        return -1;
    }
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(rest, 0, 60'000));
}

std::vector<pid_t> ProcessKeeper::waitForEndedChildren()
{
    std::vector<pollfd> polled{{m_wake.descriptor(), POLLIN, 0}};
    std::vector<pid_t> pids;
    for (const auto &[pid, entry] : m_entries) {
        polled.push_back({entry.pidfd.get(), POLLIN, 0}); // ignored by poll once it is closed
        pids.push_back(pid);
    }
    std::vector<pid_t> ended;
    if (::poll(polled.data(), polled.size(), pollTimeout()) > 0) {
        for (std::size_t i = 0; i < pids.size(); ++i) {
            if (polled[i + 1].revents != 0) {
                ended.push_back(pids[i]);
            }
        }
    }
    m_wake.clear();
    return ended;
}

void ProcessKeeper::runTasks()
{
    std::vector<std::function<void()>> tasks;
    {
        const std::lock_guard lock(m_mutex);
        tasks.swap(m_tasks);
    }
    for (const auto &task : tasks) {
        task();
    }
}

void ProcessKeeper::noteExit(pid_t pid)
{
    const auto entry = m_entries.find(pid);
    siginfo_t info{};
    const bool isGone
        = ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) < 0 && errno == ECHILD;
    if (info.si_pid != pid && !isGone) {
        return;
    }
    KeptProcess &process = *entry->second.process;
    if (isGone) {
        // Somebody has reaped it, or had the kernel do so. How it ended is lost, and its number given away.
        process.m_isOver = true;
    } else if (info.si_code == CLD_KILLED || info.si_code == CLD_DUMPED) {
        process.m_terminationSignal = info.si_status;
    } else {
        process.m_exitStatus = info.si_status;
    }
    process.m_exited = true;
    process.m_exitSignal.signal();
    {
        const std::lock_guard lock(m_mutex);
        --m_running;
    }
    m_childEnded.notify_all();
    if (entry->second.killAt && !isGone) {
        entry->second.pidfd.close(); // the rest of its group has the grace period too
    } else {
        if (isGone || process.m_manners.leavesOthers) {
            process.m_isOver = true;
            GroupGuard::instance().forget(pid);
        }
        std::erase_if(m_exited, [](const auto &exited) { return exited.expired(); });
        m_exited.push_back(entry->second.process);
        m_entries.erase(entry);
    }
}

void ProcessKeeper::killOverdue()
{
    for (auto next = m_entries.begin(); next != m_entries.end();) {
        const auto current = next++;
        auto &[pid, entry] = *current;
        if (entry.killAt && Clock::now() >= *entry.killAt) {
            entry.process->signal(SIGKILL);
            entry.killAt = Clock::now() + gracePeriod;
            if (entry.process->hasExited()) {
                m_entries.erase(current);
            }
        }
    }
}

ProcessKeeper::Started ProcessKeeper::spawn(const Request &request)
{
    static const QByteArray guard
        = QFile::encodeName(bundle::auxiliaryExecutable(QStringLiteral("child-guard")));
    if (guard.isEmpty()) {
        return {nullptr, QStringLiteral("the package is incomplete: child-guard is missing")};
    }
    QByteArrayList arguments{QByteArrayLiteral("child-guard"),
        QByteArray::number(request.manners.survives ? 0 : ::getpid()), QByteArray::number(request.niceness),
        QByteArray::number(qulonglong(childDescriptorLimit())), request.executable};
    arguments += request.arguments;
    if (std::any_of(
            arguments.cbegin(), arguments.cend(), [](const QByteArray &a) { return a.contains('\0'); })) {
        return {nullptr, QStringLiteral("an argument holds a NUL character")};
    }
    QByteArrayList environment;
    for (auto variable = request.environment.cbegin(); variable != request.environment.cend(); ++variable) {
        environment.append(variable.key() + '=' + variable.value());
    }
    SpawnSetup setup;
    setup.connect(request.standardOutput, STDOUT_FILENO);
    setup.connect(request.standardError, STDERR_FILENO);
    if (::access(request.executable.constData(), X_OK) != 0) {
        return {nullptr, QString::fromLocal8Bit(request.executable + ": " + std::strerror(errno))};
    }
    pid_t pid = 0;
    const int failure = ::posix_spawn(&pid, guard.constData(), &setup.actions, &setup.attributes,
        pointers(arguments).data(), pointers(environment).data());
    if (failure != 0) {
        return {nullptr, QString::fromLocal8Bit(std::strerror(failure))};
    }
    auto process = std::make_shared<KeptProcess>(pid, request.manners);
    FileDescriptor pidfd(openPidfd(pid));
    if (!pidfd.isOpen() && errno == ESRCH) { // it has ended, and the kernel reaped it
        process->m_isOver = true;
        process->m_exited = true;
        process->m_exitSignal.signal();
        return {process, QString()};
    }
    if (const int reason = errno; !pidfd.isOpen() || process->exitDescriptor() < 0) {
        // A child whose end nobody would notice must not run.
        ::kill(-pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
        return {nullptr, QString::fromLocal8Bit(std::strerror(pidfd.isOpen() ? EMFILE : reason))};
    }
    m_entries[pid] = Entry{process, std::move(pidfd), std::nullopt};
    const std::lock_guard lock(m_mutex);
    ++m_running;
    return {process, QString()};
}

} // namespace tidewright
