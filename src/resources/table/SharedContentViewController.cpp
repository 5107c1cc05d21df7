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
#include "resources/table/ResourceTableView.h"
#include "resources/table/TablePreviews.h"
#include "resources/table/TableStatusBar.h"
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

constexpr std::chrono::seconds refreshInterval(30);
constexpr std::chrono::seconds reloadDelay(1);
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
    , m_tableView(new ResourceTableView(*m_arranged))
    , m_statusBar(new TableStatusBar)
    , m_previews(std::make_unique<TablePreviews>(*m_tableView, m_window, this->kind()))
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
    connect(m_loader, &TableLoader::rowsChanged, this, [this] {
        updateStatus();
        rowsChanged();
    });
    connect(&m_window, &WindowState::loadingHintChanged, this, &SharedContentViewController::updateStatus);
    connect(m_loader, &TableLoader::finished, this, [this] {
        updateStatus();
        Q_EMIT loadFinished();
    });
    connect(m_loader, &TableLoader::followingChanged, this, &SharedContentViewController::updateStatus);
    connect(&WindowSight::shared(), &WindowSight::changed, this, &SharedContentViewController::updateWatched);
    connect(m_statusBar, &TableStatusBar::stopRequested, this, &SharedContentViewController::stopLoading);
    connect(m_tableView, &ResourceTableView::contextMenuRequested, this,
        &SharedContentViewController::showContextMenu);
    connect(m_tableView->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        updateStatus();
        Q_EMIT selectionChanged();
        PreviewPanel::shared().selectionChanged(*m_previews);
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
    updateStatus();
    Q_EMIT filterChanged();
}

void SharedContentViewController::setFilterField(QLineEdit *field)
{
    m_filterField = field;
}

/// Only a table of all namespaces says which one a row is of, unless the user hides it.
void SharedContentViewController::showNamespaces()
{
    const bool shown = kind().namespaced && m_window.currentNamespace() == allNamespaces;
    if (std::exchange(m_showsNamespaces, shown) != shown) {
        m_tableView->setColumnHidden(kind().indexOf(namespaceColumnId), !shown);
    }
}

void SharedContentViewController::load(const LoadRequest &request)
{
    showNamespaces();
    m_loader->load(request);
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
    m_previews->forget();
    m_loader->clear();
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

int SharedContentViewController::chosenCount() const
{
    return m_tableView->clickedRowIsGone() ? 0
        : m_tableView->clickedRow() >= 0   ? 1
                                           : m_tableView->selectedRowCount();
}

ObjectName SharedContentViewController::objectAt(int row) const
{
    const Row &item = m_arranged->arrangedRow(row);
    return {item->nameSpace.isEmpty() ? m_window.currentNamespace() : item->nameSpace, item->name};
}

ObjectNames SharedContentViewController::chosenObjects() const
{
    if (m_tableView->clickedRowIsGone()) {
        return {}; // a refresh removed it while its menu was open
    }
    if (const int clicked = m_tableView->clickedRow(); clicked >= 0) {
        return {objectAt(clicked)};
    }
    return selectedObjects();
}

ObjectNames SharedContentViewController::selectedObjects() const
{
    ObjectNames objects;
    for (const int row : m_tableView->selectedRowsInOrder()) {
        objects.append(objectAt(row));
    }
    return objects;
}

void SharedContentViewController::selectFilter()
{
    if (m_filterField) {
        m_filterField->setFocus(Qt::ShortcutFocusReason);
        m_filterField->selectAll();
    }
}

void SharedContentViewController::copyName()
{
    const ObjectNames objects = chosenObjects();
    if (objects.isEmpty()) {
        return;
    }
    const QString &name = objects.first().name;
    if (display_text::actsWhenPasted(name)) {
        refuseChange(m_window, QStringLiteral("The name was not copied"),
            tr("it holds control characters, which a terminal takes for keys."));
        return;
    }
    QApplication::clipboard()->setText(name);
}

void SharedContentViewController::editConfiguration()
{
    const ObjectNames objects = chosenObjects();
    if (objects.isEmpty()) {
        return;
    }
    if (!changeObstacle(m_window).isEmpty()) {
        showQuickLookPanel();
        return;
    }
    if (!canName(objects.first(1), QStringLiteral("Nothing was edited"))) {
        return;
    }
    const ObjectName &object = objects.first();
    const QStringList arguments{QStringLiteral("kubectl"), QStringLiteral("edit"), QStringLiteral("-n"),
        object.nameSpace, kind().resourceName, object.name, QStringLiteral("-o"), QStringLiteral("yaml")};
    const ChangePlace place(m_window);
    confirmWhereProtected(this, place.key(),
        {.title = QStringLiteral("Confirm Edit"),
            .message = QStringLiteral("Are you sure you want to edit the %1 \"%2\"?")
                           .arg(kind().humanReadableResourceName, object.name),
            .yes = QStringLiteral("Edit"),
            .accessory = confirmationDetails(place.text(kind(), object.nameSpace))},
        [self = QPointer(this), place, arguments](bool confirmed) {
            if (self && confirmed) {
                self->edit(place, arguments);
            }
        });
}

void SharedContentViewController::edit(const ChangePlace &place, const QStringList &arguments)
{
    if (!place.isStillShown()) {
        refuseMovedChange(m_window, QStringLiteral("Nothing was edited"));
        return;
    }
    m_window.startExternalEdit(arguments, [self = QPointer(this)] {
        if (self) {
            self->reloadSoon();
        }
    });
}

void SharedContentViewController::enableChange(QAction &action, bool enabled) const
{
    const QString reason = changeObstacle(m_window);
    action.setEnabled(enabled && reason.isEmpty());
    action.setToolTip(display_text::toolTip(reason));
}

void SharedContentViewController::deleteRows()
{
    confirmAndDelete(*this, m_window, kind(), chosenObjects(), [self = QPointer(this)] {
        if (self) {
            self->reloadSoon();
        }
    });
}

void SharedContentViewController::reloadSoon()
{
    QTimer::singleShot(reloadDelay, this, [this] { loadContent(false); });
}

void SharedContentViewController::showQuickLookPanel()
{
    const int clicked = m_tableView->clickedRow();
    if (clicked >= 0 && !m_tableView->clickedRowIsSelected()) {
        m_tableView->selectRow(clicked);
    }
    PreviewPanel::shared().present(*m_previews, *this);
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
    m_window.openLogs(containers);
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
        add(QStringLiteral("View Logs"), &SharedContentViewController::viewLogs, hasRow);
    }
    add(editTitle(m_window), &SharedContentViewController::editConfiguration, hasRow);
    if (canForwardTo(kind())) {
        enableChange(*menu.addAction(tr("Forward Port…"), this, &SharedContentViewController::forwardPort),
            forwardPortObstacle().isEmpty());
    }
    extendContextMenu(menu);
    menu.addSeparator();
    enableChange(*add(QStringLiteral("Delete…"), &SharedContentViewController::deleteRows, hasRow), hasRow);
    menu.addSeparator();
    add(QStringLiteral("Reload"), &SharedContentViewController::reloadContent, true);
    menu.exec(position);
}

void SharedContentViewController::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Whoever walks through the sidebar with the keyboard wants to stay there.
    const QWidget *focused = window()->focusWidget();
    if (!focused || !focused->property("keepsKeyboardFocus").toBool()) {
        m_tableView->setFocus();
    }
    if (!m_timer.isActive()) {
        m_timer.start();
    }
    updateWatched();
}

void SharedContentViewController::updateWatched()
{
    m_loader->setWatched(isVisible() && WindowSight::shared().sees(window()->windowHandle()));
}

void SharedContentViewController::hideEvent(QHideEvent *event)
{
    m_timer.stop();
    m_loader->setWatched(false);
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
