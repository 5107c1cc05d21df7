// SPDX-License-Identifier: GPL-3.0-or-later
#include "external/EditFile.h"

#include "core/running/ApplicationRecord.h"
#include "core/running/ChildEnvironment.h"
#include "core/running/CommandLine.h"
#include "external/CapturedOutput.h"
#include "external/InstalledApplications.h"
#include "platform/desktop/Bundle.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/settings/UserDefaults.h"
#include "platform/text/Utf8.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/Confirmation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <poll.h>

namespace tidewright {

namespace {

constexpr std::chrono::seconds endingTime(5); // kubectl is killed well before

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The temporary file that a `kubectl edit` has handed to its editor: the editor is its child, and has the
/// path on its command line (within quotes when EDITOR went through a shell). Empty when no editor is open.
QString editedFile(qint64 kubectl)
{
    static const QRegularExpression temporaryFile(QStringLiteral("/[^\"\\0]*/kubectl-edit-[^\"/\\0]*"));
    const QString tasks = QStringLiteral("/proc/%1/task/").arg(kubectl);
    for (const QString &task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QByteArray children = contentOf(tasks + task + QLatin1String("/children"));
        for (const QByteArray &child : children.split(' ')) {
            const QByteArray line = contentOf(QStringLiteral("/proc/%1/cmdline").arg(child.toLongLong()));
            const QString path = temporaryFile.match(QFile::decodeName(line)).captured();
            if (!path.isEmpty() && QFileInfo::exists(path)) {
                return path;
            }
        }
    }
    return {};
}

void post(const QPointer<Console> &console, const QString &command, const QString &response,
    const std::optional<QString> &error)
{
    mainQueue().post([=] {
        postConsoleEntry(
            console, command, response, error ? std::optional(makeConsoleError(*error)) : std::nullopt);
    });
}

} // namespace

DispatchQueue &editFileQueue()
{
    static DispatchQueue queue("editFileQueue");
    return queue;
}

EditFile::EditFile()
    : pipe(makeCapture())
    , errorPipe(makeCapture())
    , environment(child_environment::withFixedPath())
{
}

EditFile::EditFile(QWidget *shownIn, const QString &kubeConfigPath)
    : pipe(makeCapture())
    , errorPipe(makeCapture())
    , environment(child_environment::withOwnPath())
    , view(shownIn)
{
    child_environment::setKubeConfig(environment, kubeConfigPath);
}

std::optional<QString> EditFile::editorCommand()
{
    const auto command = editorCommandLine(
        userDefaults().string(QStringLiteral("preferredEditor")).value_or(QStringLiteral("Not Set")));
    const QString silencer = bundle::auxiliaryExecutable(QStringLiteral("quiet-editor"));
    if (!command || silencer.isEmpty()) {
        return command;
    }
    // kubectl splits EDITOR at blanks, and hands it to a shell when there are quotes in it.
    return CommandLine{{silencer}, {}}.shellLine() + QLatin1Char(' ') + *command;
}

void EditFile::prepareProcess()
{
    const auto editor = editorCommand();
    if (!editor) {
        mainQueue().post([self = shared_from_this()] { self->askForEditor(); });
        return;
    }
    const std::lock_guard lock(m_mutex);
    environment.insert(QByteArrayLiteral("EDITOR"), editor->toUtf8());
    environment.remove(QByteArrayLiteral("KUBE_EDITOR")); // kubectl would prefer it
    pipe = makeCapture();
    errorPipe = makeCapture();
    auto child = std::make_shared<ChildProcess>();
    child->setExecutable(QStringLiteral("/usr/bin/env"));
    child->setEnvironment(environment);
    child->setEndsAlone(true); // an editor with unsaved text must not be ended
    process = std::move(child);
}

void EditFile::askForEditor()
{
    if (!view) {
        return;
    }
    showConfirmation(view,
        {.title = QStringLiteral("Editor not set"),
            .message
            = QStringLiteral("To edit files, you must first select an editor in Tidewright: Preferences"),
            .yes = QStringLiteral("Open Preferences")},
        [self = shared_from_this()](bool first) {
            if (first) {
                writeDiagnostic(QStringLiteral("open"));
                if (self->showPreferences) {
                    self->showPreferences();
                }
            }
        });
}

void EditFile::runAsync(
    const QStringList &arguments, bool logToConsole, QPointer<Console> console, Completion completion)
{
    if (!console) {
        console = mainConsole();
    }
    editFileQueue().post(
        [self = shared_from_this(), arguments, logToConsole, console, completion = std::move(completion)] {
            completion(self->run(arguments, console, logToConsole));
        });
}

ShellResult EditFile::run(const QStringList &arguments, QPointer<Console> console, bool logToConsole)
{
    if (const QString reason = gate ? gate(arguments) : QString(); !reason.isEmpty()) {
        post(console, arguments.join(QLatin1Char(' ')), {}, reason);
        return {{}, reason};
    }
    prepareProcess();
    if (!process) {
        return {{}, QStringLiteral("No process defined")};
    }
    const QString command = arguments.join(QLatin1Char(' '));
    if (logToConsole) {
        post(console, command, {}, {});
    }
    if (const auto failure = start(arguments)) {
        return {{}, QStringLiteral("Unexpected error: %1.").arg(*failure)};
    }
    ShellResult result = waitForResult();
    if (logToConsole) {
        post(console, QLatin1String("Returning: ") + command,
            result.output.isEmpty() ? QString() : QStringLiteral("Configuration saved."), result.error);
    }
    result.output = trimmedUtf8(std::move(result.output));
    return result;
}

/// Returns why there is no child.
std::optional<QString> EditFile::start(const QStringList &arguments)
{
    QStringList words = arguments;
    if (!words.isEmpty() && words.first() == QLatin1String("kubectl")) {
        words.first() = kubectlPath();
    }
    process->setArguments(words);
    const std::lock_guard lock(m_mutex);
    return m_cancelled ? QStringLiteral("the window was closed") : process->start(pipe, errorPipe);
}

/// What the child has printed when it is over; its output is not trimmed yet.
ShellResult EditFile::waitForResult()
{
    pollfd descriptors[] = {{process->exitDescriptor(), POLLIN, 0}, {m_stop.descriptor(), POLLIN, 0}};
    while (::poll(descriptors, 2, -1) < 0 && errno == EINTR) { }
    process->waitUntilExit(endingTime);
    ShellResult result{decodeUtf8(capturedBytes(pipe)).value_or(QString()).toUtf8(), {}};
    if (const auto error = decodeUtf8(capturedBytes(errorPipe)); error && !error->isEmpty()) {
        result.error = error;
    }
    const std::lock_guard lock(m_mutex);
    if (const auto signal = process->terminationSignal()) {
        const QString reason
            = m_cancelled ? stoppedText() : QStringLiteral("kubectl was ended by signal %1.").arg(*signal);
        const QString printed = result.error ? *result.error + QLatin1Char('\n') : QString();
        result.error = QString(printed + reason);
    }
    return result;
}

QString EditFile::stoppedText() const
{
    const auto text = QStringLiteral("The edit was ended together with its window.");
    return m_keptFile.isEmpty() ? text
                                : text
            + QLatin1String(" The file that you were editing has been kept, but not applied: ") + m_keptFile;
}

void EditFile::cancel()
{
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_cancelled, true) || !process || !process->isRunning()) {
        return;
    }
    m_keptFile = editedFile(process->processIdentifier());
    process->terminate();
    m_stop.signal();
    if (!m_keptFile.isEmpty()) {
        writeDiagnostic(stoppedText(), DiagnosticStream::StandardError);
    }
}

} // namespace tidewright
