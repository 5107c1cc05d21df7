// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/running/CommandLine.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tidewright {

/// An error as the console shows it.
struct ConsoleError
{
    QString domain;
    int code = 0;
    QString description;
};

/// An error of domain "Console", code -1, whose description is `description`.
ConsoleError makeConsoleError(const QString &description);

/// What the layers below the console know of it. It lives, and is called, on the main thread; workers only
/// carry a QPointer to it that was made there.
class Console : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Records and shows one entry.
    virtual void addEntry(
        const QString &command, const QString &response, const std::optional<ConsoleError> &error)
        = 0;
    /// The same for a command of which more is known than how it is shown.
    virtual void addCommandEntry(const CommandLine & /*line*/, const QString &command,
        const QString &response, const std::optional<ConsoleError> &error)
    {
        addEntry(command, response, error);
    }

    /// Ends something that runs; the same pointer stands for the same run.
    using Stop = std::shared_ptr<const std::function<void()>>;

    /// Shows that something runs for this console's window, until `end` is called with an equal title; with
    /// `stop`, the user can end it. Main thread.
    void begin(const QString &title, const Stop &stop = {});
    void end(const QString &title, const Stop &stop = {});
    /// The titles of what the user can end, and all of that ended. Main thread.
    QStringList stoppableScripts() const;
    void stopScripts();
    /// The titles of what runs, mostly custom action scripts, in the order in which they started. Main
    /// thread.
    const QStringList &scriptsRunning() const { return m_scriptsRunning; }
    /// Makes the console show what `scriptsRunning` says. Any thread.
    virtual void updateScriptState() { }

private:
    QStringList m_scriptsRunning;
    std::vector<std::pair<QString, Stop>> m_stoppable;
};

/// The console of the application's main window, if that is a cluster window. Main thread.
Console *mainConsole();
/// Installed at start-up by whoever knows the windows.
void setMainConsoleLookup(std::function<Console *()> lookup);

/// Adds an entry to `console`, or to the main window's when that is null; without either the entry is lost.
/// Main thread.
void postConsoleEntry(Console *console, const QString &command, const QString &response,
    const std::optional<ConsoleError> &error, const CommandLine &line = {});

/// Posts to the main thread an entry that is only an error, for the main window's console. Any thread.
void postConsoleError(const QString &description);

} // namespace tidewright
