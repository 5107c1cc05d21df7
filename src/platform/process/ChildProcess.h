// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/Environment.h"
#include "platform/process/FileDescriptor.h"
#include "platform/process/ProcessKeeper.h"

#include <QStringList>

namespace tidewright {

/// One child process: set up, started once, asked about and ended. The child runs in a process group of its
/// own, inherits the standard input and no other descriptor than the two it is given, and ends with all of
/// that group when the application ends, however that happens. Set up and start it on one thread; the rest is
/// safe from any. QProcess was weighed: it starts the child on the caller's thread, with which the kernel
/// would end it, buffers without a bound, and reaps at once, so that the number of an ended group may be a
/// stranger's.
class ChildProcess
{
public:
    void setExecutable(const QString &path) { m_request.executable = path.toUtf8(); }
    void setArguments(const QStringList &arguments);
    void setEnvironment(const Environment &environment) { m_request.environment = environment; }
    /// Added to the child's CPU priority value: above 0 the child yields to others.
    void setNiceness(int niceness) { m_request.niceness = niceness; }

    /// Lets what the child started outlive it: it is ended alone, without the rest of its process group.
    void setEndsAlone(bool alone) { m_request.manners.endsAlone = alone; }
    /// Lets it go on when the application ends, however that happens.
    void setSurvives(bool survives) { m_request.manners.survives = survives; }
    /// Lets what is left of its group go on when it has ended by itself.
    void setLeavesOthers(bool leaves) { m_request.manners.leavesOthers = leaves; }

    /// Starts the child with the write ends of both pipes and closes them here, so that reading sees the
    /// child's end of file. Returns what went wrong (without a full stop), or nothing.
    std::optional<QString> start(Pipe &output, Pipe &error);

    bool isRunning() const { return m_process && !m_process->hasExited(); }
    std::optional<int> terminationSignal() const;
    /// Nothing while it runs, when a signal ended it, or when it was never started.
    std::optional<int> exitStatus() const;
    /// The process number; -1 before the start.
    qint64 processIdentifier() const { return m_process ? m_process->pid() : -1; }
    /// Returns false when `limit` passed first. True at once for a child that was never started.
    bool waitUntilExit(std::optional<std::chrono::milliseconds> limit = std::nullopt) const;
    /// Readable once the child has exited; -1 before the start.
    int exitDescriptor() const { return m_process ? m_process->exitDescriptor() : -1; }

    /// Ends the child, and its process group unless it ends alone, by force if it does not go. Returns at
    /// once.
    void terminate() const;

private:
    ProcessKeeper::Request m_request;
    std::shared_ptr<KeptProcess> m_process;
};

} // namespace tidewright
