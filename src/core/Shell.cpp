// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Shell.h"

#include "core/ApplicationRecord.h"
#include "core/StreamingRun.h"
#include "platform/Diagnostics.h"
#include "platform/DispatchQueue.h"
#include "platform/MainQueue.h"
#include "platform/PipeReader.h"
#include "platform/Utf8.h"

#include <QFile>
#include <QThread>

#include <cstring>

namespace tidewright {

namespace {

QStringList withPackagedKubectl(QStringList arguments)
{
    if (!arguments.isEmpty() && arguments.first() == QLatin1String("kubectl")) {
        arguments.first() = kubectlPath();
    }
    return arguments;
}

/// Bytes of standard error that are kept of a command that was ended early.
constexpr qsizetype complaintLimit = 1 << 16;

QString withoutTabs(QString text)
{
    return text.replace(QLatin1Char('\t'), QLatin1String("  "));
}

QString stoppedText()
{
    return QStringLiteral("The command was stopped before it had finished.");
}

std::optional<ConsoleError> consoleError(const std::optional<QString> &text)
{
    return text ? std::optional(makeConsoleError(*text)) : std::nullopt;
}

/// What a command had printed when it was ended early, for the console alone.
QString unfinishedText(QByteArray bytes)
{
    bytes.chop(incompleteUtf8Tail(bytes));
    return decodeUtf8(bytes).value_or(QString());
}

/// Shows a finished run in the console it was started for, or in the main window's when it was started for
/// none.
void logRun(const CommandLine &line, const QString &response, const std::optional<QString> &error,
    const std::optional<QPointer<Console>> &console)
{
    mainQueue().post(
        [=, command = withoutTabs(line.arguments.join(QLatin1Char(' '))), shown = withoutTabs(response)] {
            if (!console || *console) {
                postConsoleEntry(console.value_or(nullptr), command, shown, consoleError(error), line);
            }
        });
}

} // namespace

/// A child that is ready to start, with the pipes for it; no process when the pipes could not be made.
struct Shell::Prepared
{
    std::shared_ptr<ChildProcess> process;
    Pipe pipe;
    Pipe errorPipe;
};

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

Shell::Prepared Shell::prepareProcess(const QStringList &arguments) const
{
    Prepared prepared{nullptr, Pipe::make(), Pipe::make()};
    if (prepared.pipe.readEnd.isOpen() && prepared.errorPipe.readEnd.isOpen() && m_stop.descriptor() >= 0) {
        prepared.process = std::make_shared<ChildProcess>();
        prepared.process->setExecutable(QStringLiteral("/usr/bin/env"));
        prepared.process->setEnvironment(environment);
        prepared.process->setNiceness(niceness);
        prepared.process->setArguments(arguments);
    }
    return prepared;
}

ShellResult Shell::run(const QStringList &arguments, bool logToConsole, QPointer<Console> console)
{
    return perform(arguments, logToConsole, console ? Addressee(console) : std::nullopt);
}

ShellResult Shell::perform(const QStringList &arguments, bool logToConsole, const Addressee &console)
{
    if (m_cancelled) {
        return {QByteArray(), stoppedText()};
    }
    Prepared prepared = prepareProcess(withPackagedKubectl(arguments));
    if (!prepared.process) {
        return {QByteArray(), QStringLiteral("No process defined")};
    }
    if (const auto failure = prepared.process->start(prepared.pipe, prepared.errorPipe)) {
        return {QByteArray(), QStringLiteral("Unexpected error: %1.").arg(*failure)};
    }
    {
        const std::lock_guard lock(m_mutex);
        m_process = prepared.process;
    }
    Collected collected = collect(prepared);
    ShellResult result;
    QString response;
    if (collected.complaint) {
        const QString said = unfinishedText(collected.error.left(complaintLimit));
        result.error
            = said.isEmpty() ? *collected.complaint : *collected.complaint + QLatin1Char('\n') + said;
        response = logToConsole ? unfinishedText(collected.output) : QString();
        collected.output.clear();
    } else if (!collected.error.isEmpty()) {
        result.error = decodeUtf8(collected.error);
    }
    m_errorWasText = collected.error.isValidUtf8();
    const bool readable = collected.output.isValidUtf8();
    m_outputWasText = readable;
    if (logToConsole) {
        if (readable && !collected.output.isEmpty()) {
            response = QString::fromUtf8(collected.output);
        }
        const QString kubeConfig = QFile::decodeName(environment.value(QByteArrayLiteral("KUBECONFIG")));
        logRun({arguments, kubeConfig}, response, result.error, console);
    }
    if (readable) {
        result.output = trimmedUtf8(std::move(collected.output));
    }
    return result;
}

Shell::Collected Shell::collect(Prepared &prepared) const
{
    Collected collected;
    PipeReader reader(prepared.pipe.readEnd.get(), prepared.errorPipe.readEnd.get());
    const auto end = reader.read(
        m_stop.descriptor(), -1, [this, &collected](PipeReader::Stream stream, QByteArrayView piece) {
            QByteArray &target = stream == PipeReader::Stream::Output ? collected.output : collected.error;
            // Growing by resize moves the pages; append would copy all that is there each time the space
            // doubles.
            const qsizetype before = target.size();
            target.resize(before + piece.size());
            std::memcpy(target.data() + before, piece.data(), static_cast<std::size_t>(piece.size()));
            return collected.output.size() + collected.error.size() <= outputLimit;
        });
    if (end == PipeReader::End::Stopped) {
        collected.complaint = stoppedText();
    } else if (end == PipeReader::End::Refused) {
        collected.complaint
            = QStringLiteral("The command was ended: it printed more than %1 MiB.").arg(outputLimit >> 20);
    }
    if (collected.complaint) {
        prepared.process->terminate();
    }
    prepared.pipe.readEnd.close();
    prepared.errorPipe.readEnd.close();
    return collected;
}

void Shell::runAsync(
    const QStringList &arguments, bool logToConsole, QPointer<Console> console, Completion completion)
{
    auto start = [self = shared_from_this(), arguments, logToConsole,
                     addressee = console ? Addressee(std::move(console)) : std::nullopt,
                     completion = std::move(completion)]() mutable {
        if (Console *current = addressee ? nullptr : mainConsole()) {
            addressee = current;
        }
        shellQueue().post([self = std::move(self), arguments, logToConsole, addressee = std::move(addressee),
                              completion = std::move(completion)] {
            completion(self->perform(arguments, logToConsole, addressee));
        });
    };
    if (QThread::currentThread() == mainQueue().thread()) {
        start(); // at once: the child starts while a window is still being built
    } else {
        mainQueue().post(std::move(start));
    }
}

void Shell::runStreaming(const QStringList &arguments, PieceHandler handler, EndHandler ended)
{
    std::shared_ptr<ChildProcess> earlier;
    quint64 request = 0;
    {
        const std::lock_guard lock(m_mutex);
        request = ++m_streamRequests;
        earlier = m_process;
        if (m_stream) {
            m_stream->stop();
        }
    }
    if (earlier && earlier->isRunning()) {
        earlier->terminate();
        writeDiagnostic(QStringLiteral("Process terminated"));
    }
    shellQueue().post([weak = weak_from_this(), request, arguments, handler = std::move(handler),
                          ended = std::move(ended)]() mutable {
        std::shared_ptr<StreamingRun> stream;
        std::optional<QString> failure;
        if (const auto shell = weak.lock()) {
            stream = shell->startStream(request, arguments, std::move(handler), failure);
        }
        // Only the stream is held while it runs: whoever lets the shell go ends it.
        if (stream) {
            stream->read();
            failure = stream->failure();
            if (const auto shell = weak.lock()) {
                const std::lock_guard lock(shell->m_mutex);
                if (shell->m_stream == stream) {
                    shell->m_process.reset();
                    shell->m_stream.reset();
                }
            }
        }
        if (ended) {
            ended(failure);
        }
    });
}

std::shared_ptr<StreamingRun> Shell::startStream(
    quint64 request, const QStringList &arguments, PieceHandler handler, std::optional<QString> &failure)
{
    const auto isWanted = [this, request] { return request == m_streamRequests && !m_cancelled; };
    {
        const std::lock_guard lock(m_mutex);
        if (!isWanted()) {
            return nullptr;
        }
    }
    Prepared prepared = prepareProcess(arguments);
    if (!prepared.process) {
        failure = QStringLiteral("No process defined");
        return nullptr;
    }
    if (const auto reason = prepared.process->start(prepared.pipe, prepared.errorPipe)) {
        failure = QStringLiteral("Unexpected error: %1.").arg(*reason);
        return nullptr;
    }
    auto stream = std::make_shared<StreamingRun>(
        prepared.process, std::move(prepared.pipe), std::move(prepared.errorPipe), std::move(handler));
    const std::lock_guard lock(m_mutex);
    if (!isWanted()) {
        stream->stop();
        return nullptr;
    }
    m_process = prepared.process;
    m_stream = stream;
    return stream;
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
