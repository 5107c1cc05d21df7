// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/actionmenu/ActionDispatcher.h"
#include "app/actionmenu/ActionTarget.h"

#include <QPointer>
#include <QWidget>

namespace tidewright {

class ClusterToolBar;
class Console;
class ConsoleViewController;
class ContextBand;
class UserKubeConfig;
class KubeSplitViewController;
class OtherKinds;
class PrimaryContentController;
class SharedContentViewController;
class SidebarController;

/// One cluster window, a page of a tab group: its kubeconfig, its title, its toolbar and its content
/// (sidebar, tables, console), each with a state of its own. Owned by the tab group that shows it.
class MainWindowController : public QWidget, public ActionTarget
{
    Q_OBJECT
public:
    /// `userFile` must outlive the window.
    /// Reads that kubeconfig while it is built; which one it shows is for setKubeConfigPath to say.
    MainWindowController(UserKubeConfig &userFile, const QString &readAhead, QWidget *parent = nullptr);
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
    OtherKinds &otherKinds() const { return *m_otherKinds; }
    ConsoleViewController &windowConsoleController() const { return *m_console; }
    /// Shown by the tab group above the tabs; belongs to the page all the same.
    ClusterToolBar &toolBar() const;

    /// The tabs opened from this one; only ever appended to, those that were closed are null.
    QList<QPointer<MainWindowController>> subwindowControllers;

    std::shared_ptr<CustomActionItem> lastAction() const override { return m_lastAction; }
    void runAction(const std::shared_ptr<CustomActionItem> &item) override;
    void runLastAction() override;
    void beginActionChecks() override { m_dispatcher->beginChecks(); }
    QString actionObstacle(const CustomActionItem &item) const override
    {
        return m_dispatcher->obstacle(item);
    }

Q_SIGNALS:
    void titleChanged();
    /// What commands can do now may have changed: another table, another selection, a load began or ended.
    void commandStateChanged();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void buildLayout();
    void connectParts();
    void connectTable(SharedContentViewController *table);
    void reviewAccess();
    void updateTitles(const QString &nameSpace);
    void showContextPolicy();

    QString m_kubeConfigPath;
    QString m_configTitle;
    QString m_title;
    QString m_tabTitle;
    bool m_appeared = false;
    KubeSplitViewController *m_state;
    ConsoleViewController *m_console;
    PrimaryContentController *m_content;
    SidebarController *m_sidebar;
    OtherKinds *m_otherKinds;
    QPointer<ClusterToolBar> m_toolBar;
    ContextBand *m_band;
    std::unique_ptr<ActionDispatcher> m_dispatcher;
    std::shared_ptr<CustomActionItem> m_lastAction;
};

} // namespace tidewright
