// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/running/Console.h"
#include "pods/console/ConsoleEntry.h"

#include <memory>
#include <vector>

class QLineEdit;
class QMenu;
class QWidget;

namespace tidewright {

class CommandEntryBar;
class ConsoleTextView;
class TypedCommands;
class WindowState;

/// The console of one cluster window: the commands that ran on the user's behalf with what they printed, and
/// a field to type more. Lives as long as its window; letting it go ends the typed commands. Main thread,
/// except `updateScriptState`.
class ConsoleViewController : public Console
{
    Q_OBJECT
    Q_PROPERTY(bool isScriptRunning READ isScriptRunning NOTIFY isScriptRunningChanged)
    Q_PROPERTY(QString scriptRunningText READ scriptRunningText NOTIFY scriptRunningTextChanged)
public:
    explicit ConsoleViewController(QObject *parent = nullptr);
    ~ConsoleViewController() override;

    /// Belongs to whoever puts it into a window.
    QWidget *view() const;
    ConsoleTextView *consoleTextView() const;
    QLineEdit *commandEntryTextField() const;
    /// The window's state, through whose kubectl typed commands run. Must outlive the console or be set to
    /// null.
    void setKubeSplitViewController(WindowState *window);

    /// Every entry since the console was made, oldest first.
    const std::vector<ConsoleEntry> &entries() const { return m_entries; }
    /// How many entries back the field shows; 0 is the line being typed.
    int commandHistoryCursor() const { return m_commandHistoryCursor; }
    /// The line that was being typed when the walk through the history began.
    QString lastCommand() const { return m_lastCommand; }
    bool isScriptRunning() const { return m_isScriptRunning; }
    /// "Running: " and the script that started last, or empty.
    QString scriptRunningText() const { return m_scriptRunningText; }

    void addEntry(
        const QString &command, const QString &response, const std::optional<ConsoleError> &error) override;
    void addCommandEntry(const CommandLine &line, const QString &command, const QString &response,
        const std::optional<ConsoleError> &error) override;
    void updateScriptState() override;

public Q_SLOTS:
    /// Empties the text; the entries, and so the history, stay.
    void clearLogs();
    /// Says in the field where a typed line goes now.
    void showDestination();
    void runTypedCommand();
    void moveUp();
    void moveDown();
    /// Ends the typed commands that still run. Their entries show what they had printed.
    void stopTypedCommands();

Q_SIGNALS:
    void isScriptRunningChanged();
    void scriptRunningTextChanged();
    /// The user follows a link; http, https or ftp.
    void linkOpened(const QUrl &url);

private:
    /// What belongs to an entry besides the entry.
    struct Details
    {
        CommandLine line;
        QString error;
    };
    void connectViews();
    void showEntries();
    void applyHistoryCursor();
    void showScriptState();
    void tellRefusal(const QString &line, const QString &reason);
    void showTypedCommands();
    void extendMenu(QMenu *menu, int number);
    void copyEntry(size_t number) const;
    void openLink(const QString &text);

    const QPointer<ConsoleViewController> m_self{this}; // made here, copied by other threads
    QPointer<QWidget> m_view;
    QPointer<ConsoleTextView> m_text;
    QPointer<CommandEntryBar> m_bar;
    std::unique_ptr<TypedCommands> m_typed;
    QPointer<WindowState> m_window;
    std::vector<ConsoleEntry> m_entries;
    std::vector<Details> m_details; // as many as there are entries
    size_t m_shownEntries = 0;
    int m_commandHistoryCursor = 0;
    QString m_lastCommand;
    bool m_isScriptRunning = false;
    QString m_scriptRunningText;
};

} // namespace tidewright
