// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/running/Console.h"
#include "core/running/Shell.h"
#include "platform/process/ChildProcess.h"
#include "platform/threads/DispatchQueue.h"

#include <QPointer>
#include <QWidget>

namespace tidewright {

/// One edit of one object: runs `kubectl edit` with EDITOR set to the editor that the user chose, until the
/// editor's window is closed. The text that is edited lies in a temporary file of kubectl's. Made and
/// cancelled on the main thread; for one run.
class EditFile : public std::enable_shared_from_this<EditFile>
{
public:
    /// Gets the same pair as from a Shell, on a thread of the edit queue.
    using Completion = std::function<void(ShellResult)>;

    /// With the search path of a Shell, and no view.
    EditFile();
    /// With the application's own environment, the added program folders behind its PATH, and, unless empty,
    /// the window's kubeconfig.
    EditFile(QWidget *view, const QString &kubeConfigPath);

    /// What EDITOR is to be for the editor stored as "preferredEditor", read anew each time: its command line
    /// behind the package's quiet-editor, which keeps what the editor prints apart from kubectl's output.
    /// Nothing when none is chosen, or none that is known. Any thread.
    static std::optional<QString> editorCommand();

    /// Makes the child when an editor is chosen, else asks over the view's window whether to open the
    /// preferences. Any thread.
    void prepareProcess();
    /// `run` on the edit queue. Without a console the main window's is taken. Main thread.
    void runAsync(
        const QStringList &arguments, bool logToConsole, QPointer<Console> console, Completion completion);
    /// Blocks for as long as the editor's window is open. The console gets an entry when the run starts and
    /// one with its outcome; the main window's stands in for one that is gone. Never on the main thread.
    ShellResult run(const QStringList &arguments, QPointer<Console> console, bool logToConsole = true);

    /// Ends kubectl, for good, and returns at once. The editor goes on and kubectl's temporary file stays;
    /// the console and standard output say where it is.
    void cancel();

    /// As in Shell: asked before the child is started, on the thread that starts it, why it must not be.
    std::function<QString(const QStringList &arguments)> gate;
    /// Called on the main thread when the user asks for the preferences.
    std::function<void()> showPreferences;

    std::shared_ptr<ChildProcess> process; ///< null until prepared
    Pipe pipe; ///< the child's standard output
    Pipe errorPipe; ///< the child's standard error
    Environment environment; ///< the complete one of the child
    QPointer<QWidget> view; ///< whose window asks when no editor is chosen

private:
    void askForEditor();
    std::optional<QString> start(const QStringList &arguments);
    ShellResult waitForResult();
    QString stoppedText() const;

    mutable std::mutex m_mutex; // guards the process, its start and the next two
    bool m_cancelled = false;
    QString m_keptFile;
    WakeSignal m_stop;
};

/// One blocked thread for each editor that is open.
DispatchQueue &editFileQueue();

} // namespace tidewright
