// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/MainWindowController.h"

#include "app/content/DestinationView.h"
#include "app/content/OtherKinds.h"
#include "app/content/PrimaryContentController.h"
#include "app/content/SidebarController.h"
#include "app/kubeconfig/KubeConfigList.h"
#include "app/state/KubeSplitViewController.h"
#include "app/toolbar/ClusterToolBar.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/process/Environment.h"
#include "platform/settings/UserDefaults.h"
#include "pods/console/ConsoleViewController.h"
#include "pods/console/PodConsoleSplitViewController.h"
#include "pods/table/PodController.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/listing/LoadProblem.h"
#include "resources/table/SharedContentViewController.h"
#include "resources/widgets/ContextBand.h"

#include <QDesktopServices>
#include <QSplitter>
#include <QVBoxLayout>

namespace tidewright {

namespace {

KubeSplitViewController *stateThatReads(
    const QString &kubeConfigPath, UserKubeConfig &userFile, QObject *parent)
{
    auto *state = new KubeSplitViewController(userFile, parent);
    state->readAhead(kubeConfigPath);
    return state;
}

} // namespace

MainWindowController::MainWindowController(
    UserKubeConfig &userFile, const QString &readAhead, QWidget *parent)
    : QWidget(parent)
    , m_title(QStringLiteral("Tidewright"))
    , m_tabTitle(m_title)
    , m_state(stateThatReads(readAhead, userFile, this))
    , m_console(new ConsoleViewController(this))
    , m_content(new PrimaryContentController(*m_state))
    , m_sidebar(new SidebarController)
    , m_otherKinds(new OtherKinds(*m_state, *m_content, *m_sidebar, this))
    , m_toolBar(new ClusterToolBar(*m_state, *m_content))
    , m_band(new ContextBand)
    , m_dispatcher(std::make_unique<ActionDispatcher>(*m_content, *m_state))
{
    m_state->setConsole(m_console);
    m_console->setKubeSplitViewController(m_state);
    buildLayout();
    connectParts();
    m_sidebar->selectFirst();
}

MainWindowController::~MainWindowController()
{
    // The views go before the state that they refer to.
    delete m_toolBar;
    delete m_content;
}

void MainWindowController::buildLayout()
{
    auto *split = new QSplitter(Qt::Horizontal);
    split->addWidget(m_sidebar);
    split->addWidget(
        new PodConsoleSplitViewController(new DestinationView(*m_content, *m_state), m_console->view()));
    split->setStretchFactor(1, 1);
    split->setSizes({m_sidebar->sizeHint().width(), 1000});
    split->setCollapsible(1, false);
    split->setHandleWidth(1);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_band);
    layout->addWidget(split, 1);
}

void MainWindowController::connectParts()
{
    connect(
        m_sidebar, &SidebarController::itemSelected, m_content, &PrimaryContentController::selectSidebarItem);
    connect(m_content, &PrimaryContentController::sidebarItemWanted, m_sidebar, &SidebarController::select);
    connect(m_state, &KubeSplitViewController::namespaceChosen, this, &MainWindowController::updateTitles);
    connect(
        m_state, &KubeSplitViewController::clusterSettingsChanged, m_otherKinds, &OtherKinds::followContext);
    connect(m_state, &KubeSplitViewController::clusterSettingsChanged, m_content,
        &PrimaryContentController::clusterSettingsChanged);
    connect(m_content, &PrimaryContentController::obstacleFound, m_sidebar, &SidebarController::setObstacle);
    connect(m_state, &KubeSplitViewController::contextLeft, m_content, &PrimaryContentController::clear);
    connect(m_state, &WindowState::loadingHintChanged, this, &MainWindowController::commandStateChanged);
    connect(m_state, &WindowState::accessChanged, this, &MainWindowController::commandStateChanged);
    connect(this, &MainWindowController::commandStateChanged, this, &MainWindowController::reviewAccess);
    connect(m_state, &WindowState::loadingHintChanged, this, &MainWindowController::titleChanged);
    connect(m_state, &KubeSplitViewController::namespaceChosen, m_console,
        &ConsoleViewController::showDestination);
    connect(m_console, &ConsoleViewController::linkOpened, this, [this](const QUrl &url) {
        if (!QDesktopServices::openUrl(url)) {
            m_console->addEntry(QString(), QString(),
                makeConsoleError(tr("No program could be found that opens %1.").arg(url.toString())));
        }
    });
    connect(m_state, &KubeSplitViewController::contextListChanged, this,
        &MainWindowController::showContextPolicy);
    connect(&ContextPolicies::shared(), &ContextPolicies::changed, this,
        &MainWindowController::showContextPolicy);
    connect(m_content, &PrimaryContentController::shownTableChanged, this,
        &MainWindowController::commandStateChanged);
    for (SharedContentViewController *table : m_content->tables()) {
        connectTable(table);
    }
    connect(m_content, &PrimaryContentController::tableAdded, this, &MainWindowController::connectTable);
}

void MainWindowController::connectTable(SharedContentViewController *table)
{
    connect(table, &SharedContentViewController::selectionChanged, this,
        &MainWindowController::commandStateChanged);
    connect(table, &SharedContentViewController::loadingChanged, this,
        &MainWindowController::commandStateChanged);
    connect(
        table, &SharedContentViewController::filterChanged, this, &MainWindowController::commandStateChanged);
    connect(
        table, &SharedContentViewController::loadFinished, this, &MainWindowController::commandStateChanged);
    if (auto *pods = qobject_cast<PodController *>(table)) {
        connect(pods, &PodController::selectedContainersChanged, this,
            &MainWindowController::commandStateChanged);
    }
}

QString MainWindowController::defaultKubeConfigPath()
{
    return withTildeExpanded(
        userDefaults().string(QStringLiteral("defaultKubeConfigPath")).value_or(QString()));
}

void MainWindowController::windowDidLoad()
{
    writeDiagnostic(QString(QLatin1String("windoe did load ") + m_kubeConfigPath).trimmed());
    if (m_kubeConfigPath.isEmpty()) {
        m_kubeConfigPath = defaultKubeConfigPath();
    }
}

ClusterToolBar &MainWindowController::toolBar() const
{
    return *m_toolBar;
}

void MainWindowController::runAction(const std::shared_ptr<CustomActionItem> &item)
{
    m_lastAction = item;
    Q_EMIT commandStateChanged();
    m_dispatcher->dispatchAction(item);
}

void MainWindowController::runLastAction()
{
    if (m_lastAction) {
        runAction(m_lastAction);
    }
}

void MainWindowController::windowDidBecomeMain()
{
    showContextPolicy(); // another instance of the program may have changed it
    m_state->windowDidBecomeMain();
    if (SharedContentViewController *table = m_content->shownTable()) {
        table->userIsBack();
    }
}

void MainWindowController::showContextPolicy()
{
    const ContextKey context = shownContext(*m_state);
    m_band->setContext(context);
    m_toolBar->showAccessBadge(context);
    Q_EMIT commandStateChanged();
}

/// Rights are asked for once the user has what he waits for, and again, when they are old, as he goes on.
void MainWindowController::reviewAccess()
{
    const SharedContentViewController *table = m_content->shownTable();
    const bool hasAnswer = table && !table->isListing() && table->rowsAsOf().isValid()
        && (!table->hasFailed() || !kindObstacle(table->problem()).isEmpty());
    if (hasAnswer) {
        m_state->reviewAccess();
    }
}

void MainWindowController::updateTitles(const QString &nameSpace)
{
    const auto titled = [&nameSpace](const QString &what) -> QString {
        return nameSpace.isEmpty() ? what : QString(what + QLatin1String(" : ") + nameSpace);
    };
    m_tabTitle = m_configTitle.isEmpty() ? nameSpace : titled(m_configTitle);
    m_title = m_configTitle.isEmpty() && !m_kubeConfigPath.isEmpty()
        ? titled(kubeconfig_list::shown(m_kubeConfigPath))
        : m_tabTitle;
    Q_EMIT titleChanged();
}

QString MainWindowController::placeDescription() const
{
    QStringList lines;
    if (!m_configTitle.isEmpty()) {
        lines.append(m_configTitle);
    }
    if (!m_state->currentContext().isEmpty()) {
        lines.append(ChangePlace(*m_state).text());
    }
    if (const QString hint = m_state->loadingHint(); !hint.isEmpty()) {
        lines.append(firstLine(hint));
    }
    return lines.isEmpty() ? m_title : lines.join(QLatin1Char('\n'));
}

void MainWindowController::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Coming back from another tab is not a new appearance: the tab keeps the context that was chosen in it.
    if (!m_appeared) {
        m_appeared = true;
        m_state->viewWillAppear(m_kubeConfigPath);
    }
}

} // namespace tidewright
