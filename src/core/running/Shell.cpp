// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/Shell.h"

#include "core/running/ApplicationRecord.h"
#include "core/running/ChildEnvironment.h"
#include "core/running/StreamingRun.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/process/PipeReader.h"
#include "platform/text/DisplayText.h"
#include "platform/text/Utf8.h"
#include "platform/threads/MainQueue.h"

#include <QThread>

#include <algorithm>
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

bool isKubectl(const QStringList &arguments)
{
    return !arguments.isEmpty() && arguments.first() == kubectlPath();
}

/// Between a child's end of file and the news of its end.
constexpr std::chrono::seconds exitNotice(2);

/// Bytes of standard error that are kept, and of a command that was ended early. It is read by people: its
/// beginning says what is wrong.
constexpr qsizetype errorLimit = qsizetype(1) << 20;
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
/// none, or when that one is gone and it must be told.
void logRun(const CommandLine &line, const QString &response, const std::optional<QString> &error,
    const std::optional<QPointer<Console>> &console, bool always)
{
    const QString words = line.arguments.join(QLatin1Char(' '));
    // Templates are known to hold line ends; elsewhere they stand in names.
    const QString command = withoutTabs(always ? display_text::withoutLineEnds(words) : words);
    mainQueue().post([=, shown = withoutTabs(response)] {
        if (!console || *console || always) {
            postConsoleEntry(console.value_or(nullptr), command, shown, consoleError(error), line);
        }
    });
}

} // namespace

QString ShellResult::failure() const
{
    const QString killed
        = signal ? QStringLiteral("The command was ended by signal %1.").arg(*signal) : QString();
    if (error) {
        return killed.isEmpty() ? *error : QString(*error + QLatin1Char('\n') + killed);
    }
    if (signal || exitStatus == 0) {
        return killed;
    }
    return exitStatus ? QStringLiteral("The command failed with exit status %1.").arg(*exitStatus)
                      : QStringLiteral("The command did not say how it ended.");
}

/// A child that is ready to start, with the pipes for it; no process when the pipes could not be made.
struct Shell::Prepared
{
    std::shared_ptr<ChildProcess> process;
    Pipe pipe;
    Pipe errorPipe;
    bool leavesOthers = false;
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
    : environment(child_environment::withFixedPath())
{
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
    Prepared prepared{nullptr, Pipe::make(pipeSize), Pipe::make()};
    const bool readsAsVariable = !arguments.isEmpty() && arguments.first().contains(QLatin1Char('='));
    // A path with an equals sign would be one more variable for `env`.
    const QStringList words = readsAsVariable
        ? QStringList{QStringLiteral("/bin/sh"), QStringLiteral("-c"), QStringLiteral("exec \"$0\" \"$@\"")}
            + arguments
        : arguments;
    if (prepared.pipe.readEnd.isOpen() && prepared.errorPipe.readEnd.isOpen() && m_stop.descriptor() >= 0) {
        prepared.process = std::make_shared<ChildProcess>();
        prepared.process->setExecutable(QStringLiteral("/usr/bin/env"));
        prepared.process->setEnvironment(environment);
        prepared.process->setNiceness(niceness);
        prepared.process->setSurvives(outlivesApplication);
        // A script's are its own; what kubectl leaves behind, somebody works with.
        prepared.leavesOthers = isKubectl(arguments);
        prepared.process->setLeavesOthers(prepared.leavesOthers);
        prepared.process->setArguments(words);
    }
    return prepared;
}

ShellResult Shell::run(const QStringList &arguments, bool logToConsole, QPointer<Console> console)
{
    return perform(arguments, logToConsole ? Log::Yes : Log::No, console ? Addressee(console) : std::nullopt);
}

CommandLine Shell::commandLine(const QStringList &arguments) const
{
    const QString files = child_environment::kubeConfig(environment);
    return {loggedArguments.value_or(arguments), place.value_or(CommandPlace{files})};
}

ShellResult Shell::notStarted(
    const QStringList &arguments, Log log, const Addressee &console, const QString &reason) const
{
    if (log == Log::Always) {
        logRun(commandLine(arguments), QString(), reason, console, true);
    }
    return {QByteArray(), reason};
}

ShellResult Shell::perform(const QStringList &arguments, Log log, const Addressee &console)
{
    const auto refuse = [&](const QString &reason) { return notStarted(arguments, log, console, reason); };
    if (m_cancelled) {
        return refuse(stoppedText());
    }
    if (const QString reason = gate ? gate(arguments) : QString(); !reason.isEmpty()) {
        return refuse(reason);
    }
    Prepared prepared = prepareProcess(withPackagedKubectl(arguments));
    if (!prepared.process) {
        return refuse(QStringLiteral("No process defined"));
    }
    if (const auto failure = prepared.process->start(prepared.pipe, prepared.errorPipe)) {
        return refuse(QStringLiteral("Unexpected error: %1.").arg(*failure));
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
        response = log == Log::No ? QString() : unfinishedText(collected.output);
        collected.output.clear();
    } else if (!collected.error.isEmpty()) {
        result.error = decodeUtf8(collected.error);
    }
    if (!collected.complaint && prepared.process->waitUntilExit(exitNotice)) {
        result.exitStatus = prepared.process->exitStatus();
        result.signal = prepared.process->terminationSignal();
    }
    m_errorWasText = collected.error.isValidUtf8();
    const bool readable = collected.output.isValidUtf8();
    m_outputWasText = readable;
    if (log != Log::No) {
        if (readable && !collected.output.isEmpty()) {
            response = QString::fromUtf8(collected.output);
        }
        // A command that was killed, or failed without a word, must not read like one that was done.
        const bool endedBadly = result.signal || result.exitStatus.value_or(0) != 0;
        logRun(commandLine(arguments), response, endedBadly ? std::optional(result.failure()) : result.error,
            console, log == Log::Always);
    }
    if (readable) {
        result.output = trimmedUtf8(std::move(collected.output));
    }
    return result;
}

Shell::Collected Shell::collect(Prepared &prepared) const
{
    Collected collected;
    qsizetype errorSize = 0;
    PipeReader reader(prepared.pipe.readEnd.get(), prepared.errorPipe.readEnd.get());
    const auto keep = [this, &collected, &errorSize](PipeReader::Stream stream, QByteArrayView piece) {
        QByteArray &target = stream == PipeReader::Stream::Output ? collected.output : collected.error;
        if (stream == PipeReader::Stream::Error) {
            errorSize += piece.size();
            piece.truncate(std::min(piece.size(), errorLimit - target.size()));
        }
        // Growing by resize moves the pages; append would copy all that is there each time the space doubles.
        const qsizetype before = target.size();
        target.resize(before + piece.size());
        std::memcpy(target.data() + before, piece.data(), static_cast<std::size_t>(piece.size()));
        return collected.output.size() + errorSize <= outputLimit;
    };
    auto end = PipeReader::End::EndOfFile;
    try {
        end = reader.read(
            m_stop.descriptor(), prepared.leavesOthers ? prepared.process->exitDescriptor() : -1, keep);
    } catch (const std::bad_alloc &) {
        collected.output = {};
        collected.complaint = QStringLiteral("The command was ended: there is no memory for what it prints.");
    }
    if (errorSize > collected.error.size()) {
        collected.error.chop(incompleteUtf8Tail(collected.error));
        collected.error += "\n(" + QByteArray::number(errorSize - collected.error.size())
            + " more bytes of standard error were left out.)";
    }
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
    post(arguments, logToConsole ? Log::Yes : Log::No, std::move(console), std::move(completion));
}

void Shell::runToldAsync(const QStringList &arguments, QPointer<Console> console, Completion completion)
{
    post(arguments, Log::Always, std::move(console), std::move(completion));
}

void Shell::post(const QStringList &arguments, Log log, QPointer<Console> console, Completion completion)
{
    auto start = [self = shared_from_this(), arguments, log,
                     addressee = console ? Addressee(std::move(console)) : std::nullopt,
                     completion = std::move(completion)]() mutable {
        if (Console *current = addressee ? nullptr : mainConsole()) {
            addressee = current;
        }
        shellQueue().post([self = std::move(self), arguments, log, addressee = std::move(addressee),
                              completion = std::move(completion)] {
            completion(self->perform(arguments, log, addressee));
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
    if (const QString reason = gate ? gate(arguments) : QString(); !reason.isEmpty()) {
        failure = reason;
        return nullptr;
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

DispatchQueue &shellQueue()
{
    static auto *queue = new DispatchQueue("shellQueue"); // outlives main(): its threads may still be running
    return *queue;
}

} // namespace tidewright
