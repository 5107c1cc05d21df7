// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/Environment.h"
#include "platform/process/FileDescriptor.h"

#include <QByteArrayList>
#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <sys/types.h>

namespace tidewright {

/// What becomes of a child, and of those that it has started, when somebody ends.
struct ChildManners
{
    bool endsAlone = false; ///< signals go to the child, not to the rest of its group
    bool survives = false; ///< it goes on when the application ends
    bool leavesOthers = false; ///< what is left of its group when it ended by itself is not ended
};

/// One started child. Shared by its ChildProcess and the keeper; any thread.
///
/// The ended child is reaped when the last holder lets go, so that its process-group number cannot be given
/// to a stranger while somebody may still signal it. The keeper is a holder until the child has exited or,
/// when it was asked to end, until its group is gone.
class KeptProcess
{
public:
    KeptProcess(pid_t pid, ChildManners manners);
    ~KeptProcess();

    pid_t pid() const { return m_pid; }
    bool hasExited() const { return m_exited; }
    /// The signal that ended the child; nothing while it runs or when it exited by itself.
    std::optional<int> terminationSignal() const;
    /// Nothing while it runs or when a signal ended it.
    std::optional<int> exitStatus() const;
    /// False when the limit passed first; without a limit, waits for ever.
    bool waitUntilExit(std::optional<std::chrono::milliseconds> limit) const;
    /// A descriptor that is readable once the child has exited.
    int exitDescriptor() const { return m_exitSignal.descriptor(); }

private:
    friend class ProcessKeeper;

    void signal(int number) const;

    const pid_t m_pid;
    const ChildManners m_manners;
    WakeSignal m_exitSignal;
    std::atomic<int> m_terminationSignal = 0;
    std::atomic<int> m_exitStatus = -1;
    std::atomic<bool> m_exited = false;
    std::atomic<bool> m_isOver = false; ///< nothing is signalled any more
};

/// Starts every child of the application and learns of its end, on one thread that lives as long as the
/// process: the kernel's parent-death signal, which ends the children with a killed application, follows the
/// starting thread.
class ProcessKeeper
{
public:
    struct Request
    {
        QByteArray executable;
        QByteArrayList arguments; // without the program's own name
        Environment environment;
        int standardOutput = -1; // descriptors of this process; -1 gives /dev/null
        int standardError = -1;
        int niceness = 0; // added to the CPU priority value
        ChildManners manners;
    };
    struct Started
    {
        std::shared_ptr<KeptProcess> process; // null when the child could not be started
        QString error; // why, a sentence without its full stop
    };

    static ProcessKeeper &instance();

    /// Blocks for as long as the kernel needs to start a program. Any thread.
    Started start(const Request &request);

    /// Asks a child and its group to end, and kills what is still there after a grace period. Any thread;
    /// never blocks.
    void terminate(const std::shared_ptr<KeptProcess> &process);

    /// For the end of the application: asks all children to end but those that survive it, waits at most
    /// `grace`, kills the rest. A keeper that the kernel holds up (a disk that hangs) is not waited for.
    void endAll(std::chrono::milliseconds grace);

private:
    using Clock = std::chrono::steady_clock;
    struct Entry
    {
        std::shared_ptr<KeptProcess> process;
        FileDescriptor pidfd; // closed once the child has exited
        std::optional<Clock::time_point> killAt; // the group was asked to end
    };

    ProcessKeeper();
    void post(std::function<void()> task);
    /// False when the limit passed first; the task is run all the same.
    bool runAndWait(std::function<void()> task, std::optional<std::chrono::milliseconds> limit = {});
    [[noreturn]] void work();
    std::vector<pid_t> waitForEndedChildren();
    void runTasks();
    void noteExit(pid_t pid);
    void signalAll(int signal);
    void killOverdue();
    int pollTimeout() const;
    Started spawn(const Request &request);

    WakeSignal m_wake;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_tasks;
    std::condition_variable m_childEnded;
    std::size_t m_running = 0;
    std::map<pid_t, Entry> m_entries; // the keeper's thread only
    /// Children that have exited by themselves while somebody still reads what their group writes. The
    /// keeper's thread only.
    std::vector<std::weak_ptr<KeptProcess>> m_exited;
};

} // namespace tidewright
