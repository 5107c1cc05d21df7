// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/actionmenu/ActionDispatcher.h"

#include <QPointer>
#include <QWidget>

namespace tidewright {

class ClusterToolBar;
class Console;
class ConsoleViewController;
class UserKubeConfig;
class KubeSplitViewController;
class PrimaryContentController;
class SidebarController;

/// One cluster window, a page of a tab group: its kubeconfig, its title, its toolbar and its content
/// (sidebar, tables, console), each with a state of its own. Owned by the tab group that shows it.
class MainWindowController : public QWidget
{
    Q_OBJECT
public:
    /// `userFile` must outlive the window.
    explicit MainWindowController(UserKubeConfig &userFile, QWidget *parent = nullptr);
    ~MainWindowController() override;

    /// To be called once by whoever opens the window: takes the kubeconfig of the settings unless it has one
    /// already.
    void windowDidLoad();
    void windowDidBecomeMain();

    /// The window's kubeconfig, a path or a list of paths as in KUBECONFIG; empty means kubectl's own
    /// default. Read when the content first appears.
    QString kubeConfigPath() const { return m_kubeConfigPath; }
    void setKubeConfigPath(const QString &path) { m_kubeConfigPath = path; }
    /// A name that the user gave the window, for its titles; may be empty.
    QString configTitle() const { return m_configTitle; }
    void setConfigTitle(const QString &title) { m_configTitle = title; }
    /// The path in the settings, "~" expanded; empty when there is none.
    static QString defaultKubeConfigPath();

    QString title() const { return m_title; }
    QString tabTitle() const { return m_tabTitle; }
    /// Title, context, namespace and kubeconfig, a line each; while that is so, why nothing is shown.
    QString placeDescription() const;

    KubeSplitViewController &state() const { return *m_state; }
    PrimaryContentController &primaryContentController() const { return *m_content; }
    SidebarController &sidebarController() const { return *m_sidebar; }
    ConsoleViewController &windowConsoleController() const { return *m_console; }
    /// Shown by the tab group above the tabs; belongs to the page all the same.
    ClusterToolBar &toolBar() const;

    /// The tabs opened from this one; only ever appended to, those that were closed are null.
    QList<QPointer<MainWindowController>> subwindowControllers;

    /// The custom action that was last chosen here; null at first.
    const std::shared_ptr<CustomActionItem> &lastAction() const { return m_lastAction; }
    /// Runs a custom action for what the tables show.
    void runAction(const std::shared_ptr<CustomActionItem> &item);
    /// Runs the last one again, for what the tables show now.
    void runLastAction();
    /// Many calls of `actionObstacle` follow, which together must not hold up the window.
    void beginActionChecks() { m_dispatcher->beginChecks(); }
    /// Why an action cannot be chosen now; empty when it can.
    QString actionObstacle(const CustomActionItem &item) const { return m_dispatcher->obstacle(item); }

Q_SIGNALS:
    void titleChanged();
    /// What commands can do now may have changed: another table, another selection, a load began or ended.
    void commandStateChanged();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void buildLayout();
    void connectParts();
    void updateTitles(const QString &nameSpace);

    QString m_kubeConfigPath;
    QString m_configTitle;
    QString m_title;
    QString m_tabTitle;
    bool m_appeared = false;
    ConsoleViewController *m_console;
    KubeSplitViewController *m_state;
    PrimaryContentController *m_content;
    SidebarController *m_sidebar;
    QPointer<ClusterToolBar> m_toolBar;
    std::unique_ptr<ActionDispatcher> m_dispatcher;
    std::shared_ptr<CustomActionItem> m_lastAction;
};

} // namespace tidewright
