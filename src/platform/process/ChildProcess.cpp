// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/ChildProcess.h"

#include <cerrno>
#include <cstring>

namespace tidewright {

void ChildProcess::setArguments(const QStringList &arguments)
{
    m_request.arguments.clear();
    for (const QString &argument : arguments) {
        m_request.arguments.append(argument.toUtf8());
    }
}

std::optional<QString> ChildProcess::start(Pipe &output, Pipe &error)
{
    if (!output.writeEnd.isOpen() || !error.writeEnd.isOpen()) {
        return QString::fromLocal8Bit(std::strerror(EMFILE));
    }
    m_request.standardOutput = output.writeEnd.get();
    m_request.standardError = error.writeEnd.get();
    ProcessKeeper::Started started = ProcessKeeper::instance().start(m_request);
    output.writeEnd.close();
    error.writeEnd.close();
    m_process = std::move(started.process);
    return m_process ? std::nullopt : std::optional(started.error);
}

std::optional<int> ChildProcess::terminationSignal() const
{
    return m_process ? m_process->terminationSignal() : std::nullopt;
}

std::optional<int> ChildProcess::exitStatus() const
{
    return m_process ? m_process->exitStatus() : std::nullopt;
}

bool ChildProcess::waitUntilExit(std::optional<std::chrono::milliseconds> limit) const
{
    return !m_process || m_process->waitUntilExit(limit);
}

void ChildProcess::terminate() const
{
    if (m_process) {
        ProcessKeeper::instance().terminate(m_process);
    }
}

} // namespace tidewright
