// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Shell.h"

#include "core/ApplicationRecord.h"
#include "core/StreamingRun.h"
#include "platform/Diagnostics.h"
#include "platform/DispatchQueue.h"
#include "platform/MainQueue.h"
#include "platform/PipeReader.h"
#include "platform/Utf8.h"

namespace tidewright {

namespace {

QStringList withPackagedKubectl(QStringList arguments)
{
    if (!arguments.isEmpty() && arguments.first() == QLatin1String("kubectl")) {
        arguments.first() = kubectlPath();
    }
    return arguments;
}

QString withoutTabs(QString text)
{
    return text.replace(QLatin1Char('\t'), QLatin1String("  "));
}

std::optional<ConsoleError> consoleError(const std::optional<QString> &text)
{
    return text ? std::optional(makeConsoleError(*text)) : std::nullopt;
}

/// Shows a finished run in the console it was started for, or in the main window's when it was started for none.
void logRun(const QStringList &arguments, const QString &response, const std::optional<QString> &error,
    const QPointer<Console> &console)
{
    const bool addressed = !console.isNull();
    mainQueue().post([=, command = withoutTabs(arguments.join(QLatin1Char(' ')))] {
        if (!addressed || console) {
            postConsoleEntry(console, command, withoutTabs(response), consoleError(error));
        }
    });
}

} // namespace

/// The bytes of both streams, and the runner's own complaint when it did not read them to their end.
struct Shell::Collected
{
    QByteArray output;
    QByteArray error;
    std::optional<QString> complaint;
};

std::shared_ptr<Shell> Shell::create()
{
    return std::shared_ptr<Shell>(new Shell);
}

Shell::Shell()
    : environment(currentEnvironment())
{
    environment.insert(QByteArrayLiteral("PATH"), QByteArrayLiteral("/bin:/usr/bin/:/usr/local/bin"));
}

Shell::~Shell()
{
    if (m_stream) {
        m_stream->stop();
    }
}

std::shared_ptr<ChildProcess> Shell::process() const
{
    const std::lock_guard lock(m_mutex);
    return m_process;
}

std::shared_ptr<ChildProcess> Shell::prepareProcess(const QStringList &arguments)
{
    m_pipe = Pipe::make();
    m_errorPipe = Pipe::make();
    std::shared_ptr<ChildProcess> child;
    if (m_pipe.readEnd.isOpen() && m_errorPipe.readEnd.isOpen()) {
        child = std::make_shared<ChildProcess>();
        child->setExecutable(QStringLiteral("/usr/bin/env"));
        child->setEnvironment(environment);
        child->setNiceness(niceness);
        child->setArguments(arguments);
    }
    const std::lock_guard lock(m_mutex);
    m_process = child;
    return child;
}

ShellResult Shell::run(const QStringList &arguments, bool logToConsole, QPointer<Console> console)
{
    const std::shared_ptr<ChildProcess> child = prepareProcess(withPackagedKubectl(arguments));
    if (!child) {
        return {QByteArray(), QStringLiteral("No process defined")};
    }
    if (const auto failure = child->start(m_pipe, m_errorPipe)) {
        return {QByteArray(), QStringLiteral("Unexpected error: %1.").arg(*failure)};
    }
    Collected collected = collect(*child);
    ShellResult result;
    if (collected.complaint) {
        result.error = collected.complaint;
        collected.output.clear();
    } else if (!collected.error.isEmpty()) {
        result.error = decodeUtf8(collected.error);
    }
    const bool readable = collected.output.isValidUtf8();
    if (logToConsole) {
        const QString response = readable ? QString::fromUtf8(collected.output) : QString();
        logRun(arguments, response, result.error, console);
    }
    if (readable) {
        result.output = trimmedUtf8(std::move(collected.output));
    }
    return result;
}

Shell::Collected Shell::collect(const ChildProcess &child)
{
    Collected collected;
    PipeReader reader(m_pipe.readEnd.get(), m_errorPipe.readEnd.get());
    const auto end = reader.read(
        m_stop.descriptor(), -1, [&collected](PipeReader::Stream stream, QByteArrayView piece) {
            QByteArray &target
                = stream == PipeReader::Stream::Output ? collected.output : collected.error;
            target.append(piece);
            return collected.output.size() + collected.error.size() <= outputLimit;
        });
    if (end == PipeReader::End::Stopped) {
        collected.complaint = QStringLiteral("The command was stopped before it had finished.");
    } else if (end == PipeReader::End::Refused) {
        collected.complaint = QStringLiteral("The command was ended: it printed more than 2 GiB.");
    }
    if (collected.complaint) {
        child.terminate();
    }
    m_pipe.readEnd.close();
    m_errorPipe.readEnd.close();
    return collected;
}

void Shell::runAsync(
    const QStringList &arguments, bool logToConsole, QPointer<Console> console, Completion completion)
{
    mainQueue().post([self = shared_from_this(), arguments, logToConsole, console = std::move(console),
                         completion = std::move(completion)]() mutable {
        if (!console) {
            console = mainConsole();
        }
        shellQueue().post([self = std::move(self), arguments, logToConsole, console = std::move(console),
                              completion = std::move(completion)] {
            completion(self->run(arguments, logToConsole, console));
        });
    });
}

void Shell::runStreaming(const QStringList &arguments, PieceHandler handler)
{
    if (const auto running = process(); running && running->isRunning()) {
        running->terminate();
        writeDiagnostic(QStringLiteral("Process terminated"));
    }
    shellQueue().post([weak = weak_from_this(), arguments, handler = std::move(handler)]() mutable {
        if (const auto shell = weak.lock()) {
            shell->startStream(arguments, std::move(handler));
        } else {
            return;
        }
        // Only the stream is held while it runs: whoever lets the shell go ends it.
        std::shared_ptr<StreamingRun> stream;
        if (const auto shell = weak.lock()) {
            const std::lock_guard lock(shell->m_mutex);
            stream = shell->m_stream;
        }
        if (stream) {
            stream->read();
            if (const auto shell = weak.lock()) {
                const std::lock_guard lock(shell->m_mutex);
                if (shell->m_stream == stream) {
                    shell->m_process.reset();
                    shell->m_stream.reset();
                }
            }
        }
    });
}

void Shell::startStream(const QStringList &arguments, PieceHandler handler)
{
    const std::shared_ptr<ChildProcess> child = prepareProcess(arguments);
    if (!child) {
        handler(QString(), QStringLiteral("No process defined"));
        return;
    }
    if (const auto failure = child->start(m_pipe, m_errorPipe)) {
        handler(QString(), QStringLiteral("Unexpected error: %1.").arg(*failure));
        return;
    }
    auto stream = std::make_shared<StreamingRun>(
        child, std::move(m_pipe), std::move(m_errorPipe), std::move(handler));
    if (m_cancelled) {
        stream->stop();
    }
    const std::lock_guard lock(m_mutex);
    m_stream = std::move(stream);
}

void Shell::cancel()
{
    m_cancelled = true;
    m_stop.signal();
    const std::lock_guard lock(m_mutex);
    if (m_stream) {
        m_stream->stop();
    }
}

} // namespace tidewright
