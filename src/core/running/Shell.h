// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/running/Console.h"
#include "platform/process/ChildProcess.h"
#include "platform/threads/DispatchQueue.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace tidewright {

/// What a finished run yields. A run counts as failed when `error` is there; whoever must know that a command
/// has done what it was to do asks `hasSucceeded`.
struct ShellResult
{
    /// Standard output: valid UTF-8 without white space and line ends at both ends. Empty when the run failed
    /// to start, was cancelled, or the output was not valid UTF-8. Kept as bytes because listings are split
    /// as bytes.
    QByteArray output;
    /// Standard error when it was not empty (its first MiB, and how much more there was), or the runner's own
    /// message.
    std::optional<QString> error;
    /// Nothing when the child never ran, was killed, or left its output to others and lives on.
    std::optional<int> exitStatus = {};
    std::optional<int> signal = {}; ///< the one that killed it

    /// The child came to its own end, well, and had nothing to complain of.
    bool hasSucceeded() const { return !error && exitStatus == 0; }
    /// What it complained of, or else how it ended; empty after a success.
    QString failure() const;
};

class StreamingRun;

/// Runs one child process at a time: blocking, in the background, or as a stream of pieces. The first
/// argument is the program, looked up on a fixed search path; exactly "kubectl" means the packaged one. Not
/// shared between threads while a run is under way, except for `cancel` and `process`.
class Shell : public std::enable_shared_from_this<Shell>
{
public:
    using Completion = std::function<void(ShellResult)>;
    /// A piece of standard output and no error, or nothing and a piece of standard error: the child's bytes,
    /// whatever they are. Pieces do not follow line ends, but never cut a character (UTF-8). Called on a
    /// background thread.
    using PieceHandler
        = std::function<void(const QByteArray &output, const std::optional<QByteArray> &error)>;
    /// Called once, behind the last piece and on a background thread, however the stream ends. `failure` says
    /// why it could not be started, or what it ended with other than status 0; nothing when it was stopped.
    using EndHandler = std::function<void(const std::optional<QString> &failure)>;

    static std::shared_ptr<Shell> create();
    ~Shell();
    Shell(const Shell &) = delete;
    Shell &operator=(const Shell &) = delete;

    /// The complete environment of every child: the application's own at creation with another PATH
    /// (child_environment).
    Environment environment;
    /// Asked before a child is started, on the thread that starts it, with its arguments: why it must not be;
    /// empty when it may. Not there: every child may.
    std::function<QString(const QStringList &arguments)> gate;
    /// Kept until the shell goes: what a child needs on disk.
    std::shared_ptr<const void> needed;
    /// What the console offers to run again elsewhere, when that is not what the environment holds.
    std::optional<CommandPlace> place;
    /// Added to the CPU priority value of the children.
    int niceness = 0;
    /// Lets the children go on when the application ends: they are writing what must not stay half written.
    bool outlivesApplication = false;
    /// Of the pipe for the output.
    Pipe::Size pipeSize = Pipe::Size::Large;
    /// More output and errors than this many bytes end the child and fail the run, instead of exhausting the
    /// machine's memory.
    qsizetype outputLimit = qsizetype(256) << 20;
    /// The limit of what the user runs: typed lines, action scripts.
    static constexpr qsizetype foreignOutputLimit = qsizetype(64) << 20;
    /// What the console is told instead of the arguments, which may hold what is not for everybody to read.
    std::optional<QStringList> loggedArguments;

    /// Blocks until both output streams have ended, or kubectl has: what it leaves running, such as an agent
    /// or a browser for logging in, may keep them open. Never on the main thread.
    ShellResult run(const QStringList &arguments, bool logToConsole, QPointer<Console> console = nullptr);

    /// `run` on the shell queue. Without a console, the main window's is taken, on the main thread. The
    /// completion is called once, on a shell-queue thread.
    void runAsync(
        const QStringList &arguments, bool logToConsole, QPointer<Console> console, Completion completion);

    /// A logged `runAsync` for what must not end untold: a child that could not be started has its entry too,
    /// and the main window's console stands in for one that is gone by then.
    void runToldAsync(const QStringList &arguments, QPointer<Console> console, Completion completion);

    /// Starts a child whose output arrives in pieces; one that this shell still streams is terminated first.
    /// The arguments are used unchanged. The child ends with this shell at the latest.
    void runStreaming(const QStringList &arguments, PieceHandler handler, EndHandler ended = {});

    /// Ends a run that nobody waits for any more, with its child; the run then yields an error that says so.
    /// One that has not begun starts no child. For good: a cancelled shell runs nothing any more. Any thread.
    /// The console of a logged run shows what the child had printed until then.
    void cancel();
    bool isCancelled() const { return m_cancelled; }

    /// False when the latest blocking run printed bytes that are not UTF-8; its output is empty then. Any
    /// thread.
    bool outputWasText() const { return m_outputWasText; }
    /// The same of its standard error; the result has no error then.
    bool errorWasText() const { return m_errorWasText; }

    /// The child of the latest run; null before the first, and after a stream has ended. Any thread.
    std::shared_ptr<ChildProcess> process() const;

private:
    struct Prepared;
    struct Collected;
    enum class Log { No, Yes, Always };
    /// The console that a run was started for, gone or not; none when it was started for none.
    using Addressee = std::optional<QPointer<Console>>;

    Shell();
    Prepared prepareProcess(const QStringList &arguments) const;
    void post(const QStringList &arguments, Log log, QPointer<Console> console, Completion completion);
    ShellResult perform(const QStringList &arguments, Log log, const Addressee &console);
    ShellResult notStarted(
        const QStringList &arguments, Log log, const Addressee &console, const QString &reason) const;
    CommandLine commandLine(const QStringList &arguments) const;
    Collected collect(Prepared &prepared) const;
    /// Null when the stream could not be started, with a failure, or when a later request or a cancellation
    /// came first.
    std::shared_ptr<StreamingRun> startStream(
        quint64 request, const QStringList &arguments, PieceHandler handler, std::optional<QString> &failure);

    mutable std::mutex m_mutex; // guards the next three
    std::shared_ptr<ChildProcess> m_process;
    std::shared_ptr<StreamingRun> m_stream;
    quint64 m_streamRequests = 0;
    WakeSignal m_stop;
    std::atomic<bool> m_cancelled = false;
    std::atomic<bool> m_outputWasText = true;
    std::atomic<bool> m_errorWasText = true;
};

/// The queue of background kubectl runs and of the parsers behind them, shared by all shells.
DispatchQueue &shellQueue();

} // namespace tidewright
