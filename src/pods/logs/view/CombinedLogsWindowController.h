// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>

#include <functional>
#include <memory>

class QComboBox;
class QToolBar;
class QToolButton;

namespace tidewright {

class CombinedLogsViewController;
class LogPattern;
class LogPatternBar;
class LogSaver;
class LogSearch;
class LogStatusLine;
class LogTimeJump;

/// A logs window: the combined logs with a toolbar, bars to find and to filter, and a line that says how much
/// there is. Lives until the user closes it, and ends its streams then.
class CombinedLogsWindowController : public QMainWindow
{
    Q_OBJECT
public:
    CombinedLogsWindowController();
    ~CombinedLogsWindowController() override;

    /// To be filled in before the window is shown.
    CombinedLogsViewController &contentController() const { return *m_content; }
    LogSearch &search() const { return *m_search; }
    LogPatternBar &findBar() const { return *m_findBar; }
    LogPatternBar &filterBar() const { return *m_filterBar; }
    QString statusText() const;

    /// Saves all that has arrived until now; an existing file is replaced.
    void saveTo(const QString &path);
    /// The same of what is shown: not hidden, and not left out by the filter.
    void saveShownTo(const QString &path);

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QAction *addCommand(
        const QString &text, const QString &tip, const QKeySequence &shortcut, std::function<void()> chosen);
    QAction *addSwitch(const QString &text, const QString &tip, const QKeySequence &shortcut,
        std::function<void(bool on)> switched);
    void buildToolBar();
    void addBeginning(QToolBar &bar);
    void buildContextMenu(const QList<QAction *> &shared);
    void buildLayout();
    void connectParts();
    void chooseFile(bool shownOnly);
    void clear();
    void find(const LogPattern &pattern);
    void filter(const LogPattern &pattern);
    void findSelected();
    void updateFindResult();
    void updateStatus();

    CombinedLogsViewController *m_content;
    LogSearch *m_search;
    LogPatternBar *m_findBar;
    LogPatternBar *m_filterBar;
    QToolButton *m_excludes; ///< of the filter
    QComboBox *m_around; ///< of the filter
    LogStatusLine *m_status;
    std::unique_ptr<LogSaver> m_saver;
    std::unique_ptr<LogTimeJump> m_timeJump;
    QAction *m_wrap = nullptr;
    QAction *m_names = nullptr;
    bool m_namesChosen = false; ///< by the user
    QAction *m_timestamps = nullptr;
    QAction *m_goToTime = nullptr;
    QAction *m_save = nullptr;
    QAction *m_saveShown = nullptr;
};

} // namespace tidewright
