// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/window/WebPages.h"
#include "app/window/WindowServices.h"

#include <QMainWindow>

class QStackedWidget;
class QTabBar;

namespace tidewright {

class ActionMenu;
class MainWindowController;
class WindowCommands;

/// A top-level window: a group of cluster windows of which one is shown, with a tab bar once there are
/// several. To be the current tab of the active window is to be the application's main window. Deletes itself
/// when closed.
class ClusterWindowFrame : public QMainWindow
{
    Q_OBJECT
public:
    /// A window with one tab.
    /// On that kubeconfig, or on the usual one.
    explicit ClusterWindowFrame(const WindowServices &services, const QString &kubeConfig = {});

    MainWindowController *currentPage() const;
    QList<MainWindowController *> pages() const;
    QTabBar *tabBar() const { return m_tabBar; }

    /// Opens a tab after the current one: with the kubeconfig of the settings when `path` is empty, else with
    /// `path` and a name for its titles.
    MainWindowController *addTab(const QString &path = {}, const QString &title = {});
    /// Asks for a kubeconfig and a name, and opens a tab with them unless the user cancels.
    void newWindowForTabWithConfig();
    void closeTab(int index);
    void closeCurrentTab();
    ActionMenu &actionMenu() const { return *m_actionMenu; }
    void selectTab(int index);
    /// Moves on by that many tabs, around the ends.
    void walkTabs(int step);
    /// Moves the current tab on by that many places, around the ends.
    void moveTab(int step);

    /// Remembers the window's place and size for the next window.
    void saveFrame() const;

Q_SIGNALS:
    /// The window, or another of its tabs, is the main one now.
    void becameMain();
    void newWindowRequested();
    void quitRequested();
    void aboutRequested();
    void preferencesRequested();
    void webPageRequested(tidewright::WebPage page);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void buildLayout();
    void awakeFromNib();
    MainWindowController *makePage(const QString &kubeConfig);
    void insertPage(int index, MainWindowController *page);
    void currentTabChanged(int index);
    void tabMoved(int from, int to);
    void pageTitleChanged(MainWindowController *page);
    void pageBecomesMain();

    void fillToolBar(MainWindowController &page);
    void fillToolBars();
    void updateCommands();
    void customizeToolBar();

    const WindowServices m_services;
    QStackedWidget *m_toolBars;
    QTabBar *m_tabBar;
    QStackedWidget *m_pages;
    WindowCommands *m_commands = nullptr;
    ActionMenu *m_actionMenu = nullptr;
};

} // namespace tidewright
