// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>
#include <QPointer>

class QLabel;
class QProgressBar;
class QToolButton;

namespace tidewright {

class CombinedLogsViewController;
class LogExport;
class LogPattern;
class LogPatternBar;
class LogSearch;

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

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QAction *addCommand(const QString &text, const QString &tip, const QKeySequence &shortcut);
    void buildToolBar();
    void buildLayout();
    QWidget *makePlaceLabel();
    void connectParts();
    void chooseFile();
    void clear();
    void find(const LogPattern &pattern);
    void updateFindResult();
    void updateStatus();

    CombinedLogsViewController *m_content;
    LogSearch *m_search;
    LogPatternBar *m_findBar;
    LogPatternBar *m_filterBar;
    QLabel *m_status;
    QLabel *m_notice;
    QProgressBar *m_progress;
    QLabel *m_following;
    QToolButton *m_followRefused;
    QToolButton *m_jump;
    QAction *m_wrap = nullptr;
    QAction *m_save = nullptr;
    QPointer<LogExport> m_export; ///< while it runs
};

} // namespace tidewright
