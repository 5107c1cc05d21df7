// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/ClusterWindowFrame.h"

#include "app/actionmenu/ActionLibrary.h"
#include "app/actionmenu/ActionMenu.h"
#include "app/kubeconfig/KubeConfigChooser.h"
#include "app/state/KubeSplitViewController.h"
#include "app/toolbar/ClusterToolBar.h"
#include "app/toolbar/ToolBarDialog.h"
#include "app/toolbar/ToolBarLayout.h"
#include "app/window/MainWindowController.h"
#include "app/window/WindowCommands.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/settings/UserDefaults.h"
#include "platform/text/DisplayText.h"

#include <QCloseEvent>
#include <QDataStream>
#include <QGuiApplication>
#include <QScreen>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr int titleBarRoom = 36;
const auto FRAMEKEY = QStringLiteral("TidewrightFrame");
constexpr QSize minimumWindow(600, 310);
constexpr QSize usualWindow(1400, 860);

} // namespace

ClusterWindowFrame::ClusterWindowFrame(const WindowServices &services, const QString &kubeConfig)
    : m_services(services)
    , m_toolBars(new QStackedWidget)
    , m_tabBar(new QTabBar)
    , m_pages(new QStackedWidget)
{
    MainWindowController *page = makePage(kubeConfig); // kubectl reads it while the rest is built
    m_commands = new WindowCommands(*this, services.pages);
    m_actionMenu = new ActionMenu(*this, services.actions, [this] { return currentPage(); });
    setAttribute(Qt::WA_DeleteOnClose);
    setMinimumSize(minimumWindow);
    buildLayout();
    connect(m_tabBar, &QTabBar::currentChanged, this, &ClusterWindowFrame::currentTabChanged);
    connect(m_tabBar, &QTabBar::tabCloseRequested, this, &ClusterWindowFrame::closeTab);
    connect(m_tabBar, &QTabBar::tabMoved, this, &ClusterWindowFrame::tabMoved);
    m_commands->insertActionMenu(m_actionMenu);
    connect(m_actionMenu, &ActionMenu::rebuilt, this, &ClusterWindowFrame::fillToolBars);
    connect(&services.toolBar, &ToolBarLayout::changed, this, &ClusterWindowFrame::fillToolBars);
    connect(m_commands, &WindowCommands::toolBarRequested, this, &ClusterWindowFrame::customizeToolBar);
    awakeFromNib();
    insertPage(0, page);
}

void ClusterWindowFrame::buildLayout()
{
    m_tabBar->setDocumentMode(true);
    m_tabBar->setDrawBase(false);
    m_tabBar->setTabsClosable(true);
    m_tabBar->setMovable(true);
    m_tabBar->setExpanding(false);
    m_tabBar->setAutoHide(true);
    m_tabBar->setElideMode(Qt::ElideMiddle);
    m_tabBar->setAccessibleName(tr("Tabs"));
    m_toolBars->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    auto *central = new QWidget;
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_toolBars);
    layout->addWidget(m_tabBar);
    layout->addWidget(m_pages, 1);
    setCentralWidget(central);
}

void ClusterWindowFrame::awakeFromNib()
{
    resize(usualWindow.boundedTo(QGuiApplication::primaryScreen()->availableSize() * 0.94));
    const auto stored = userDefaults().data(FRAMEKEY);
    QRect frame;
    if (stored) {
        QDataStream stream(*stored);
        stream.setVersion(QDataStream::Qt_6_0);
        stream >> frame;
    }
    if (!frame.isValid()) {
        return;
    }
    // The screen of then may be gone, or smaller.
    const QScreen *screen = QGuiApplication::screenAt(frame.center());
    QRect room = (screen ? screen : QGuiApplication::primaryScreen())->availableGeometry();
    room.setTop(
        room.top() + titleBarRoom); // the frame is that of the content; its title bar must stay in reach
    frame.setSize(frame.size().expandedTo(minimumWindow).boundedTo(room.size()));
    frame.moveTo(qBound(room.left(), frame.left(), room.right() - frame.width() + 1),
        qBound(room.top(), frame.top(), room.bottom() - frame.height() + 1));
    setGeometry(frame);
}

void ClusterWindowFrame::saveFrame() const
{
    QByteArray archive;
    QDataStream stream(&archive, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << (isMaximized() || isFullScreen() ? normalGeometry() : geometry());
    userDefaults().set(FRAMEKEY, archive);
}

MainWindowController *ClusterWindowFrame::currentPage() const
{
    return qobject_cast<MainWindowController *>(m_pages->currentWidget());
}

QList<MainWindowController *> ClusterWindowFrame::pages() const
{
    QList<MainWindowController *> result;
    for (int index = 0; index < m_pages->count(); ++index) {
        result.append(qobject_cast<MainWindowController *>(m_pages->widget(index)));
    }
    return result;
}

MainWindowController *ClusterWindowFrame::makePage(const QString &kubeConfig)
{
    const QString path = kubeConfig.isEmpty() ? MainWindowController::defaultKubeConfigPath() : kubeConfig;
    auto *page = new MainWindowController(m_services.userFile, path);
    page->windowDidLoad();
    page->setKubeConfigPath(path);
    return page;
}

void ClusterWindowFrame::insertPage(int index, MainWindowController *page)
{
    fillToolBar(*page);
    m_services.actions.refresh();
    connect(page, &MainWindowController::titleChanged, this, [this, page] { pageTitleChanged(page); });
    connect(page, &MainWindowController::commandStateChanged, this, &ClusterWindowFrame::updateCommands);
    connect(&page->state(), &KubeSplitViewController::preferencesRequested, this,
        &ClusterWindowFrame::preferencesRequested);
    connect(&page->toolBar(), &ClusterToolBar::accessPreferencesRequested, this,
        &ClusterWindowFrame::preferencesRequested);
    m_commands->addTo(*page);
    m_pages->insertWidget(index, page);
    m_toolBars->insertWidget(index, &page->toolBar());
    m_tabBar->insertTab(index, page->tabTitle());
}

MainWindowController *ClusterWindowFrame::addTab(const QString &path, const QString &title)
{
    MainWindowController *opener = currentPage();
    const int index = m_tabBar->currentIndex() + 1;
    MainWindowController *page = makePage(path);
    insertPage(index, page);
    page->setConfigTitle(path.isEmpty() ? QString() : title);
    writeDiagnostic(QStringLiteral("set config in add new tab"));
    if (opener) {
        opener->subwindowControllers.append(page);
    }
    selectTab(index);
    activateWindow();
    return page;
}

void ClusterWindowFrame::newWindowForTabWithConfig()
{
    chooseKubeConfig(this, true, this, [this](const std::optional<KubeConfigChoice> &choice) {
        if (choice) {
            addTab(choice->path, choice->title);
        }
    });
}

void ClusterWindowFrame::updateCommands()
{
    m_commands->updateEnabled();
    m_actionMenu->updateEnabled();
}

void ClusterWindowFrame::fillToolBar(MainWindowController &page)
{
    QList<QAction *> actions;
    for (const QString &identifier : m_services.toolBar.identifiers()) {
        QAction *standard = m_commands->toolBarAction(identifier);
        if (QAction *action = standard ? standard : m_actionMenu->toolbarItem(identifier)) {
            actions.append(action);
        }
    }
    page.toolBar().setCommands(actions);
}

void ClusterWindowFrame::fillToolBars()
{
    for (MainWindowController *page : pages()) {
        fillToolBar(*page);
    }
}

void ClusterWindowFrame::customizeToolBar()
{
    QList<ToolBarItem> items;
    for (const QAction *action : m_commands->toolBarActions()) {
        items.append({action->objectName(), action->iconText(), action->icon()});
    }
    for (const auto &item : m_services.actions.customToolbarItems()) {
        items.append({item->title(), item->title(), item->icon()});
    }
    auto *dialog = new ToolBarDialog(items, m_services.toolBar, this);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->show();
}

void ClusterWindowFrame::selectTab(int index)
{
    m_tabBar->setCurrentIndex(index);
}

void ClusterWindowFrame::walkTabs(int step)
{
    const int count = m_tabBar->count();
    selectTab((m_tabBar->currentIndex() + step + count) % count);
}

void ClusterWindowFrame::moveTab(int step)
{
    const int count = m_tabBar->count();
    const int index = m_tabBar->currentIndex();
    m_tabBar->moveTab(index, (index + step + count) % count);
}

void ClusterWindowFrame::closeTab(int index)
{
    if (m_tabBar->count() <= 1) {
        close();
        return;
    }
    saveFrame();
    QWidget *page = m_pages->widget(index);
    m_pages->removeWidget(page);
    m_toolBars->removeWidget(m_toolBars->widget(index)); // before the tab: the next one is shown by its place
    m_tabBar->removeTab(index);
    delete page; // with its toolbar
}

void ClusterWindowFrame::closeCurrentTab()
{
    closeTab(m_tabBar->currentIndex());
}

void ClusterWindowFrame::currentTabChanged(int index)
{
    if (index < 0 || index >= m_pages->count()) {
        return;
    }
    m_toolBars->setCurrentIndex(index);
    m_pages->setCurrentIndex(index);
    pageTitleChanged(currentPage());
    updateCommands();
    if (isActiveWindow()) {
        pageBecomesMain();
    }
}

void ClusterWindowFrame::tabMoved(int from, int to)
{
    QWidget *page = m_pages->widget(from);
    QWidget *toolBar = m_toolBars->widget(from);
    m_pages->removeWidget(page);
    m_toolBars->removeWidget(toolBar);
    m_pages->insertWidget(to, page);
    m_toolBars->insertWidget(to, toolBar);
    m_pages->setCurrentIndex(m_tabBar->currentIndex());
    m_toolBars->setCurrentIndex(m_tabBar->currentIndex());
}

void ClusterWindowFrame::pageTitleChanged(MainWindowController *page)
{
    const int index = m_pages->indexOf(page);
    m_tabBar->setTabText(index, display_text::withoutMnemonics(page->tabTitle()));
    m_tabBar->setTabToolTip(index, display_text::toolTip(page->placeDescription()));
    if (page == currentPage()) {
        setWindowTitle(display_text::name(page->title()));
    }
}

void ClusterWindowFrame::pageBecomesMain()
{
    Q_EMIT becameMain();
    if (MainWindowController *page = currentPage()) {
        page->windowDidBecomeMain();
    }
}

void ClusterWindowFrame::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        pageBecomesMain();
    }
}

void ClusterWindowFrame::closeEvent(QCloseEvent *event)
{
    saveFrame();
    event->accept();
}

} // namespace tidewright
