// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/SharedContentViewController.h"

#include "platform/desktop/Diagnostics.h"
#include "platform/text/DisplayText.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/changes/RowDeletion.h"
#include "resources/forwards/ForwardPort.h"
#include "resources/kinds/Columns.h"
#include "resources/listing/LoadProblem.h"
#include "resources/loading/TableStatus.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/table/RelatedObjects.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/TablePreviews.h"
#include "resources/table/TableStatusBar.h"
#include "resources/usage/UsageWatch.h"
#include "resources/widgets/WindowSight.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QVBoxLayout>
#include <QWindow>

namespace tidewright {

namespace {

/// Also told by the General preferences and the manual; the pauses in TableLoader.cpp go by it.
constexpr std::chrono::seconds refreshInterval(30);
constexpr std::chrono::seconds reloadDelay(1);
constexpr std::chrono::milliseconds typingPause(500);
constexpr std::chrono::milliseconds progressDelay(300); // a quick refresh does not flicker

ResourceKind withNamespaceColumn(ResourceKind kind)
{
    if (kind.namespaced) {
        kind.columns.insert(kind.columns.begin() + 1, namespaceColumn());
    }
    return kind;
}

} // namespace

SharedContentViewController::SharedContentViewController(
    ResourceKind kind, WindowState &window, QWidget *parent)
    : QWidget(parent)
    , m_window(window)
    , m_store(new RowStore(withNamespaceColumn(std::move(kind)), this))
    , m_arranged(new ArrangingModel(*m_store, this))
    , m_loader(new TableLoader(*m_store, window, this))
    , m_usage(new UsageWatch(*m_store, window, this))
    , m_tableView(new ResourceTableView(*m_arranged))
    , m_statusBar(new TableStatusBar)
    , m_commands(new RowCommands(*m_tableView, m_window, this->kind(), *this))
{
    m_tableView->setAccessibleName(this->kind().tableName);
    for (int index = 0; index < m_arranged->columnCount(); ++index) {
        const Column &column = this->kind().columns[static_cast<std::size_t>(index)];
        m_tableView->setColumnWidth(index, column.width);
        m_tableView->setColumnHidden(index, column.hidden);
    }
    buildLayout();
    m_timer.setObjectName(QStringLiteral("refreshTimer"));
    m_timer.setInterval(refreshInterval);
    connect(&m_timer, &QTimer::timeout, this, &SharedContentViewController::refresh);
    connectParts();
    updateStatus();
}

SharedContentViewController::~SharedContentViewController() = default;

void SharedContentViewController::buildLayout()
{
    m_progress = new QProgressBar;
    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);
    m_progress->setFixedHeight(3);
    QSizePolicy kept = m_progress->sizePolicy();
    kept.setRetainSizeWhenHidden(true);
    m_progress->setSizePolicy(kept);
    m_progress->hide();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_progress);
    layout->addWidget(m_tableView, 1);
    layout->addWidget(m_statusBar);
    setFocusProxy(m_tableView);
}

void SharedContentViewController::connectParts()
{
    connect(m_loader, &TableLoader::loadingChanged, this, &SharedContentViewController::showLoading);
    m_progressDelay.setSingleShot(true);
    m_progressDelay.setInterval(progressDelay);
    connect(&m_progressDelay, &QTimer::timeout, m_progress, &QWidget::show);
    m_labelDelay.setObjectName(QStringLiteral("labelDelay"));
    m_labelDelay.setSingleShot(true);
    m_labelDelay.setInterval(typingPause);
    connect(&m_labelDelay, &QTimer::timeout, this, &SharedContentViewController::completeFilter);
    connect(m_loader, &TableLoader::rowsChanged, this, [this] {
        updateStatus();
        rowsChanged();
        m_commands->selectWanted();
    });
    connect(&m_window, &WindowState::loadingHintChanged, this, [this] {
        updateStatus();
        updateUsage();
    });
    connect(m_tableView, &ResourceTableView::columnsChanged, this, &SharedContentViewController::updateUsage);
    connect(m_usage, &UsageWatch::problemChanged, this,
        [this] { m_tableView->setUsageProblem(m_usage->problem()); });
    connect(m_loader, &TableLoader::finished, this, [this] {
        updateStatus();
        m_commands->giveUpWanted();
        Q_EMIT loadFinished();
    });
    connect(m_loader, &TableLoader::followingChanged, this, &SharedContentViewController::updateStatus);
    connect(m_loader, &TableLoader::otherTitles, this, &SharedContentViewController::otherTitles);
    connect(&WindowSight::shared(), &WindowSight::changed, this, &SharedContentViewController::updateWatched);
    connect(m_statusBar, &TableStatusBar::stopRequested, this, &SharedContentViewController::stopLoading);
    connect(m_commands, &RowCommands::changed, this, &SharedContentViewController::reloadSoon);
    connect(m_commands, &RowCommands::otherTableWanted, this, &SharedContentViewController::otherTableWanted);
    connect(m_tableView, &ResourceTableView::contextMenuRequested, this,
        &SharedContentViewController::showContextMenu);
    connect(m_tableView, &ResourceTableView::opened, this, &SharedContentViewController::showQuickLookPanel);
    connect(m_tableView->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        updateStatus();
        if (m_tableView->selectedRowCount() > 0) {
            m_commands->select({});
        }
        Q_EMIT selectionChanged();
        m_commands->selectionChanged();
    });
}

void SharedContentViewController::setLoading(bool loading)
{
    m_otherWork += loading ? 1 : -1;
    showLoading();
}

void SharedContentViewController::showLoading()
{
    const bool loading = isLoading();
    if (loading) {
        m_progressDelay.start();
    } else {
        m_progressDelay.stop();
        m_progress->hide();
    }
    updateStatus();
    Q_EMIT loadingChanged(loading);
}

void SharedContentViewController::setFilter(const QString &text)
{
    m_arranged->setFilter(text);
    const QString labels = m_arranged->rowFilter().labelSelector();
    if (labels.isEmpty()) {
        completeFilter();
    } else if (labels != m_loader->labelSelector()) {
        m_labelDelay.start();
    } else {
        m_labelDelay.stop();
    }
    updateStatus();
    updateUsage();
    Q_EMIT filterChanged();
}

void SharedContentViewController::completeFilter()
{
    m_labelDelay.stop();
    if (const QString labels = m_arranged->rowFilter().labelSelector(); labels != m_loader->labelSelector()) {
        m_commands->forgetPreviews();
        m_loader->setLabelSelector(labels);
        if (!isHidden()) { // else it loads when it is shown
            load({});
        }
    }
}

void SharedContentViewController::setFilterField(QLineEdit *field)
{
    m_filterField = field;
}

/// Only a table of all namespaces says which one a row is of, unless the user hides it.
void SharedContentViewController::showNamespaces()
{
    const bool shown = kind().namespaced && m_window.currentNamespace() == allNamespaces;
    m_arranged->setHomeNamespace(shown ? QString() : m_window.currentNamespace());
    if (std::exchange(m_showsNamespaces, shown) != shown) {
        m_tableView->setColumnHidden(kind().indexOf(namespaceColumnId), !shown);
    }
}

void SharedContentViewController::load(const LoadRequest &request)
{
    showNamespaces();
    m_loader->load(request);
    updateUsage();
    if (request.logged) {
        m_usage->askAgain();
    }
    updateStatus();
}

void SharedContentViewController::reload()
{
    if (m_loader->canLoad()) {
        load({.logged = true});
    } else {
        m_window.retryLoading();
    }
}

void SharedContentViewController::userIsBack()
{
    m_loader->userIsBack();
    updateStatus();
}

void SharedContentViewController::clear()
{
    m_commands->forgetPreviews();
    m_loader->clear();
    m_usage->clear();
    showNamespaces();
}

void SharedContentViewController::clearAndReload(const LoadRequest &request)
{
    clear();
    load(request);
}

void SharedContentViewController::reloadContent()
{
    reload();
}

void SharedContentViewController::refresh()
{
    m_loader->refresh();
    updateStatus();
}

void SharedContentViewController::updateStatus()
{
    const TableFacts facts{.shown = m_arranged->rowCount(),
        .all = static_cast<int>(tableItems().size()),
        .selected = m_tableView->selectedRowCount(),
        .filter = filter(),
        .labels = m_loader->labelSelector(),
        .filterNote = filterNote(),
        .nameSpace = m_window.currentNamespace(),
        .hint = m_window.loadingHint(),
        .problem = problem(),
        .hasFailed = m_loader->hasFailed(),
        .isLoading = isListing(),
        .hasBeenLoaded = rowsAsOf().isValid()};
    m_arranged->setListed(
        !m_window.liveUpdates() || m_loader->following() == TableLoader::Following::Refused);
    m_statusBar->setCounts(countsText(kind(), facts));
    m_statusBar->setAsOf(facts.hasFailed ? QDateTime() : rowsAsOf());
    m_statusBar->setFollowing(m_loader->following(), m_loader->followingReason());
    m_statusBar->setLoadingSince(isListing() ? m_loader->loadingSince() : m_window.waitingSince());
    m_statusBar->setWarning(facts.shown > 0 ? firstLine(facts.problem) : QString(), facts.problem);
    const QString reason = facts.shown > 0 ? QString() : emptyReason(kind(), facts);
    m_tableView->setEmptyText(firstLine(reason), reason.section(QLatin1Char('\n'), 1));
}

void SharedContentViewController::selectFilter()
{
    if (m_filterField) {
        m_filterField->setFocus(Qt::ShortcutFocusReason);
        m_filterField->selectAll();
    }
}

QString SharedContentViewController::obstacleTo(Deed deed) const
{
    constexpr int mostByName = 100; // this is asked with every change of the selection
    return deedObstacle(
        m_window, kind(), deed, chosenCount() <= mostByName ? chosenObjects() : ObjectNames());
}

void SharedContentViewController::enableFor(Deed deed, QAction &action, bool isPossible) const
{
    const QString reason = obstacleTo(deed);
    action.setEnabled(isPossible && reason.isEmpty());
    // Without a tool tip an action shows its text as one, and takes a name in it for mark-up.
    const QString text = action.text().replace(QLatin1String("&&"), QLatin1String("&"));
    action.setToolTip(display_text::toolTip(reason.isEmpty() ? text : reason));
}

void SharedContentViewController::reloadSoon()
{
    QTimer::singleShot(reloadDelay, this, [this] { loadContent(false); });
}

bool SharedContentViewController::canName(const ObjectNames &objects, const QString &notDone) const
{
    return allowsNames(m_window, kind(), objects, notDone);
}

bool SharedContentViewController::canChange(const ObjectNames &objects, const QString &notDone) const
{
    return allowsChange(m_window, kind(), objects, notDone);
}

QString SharedContentViewController::noLogs()
{
    return QStringLiteral("No logs were opened");
}

QString SharedContentViewController::viewLogsObstacle() const
{
    if (!kind().logTarget) {
        return tr("%1 have no logs. Choose pods, deployments, jobs or services.").arg(kind().tableName);
    }
    return chosenCount() == 0 ? tr("Select a %1 first.").arg(kind().humanReadableResourceName) : QString();
}

void SharedContentViewController::viewLogs()
{
    const ObjectNames objects = chosenObjects();
    if (!kind().logTarget || objects.isEmpty() || !canName(objects, noLogs())) {
        return;
    }
    std::vector<ContainerPair> containers;
    for (const ObjectName &object : objects) {
        containers.push_back({*kind().logTarget + object.name, allContainers, object.nameSpace});
    }
    m_window.openLogs(containers, LogScope::Following);
}

QString SharedContentViewController::forwardPortObstacle() const
{
    if (!canForwardTo(kind())) {
        return tr("Choose a pod, service, deployment or stateful set first.");
    }
    return chosenCount() == 1 ? QString()
                              : tr("Select a single %1 first.").arg(kind().humanReadableResourceName);
}

void SharedContentViewController::forwardPort()
{
    if (const ObjectNames objects = chosenObjects(); forwardPortObstacle().isEmpty() && objects.size() == 1) {
        tidewright::forwardPort(*this, m_window, kind(), objects.first());
    }
}

void SharedContentViewController::replaceRow(const QModelIndex &index, const Row &row)
{
    const std::pair<std::size_t, Row> changed(m_arranged->positionOf(index.row()), row);
    m_store->replaceRows(std::span(&changed, 1));
}

void SharedContentViewController::stopLoading()
{
    m_loader->stop();
    m_window.stopWaiting();
}

void SharedContentViewController::showContextMenu(const QPoint &position)
{
    const bool hasRow = chosenCount() > 0;
    QMenu menu;
    menu.setToolTipsVisible(true);
    const auto add = [&](const QString &title, auto slot, bool enabled) {
        QAction *action = menu.addAction(title, this, slot);
        action->setEnabled(enabled);
        return action;
    };
    add(QStringLiteral("Copy Name"), &SharedContentViewController::copyName, hasRow);
    add(QStringLiteral("Quick Look"), &SharedContentViewController::showQuickLookPanel, hasRow);
    if (kind().logTarget) {
        enableFor(Deed::ReadLogs,
            *add(QStringLiteral("View Logs"), &SharedContentViewController::viewLogs, hasRow), hasRow);
    }
    if (kind().pods == ResourceKind::Pods::BySelector) {
        enableFor(Deed::ReadLogs,
            *add(tr("View Logs of All Pods"), &SharedContentViewController::viewLogsOfAllPods, hasRow),
            hasRow);
    }
    if (kind().pods != ResourceKind::Pods::None) {
        add(QStringLiteral("Show Pods"), &SharedContentViewController::showPods,
            showPodsObstacle().isEmpty());
    }
    if (kind().hasOwner) {
        add(QStringLiteral("Show Owner"), &SharedContentViewController::showOwner,
            showOwnerObstacle().isEmpty());
    }
    QAction *edit = add(editTitle(m_window), &SharedContentViewController::editConfiguration, hasRow);
    if (changeObstacle(m_window).isEmpty()) { // else it only shows the object
        enableFor(Deed::Edit, *edit, hasRow);
    }
    if (canForwardTo(kind())) {
        enableFor(Deed::ForwardPort,
            *menu.addAction(tr("Forward Port…"), this, &SharedContentViewController::forwardPort),
            forwardPortObstacle().isEmpty());
    }
    extendContextMenu(menu);
    menu.addSeparator();
    enableFor(Deed::Delete, *add(QStringLiteral("Delete…"), &SharedContentViewController::deleteRows, hasRow),
        hasRow);
    menu.addSeparator();
    add(QStringLiteral("Reload"), &SharedContentViewController::reloadContent, true);
    menu.exec(position);
}

void SharedContentViewController::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_timer.isActive()) {
        m_timer.start();
    }
    // Whoever walks through the sidebar with the keyboard wants to stay there, and whoever had minimised the
    // window (a spontaneous event) where they were.
    const QWidget *focused = window()->focusWidget();
    if (event->spontaneous()) {
        updateWatched();
        return;
    }
    if (!focused || !focused->property("keepsKeyboardFocus").toBool()) {
        m_tableView->setFocus();
    }
    updateWatched();
}

void SharedContentViewController::updateWatched()
{
    setWatched(isVisible() && WindowSight::shared().sees(window()->windowHandle()));
}

void SharedContentViewController::setWatched(bool watched)
{
    m_isWatched = watched;
    m_loader->setWatched(watched);
    updateUsage();
}

void SharedContentViewController::updateUsage()
{
    m_usage->setWanted(m_isWatched && m_loader->canLoad() && m_tableView->needsUsage());
}

void SharedContentViewController::hideEvent(QHideEvent *event)
{
    m_timer.stop();
    setWatched(false);
    m_commands->select({});
    QWidget::hideEvent(event);
}

void SharedContentViewController::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && canStopLoading()) {
        stopLoading();
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace tidewright
