// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeySequence>
#include <QObject>

#include <functional>

class QAction;
class QMenu;

namespace tidewright {

class ClusterWindowFrame;
class MainWindowController;
class PrimaryContentController;
class SharedContentViewController;
class WebPages;

/// The commands of one top-level window, in its menu bar: they act on the tab and the table that are shown.
class WindowCommands : public QObject
{
    Q_OBJECT
public:
    /// Fills the menu bar of `frame`, which owns it. Of `pages`, those without an address are disabled.
    WindowCommands(ClusterWindowFrame &frame, const WebPages &pages);

    /// The commands that can have a button in the toolbar. Their object names are their identifiers; each
    /// needs an icon text and an image too.
    QList<QAction *> toolBarActions() const;
    /// The one of that identifier; null when there is none.
    QAction *toolBarAction(const QString &identifier) const;
    /// Puts the menu of the user's actions in its place.
    void insertActionMenu(QMenu *menu);
    /// Makes the commands on rows work by key while a table of `page` has the keyboard focus.
    void addTo(MainWindowController &page);
    void updateEnabled();

    /// The mouse buttons for going back and forward, anywhere in the window.
    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    /// The user wants to choose the toolbar's commands.
    void toolBarRequested();

private:
    using TableCommand = void (SharedContentViewController::*)();

    void buildFileMenu();
    void buildEditMenu();
    void buildViewMenu();
    void buildGoMenu();
    void buildClusterMenu();
    void buildWindowMenu();
    void buildHelpMenu(const WebPages &pages);
    QAction *add(QMenu *menu, const QString &title, const QKeySequence &key, std::function<void()> command);
    QAction *addForTable(QMenu *menu, const QString &title, const QKeySequence &key, TableCommand command);
    SharedContentViewController *shownTable() const;
    void updateChanges(bool hasRows);
    void updateLogsAndJobs();
    void updateWays();
    void go(int steps);

    ClusterWindowFrame &m_frame;
    QList<QAction *> m_forRows; ///< need chosen rows, and the focus in the table when they come by key
    QList<QAction *> m_forTable;
    QAction *m_reload = nullptr;
    QAction *m_quickLook = nullptr;
    QAction *m_edit = nullptr;
    QAction *m_create = nullptr;
    QAction *m_apply = nullptr;
    QAction *m_delete = nullptr;
    QAction *m_viewLogs = nullptr;
    QAction *m_copyFile = nullptr;
    QAction *m_openShell = nullptr;
    QAction *m_forwardPort = nullptr;
    QAction *m_runNow = nullptr;
    QAction *m_stop = nullptr;
    QAction *m_back = nullptr;
    QAction *m_forward = nullptr;
    QAction *m_showPods = nullptr;
    QAction *m_showOwner = nullptr;
    QList<QAction *> m_forTabs;
    QMenu *m_windowMenu = nullptr;
};

} // namespace tidewright
