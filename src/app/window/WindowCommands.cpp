// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/WindowCommands.h"

#include "app/content/CopyFile.h"
#include "app/content/OtherKinds.h"
#include "app/content/PrimaryContentController.h"
#include "app/state/KubeSplitViewController.h"
#include "app/state/LiveUpdates.h"
#include "app/toolbar/ClusterToolBar.h"
#include "app/toolbar/SearchableComboBox.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/window/MainWindowController.h"
#include "app/window/WindowList.h"
#include "platform/text/DisplayText.h"
#include "pods/console/ConsoleViewController.h"
#include "pods/table/PodController.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/controllers/CronJobController.h"
#include "resources/forwards/PortForwardsWindow.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/SharedContentViewController.h"
#include "resources/widgets/NamedImages.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QTabBar>

#include <algorithm>

namespace tidewright {

namespace {

/// The toolbar shows the image; in menus it would stand before a few commands only.
void setToolBarImage(QAction *action, const QString &name)
{
    action->setIcon(namedImage(name));
    action->setIconVisibleInMenu(false);
}

/// Enables a command, or says in its tool tip why it is not: `obstacle` is empty when it is.
void enable(QAction *action, const QString &obstacle, const QString &description)
{
    action->setEnabled(obstacle.isEmpty());
    const QString key = action->shortcut().toString(QKeySequence::NativeText);
    action->setToolTip(display_text::toolTip(
        obstacle.isEmpty() ? QStringLiteral("%1 (%2)").arg(description, key) : obstacle));
}

/// What forbids a command stands before what it lacks.
QString orForbidden(const MainWindowController *page, Deed deed, const QString &obstacle)
{
    const QString reason = page ? deedObstacle(page->state(), deed) : QString();
    return reason.isEmpty() ? obstacle : reason;
}

} // namespace

WindowCommands::WindowCommands(ClusterWindowFrame &frame, const WebPages &pages)
    : QObject(&frame)
    , m_frame(frame)
{
    buildFileMenu();
    buildEditMenu();
    buildViewMenu();
    buildGoMenu();
    buildClusterMenu();
    buildWindowMenu();
    buildHelpMenu(pages);
    qApp->installEventFilter(this);
}

QAction *WindowCommands::add(
    QMenu *menu, const QString &title, const QKeySequence &key, std::function<void()> command)
{
    QAction *action = menu->addAction(title, key, this, std::move(command));
    action->setAutoRepeat(false);
    return action;
}

QAction *WindowCommands::addForTable(
    QMenu *menu, const QString &title, const QKeySequence &key, TableCommand command)
{
    return add(menu, title, key, [this, command] {
        if (SharedContentViewController *table = shownTable()) {
            (table->*command)();
        }
    });
}

void WindowCommands::buildFileMenu()
{
    QMenu *menu = m_frame.menuBar()->addMenu(tr("&File"));
    add(menu, tr("New &Window"), QKeySequence(tr("Ctrl+N")), [this] { Q_EMIT m_frame.newWindowRequested(); });
    add(menu, tr("New &Tab"), QKeySequence(tr("Ctrl+T")), [this] { m_frame.addTab(); });
    add(menu, tr("New Tab with Con&fig…"), QKeySequence(tr("Ctrl+Shift+T")),
        [this] { m_frame.newWindowForTabWithConfig(); });
    menu->addSeparator();
    menu->setToolTipsVisible(true);
    m_create = add(menu, tr("&Create from File…"), QKeySequence(tr("Ctrl+O")),
        [this] { m_frame.currentPage()->primaryContentController().createFromFileDialog(); });
    m_apply = add(menu, tr("&Apply from File…"), QKeySequence(tr("Ctrl+Shift+O")),
        [this] { m_frame.currentPage()->primaryContentController().applyFromFileDialog(); });
    menu->addSeparator();
    add(menu, tr("C&lose Tab"), QKeySequence(tr("Ctrl+W")), [this] { m_frame.closeCurrentTab(); });
    add(menu, tr("&Quit"), QKeySequence(tr("Ctrl+Q")), [this] { Q_EMIT m_frame.quitRequested(); });
}

void WindowCommands::buildEditMenu()
{
    QMenu *menu = m_frame.menuBar()->addMenu(tr("&Edit"));
    QAction *copy = addForTable(
        menu, tr("&Copy Name"), QKeySequence(QKeySequence::Copy), &SharedContentViewController::copyName);
    menu->setToolTipsVisible(true);
    m_edit = addForTable(menu, tr("&Edit Configuration"), QKeySequence(tr("Ctrl+E")),
        &SharedContentViewController::editConfiguration);
    m_delete = addForTable(
        menu, tr("&Delete…"), QKeySequence(QKeySequence::Delete), &SharedContentViewController::deleteRows);
    m_delete->setObjectName(QStringLiteral("deleteToolbarItem"));
    m_delete->setIconText(tr("Delete"));
    setToolBarImage(m_delete, QStringLiteral("delete"));
    menu->addSeparator();
    m_forTable.append(addForTable(
        menu, tr("&Filter"), QKeySequence(QKeySequence::Find), &SharedContentViewController::selectFilter));
    menu->addSeparator();
    add(menu, tr("&Preferences…"), QKeySequence(tr("Ctrl+,")),
        [this] { Q_EMIT m_frame.preferencesRequested(); });
    m_forRows = {copy, m_edit, m_delete};
}

void WindowCommands::buildViewMenu()
{
    QMenu *menu = m_frame.menuBar()->addMenu(tr("&View"));
    m_reload = add(menu, tr("&Reload"), QKeySequence(tr("Ctrl+R")),
        [this] { m_frame.currentPage()->primaryContentController().reloadContent(); });
    setToolBarImage(m_reload, QStringLiteral("reload"));
    m_reload->setObjectName(QStringLiteral("reloadToolbarItem"));
    m_reload->setToolTip(tr("Load the table again (Ctrl+R)"));
    m_forTable.append(m_reload);
    m_quickLook = addForTable(menu, tr("&Quick Look"), QKeySequence(Qt::Key_Space),
        &SharedContentViewController::showQuickLookPanel);
    setToolBarImage(m_quickLook, QStringLiteral("preview"));
    m_quickLook->setObjectName(QStringLiteral("quickLookToolbarItem"));
    m_quickLook->setToolTip(tr("Show the selected objects: YAML, description, events (Space or Enter)"));
    m_forRows.append(m_quickLook);
    m_stop = addForTable(
        menu, tr("&Stop Loading"), QKeySequence(Qt::Key_Escape), &SharedContentViewController::stopLoading);
    QAction *live = menu->addAction(tr("Li&ve Updates"));
    live->setCheckable(true);
    live->setStatusTip(tr("Show every change in the cluster as it happens"));
    live->setChecked(LiveUpdates::shared().isOn());
    connect(live, &QAction::triggered, &LiveUpdates::shared(), &LiveUpdates::setOn);
    connect(&LiveUpdates::shared(), &LiveUpdates::changed, live,
        [live] { live->setChecked(LiveUpdates::shared().isOn()); });
    menu->addSeparator();
    add(menu, tr("&Clear Console"), QKeySequence(tr("Ctrl+Shift+K")),
        [this] { m_frame.currentPage()->windowConsoleController().clearLogs(); });
    menu->addSeparator();
    m_forTabs.append(
        add(menu, tr("&Next Tab"), QKeySequence(tr("Ctrl+PgDown")), [this] { m_frame.walkTabs(1); }));
    m_forTabs.append(
        add(menu, tr("&Previous Tab"), QKeySequence(tr("Ctrl+PgUp")), [this] { m_frame.walkTabs(-1); }));
    m_forTabs.append(add(
        menu, tr("Move Tab &Right"), QKeySequence(tr("Ctrl+Shift+PgDown")), [this] { m_frame.moveTab(1); }));
    m_forTabs.append(add(
        menu, tr("Move Tab &Left"), QKeySequence(tr("Ctrl+Shift+PgUp")), [this] { m_frame.moveTab(-1); }));
    menu->addSeparator();
    add(menu, tr("Customize &Toolbar…"), QKeySequence(), [this] { Q_EMIT toolBarRequested(); });
    // By key these belong to the table that has the focus; elsewhere the same keys edit or copy text.
    for (QAction *action : std::as_const(m_forRows)) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    }
}

void WindowCommands::buildGoMenu()
{
    QMenu *menu = m_frame.menuBar()->addMenu(tr("&Go"));
    menu->setToolTipsVisible(true);
    m_back = add(menu, tr("&Back"), {}, [this] { go(-1); });
    m_back->setShortcuts(QKeySequence::Back);
    m_forward = add(menu, tr("&Forward"), {}, [this] { go(1); });
    m_forward->setShortcuts(QKeySequence::Forward);
    menu->addSeparator();
    m_showPods = addForTable(
        menu, tr("Show &Pods"), QKeySequence(tr("Ctrl+Shift+D")), &SharedContentViewController::showPods);
    m_showOwner = addForTable(
        menu, tr("Show &Owner"), QKeySequence(tr("Ctrl+Shift+U")), &SharedContentViewController::showOwner);
}

void WindowCommands::go(int steps)
{
    if (MainWindowController *page = m_frame.currentPage()) {
        page->primaryContentController().go(steps);
    }
}

bool WindowCommands::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::MouseButtonPress || !watched->isWidgetType()) {
        return QObject::eventFilter(watched, event);
    }
    const Qt::MouseButton button = static_cast<QMouseEvent *>(event)->button();
    const bool isWay = button == Qt::BackButton || button == Qt::ForwardButton;
    if (!isWay || static_cast<QWidget *>(watched)->window() != &m_frame) {
        return QObject::eventFilter(watched, event);
    }
    go(button == Qt::BackButton ? -1 : 1);
    return true;
}

void WindowCommands::buildClusterMenu()
{
    QMenu *menu = m_frame.menuBar()->addMenu(tr("&Cluster"));
    add(menu, tr("Choose &Context…"), QKeySequence(tr("Ctrl+K")),
        [this] { m_frame.currentPage()->toolBar().contextPopupButton()->showPopup(); });
    add(menu, tr("Choose &Namespace…"), QKeySequence(tr("Ctrl+L")),
        [this] { m_frame.currentPage()->toolBar().namespacesPopupButton()->showPopup(); });
    add(menu, tr("&Other Kinds…"), QKeySequence(tr("Ctrl+Alt+K")),
        [this] { m_frame.currentPage()->otherKinds().choose(); });
    menu->addSeparator();
    m_viewLogs = addForTable(
        menu, tr("View &Logs"), QKeySequence(tr("Ctrl+Shift+L")), &SharedContentViewController::viewLogs);
    m_viewLogs->setObjectName(QStringLiteral("viewLogsToolbarItem"));
    setToolBarImage(m_viewLogs, QStringLiteral("logs"));
    m_copyFile = add(menu, tr("Copy &File…"), QKeySequence(tr("Ctrl+Shift+F")), [this] {
        if (auto *pods = qobject_cast<PodController *>(shownTable())) {
            copyFileDialog(*pods);
        }
    });
    m_copyFile->setObjectName(QStringLiteral("copyFileToolbarItem"));
    m_copyFile->setIconText(tr("Copy File"));
    setToolBarImage(m_copyFile, QStringLiteral("copyfile"));
    m_openShell = add(menu, tr("Open &Shell"), QKeySequence(tr("Ctrl+Shift+S")), [this] {
        if (auto *pods = qobject_cast<PodController *>(shownTable())) {
            pods->openShell();
        }
    });
    m_forwardPort = addForTable(menu, tr("Forward &Port…"), QKeySequence(tr("Ctrl+Alt+P")),
        &SharedContentViewController::forwardPort);
    m_runNow = add(menu, tr("Run Cron &Job Now"), QKeySequence(tr("Ctrl+Shift+J")), [this] {
        if (auto *cronJobs = qobject_cast<CronJobController *>(shownTable())) {
            cronJobs->runCronJobNow();
        }
    });
    menu->setToolTipsVisible(true);
    menu->addSeparator();
    add(menu, QStringLiteral("Reload Contexts"), QKeySequence(),
        [this] { m_frame.currentPage()->state().reloadContexts(); });
    add(menu, QStringLiteral("Reload Namespace"), QKeySequence(tr("Ctrl+Shift+R")),
        [this] { m_frame.currentPage()->state().reloadNamespaces(); });
}

void WindowCommands::buildWindowMenu()
{
    m_windowMenu = m_frame.menuBar()->addMenu(tr("&Window"));
    add(m_windowMenu, tr("&Minimize"), QKeySequence(tr("Ctrl+M")), [this] { m_frame.showMinimized(); });
    add(m_windowMenu, tr("&Port Forwards"), QKeySequence(), [] { PortForwardsWindow::present(); });
    m_windowMenu->addSeparator();
    new WindowList(m_frame, m_windowMenu);
}

void WindowCommands::buildHelpMenu(const WebPages &pages)
{
    QMenu *menu = m_frame.menuBar()->addMenu(tr("&Help"));
    menu->setToolTipsVisible(true);
    const auto addPage = [&](WebPage page, const QString &title, const QKeySequence &key = {}) {
        QAction *action = add(menu, title, key, [this, page] { Q_EMIT m_frame.webPageRequested(page); });
        if (!pages.has(page)) {
            action->setEnabled(false);
            action->setToolTip(tr("This package of Tidewright names no such page."));
        }
    };
    addPage(WebPage::Documentation, tr("Online &Documentation"), QKeySequence(QKeySequence::HelpContents));
    addPage(WebPage::Changelog, tr("Change &Log"));
    menu->addSeparator();
    addPage(WebPage::ReportIssue, tr("&Report an Issue…"));
    addPage(WebPage::Feedback, tr("Provide &Feedback…"));
    addPage(WebPage::MoreApps, tr("&More Apps"));
    menu->addSeparator();
    QAction *update = menu->addAction(tr("Check for &Updates…"));
    update->setEnabled(false);
    update->setToolTip(tr("Updates come with the package manager of your system."));
    add(menu, tr("&About Tidewright"), QKeySequence(), [this] { Q_EMIT m_frame.aboutRequested(); });
}

QList<QAction *> WindowCommands::toolBarActions() const
{
    return {m_reload, m_viewLogs, m_copyFile, m_quickLook, m_delete};
}

QAction *WindowCommands::toolBarAction(const QString &identifier) const
{
    const auto actions = toolBarActions();
    const auto found = std::find_if(actions.begin(), actions.end(),
        [&identifier](const QAction *action) { return action->objectName() == identifier; });
    return found == actions.end() ? nullptr : *found;
}

void WindowCommands::insertActionMenu(QMenu *menu)
{
    m_frame.menuBar()->insertMenu(m_windowMenu->menuAction(), menu);
}

void WindowCommands::addTo(MainWindowController &page)
{
    for (SharedContentViewController *table : page.primaryContentController().tables()) {
        table->addActions(m_forRows);
    }
    connect(&page.primaryContentController(), &PrimaryContentController::tableAdded, this,
        [this](SharedContentViewController *table) { table->addActions(m_forRows); });
}

SharedContentViewController *WindowCommands::shownTable() const
{
    const MainWindowController *page = m_frame.currentPage();
    return page ? page->primaryContentController().shownTable() : nullptr;
}

void WindowCommands::updateEnabled()
{
    const SharedContentViewController *table = shownTable();
    const bool hasRows = table && table->chosenCount() > 0;
    for (QAction *action : std::as_const(m_forRows)) {
        action->setEnabled(hasRows);
    }
    updateChanges(hasRows);
    for (QAction *action : std::as_const(m_forTable)) {
        action->setEnabled(table);
    }
    m_stop->setEnabled(table && table->canStopLoading());
    for (QAction *action : std::as_const(m_forTabs)) {
        action->setEnabled(m_frame.tabBar()->count() > 1);
    }
    updateLogsAndJobs();
    updateWays();
}

/// The commands that change objects, where their names do not depend on what is chosen.
void WindowCommands::updateChanges(bool hasRows)
{
    const MainWindowController *page = m_frame.currentPage();
    const SharedContentViewController *table = shownTable();
    const QString mayNotDelete = table ? table->obstacleTo(Deed::Delete) : QString();
    const QString nothingChosen = hasRows ? QString() : tr("Select what to delete first.");
    enable(
        m_delete, mayNotDelete.isEmpty() ? nothingChosen : mayNotDelete, tr("Delete the selected objects"));
    enable(m_create, orForbidden(page, Deed::Create, {}), tr("Create what YAML files declare"));
    enable(m_apply, orForbidden(page, Deed::Apply, {}),
        tr("Compare what YAML files declare with the cluster, and apply it"));
    const QString readOnly = page ? changeObstacle(page->state()) : QString();
    const QString mayNotEdit = table ? table->obstacleTo(Deed::Edit) : QString();
    m_edit->setText(readOnly.isEmpty() ? tr("&Edit Configuration") : tr("Vi&ew Configuration"));
    m_edit->setEnabled(hasRows && (mayNotEdit.isEmpty() || !readOnly.isEmpty()));
    m_edit->setToolTip(
        display_text::toolTip(mayNotEdit.isEmpty() ? tr("Edit the first selected object") : mayNotEdit));
}

void WindowCommands::updateWays()
{
    const MainWindowController *page = m_frame.currentPage();
    m_back->setEnabled(page && page->primaryContentController().canGo(-1));
    m_forward->setEnabled(page && page->primaryContentController().canGo(1));
    const SharedContentViewController *table = shownTable();
    enable(m_showPods, table ? table->showPodsObstacle() : tr("No table is shown."),
        tr("Show the pods of the selected object"));
    enable(m_showOwner, table ? table->showOwnerObstacle() : tr("No table is shown."),
        tr("Show the object that made the selected one"));
}

void WindowCommands::updateLogsAndJobs()
{
    const MainWindowController *page = m_frame.currentPage();
    const SharedContentViewController *table = shownTable();
    const QString noTable = tr("No table is shown.");
    const QString noPods = tr("Choose Pods in the sidebar first.");
    const auto *pods = qobject_cast<const PodController *>(table);
    const auto *cronJobs = qobject_cast<const CronJobController *>(table);
    enable(m_viewLogs, orForbidden(page, Deed::ReadLogs, table ? table->viewLogsObstacle() : noTable),
        tr("Show the logs of what is selected"));
    enable(m_copyFile, orForbidden(page, Deed::CopyFiles, pods ? pods->copyFileObstacle() : noPods),
        tr("Copy files into the chosen container"));
    enable(m_openShell, orForbidden(page, Deed::OpenShell, pods ? pods->openShellObstacle() : noPods),
        tr("Open a shell in a container, in the terminal"));
    enable(m_forwardPort,
        orForbidden(page, Deed::ForwardPort, table ? table->forwardPortObstacle() : noTable),
        tr("Make a port of the selected object reachable on this machine"));
    enable(m_runNow,
        orForbidden(page, Deed::RunJob,
            cronJobs ? cronJobs->runObstacle() : tr("Choose Cron Jobs in the sidebar first.")),
        tr("Make a job from the selected cron job"));
}

} // namespace tidewright
