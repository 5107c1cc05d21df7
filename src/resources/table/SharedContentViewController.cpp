// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/SharedContentViewController.h"

#include "platform/desktop/Diagnostics.h"
#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ClusterChange.h"
#include "resources/listing/LoadProblem.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/table/ResourceTableView.h"
#include "resources/changes/RowDeletion.h"
#include "resources/table/TablePreviews.h"
#include "resources/table/TableStatusBar.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QProgressBar>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr std::chrono::seconds refreshInterval(30);
constexpr std::chrono::seconds reloadDelay(1);
constexpr std::chrono::milliseconds progressDelay(300); // a quick refresh does not flicker

} // namespace

SharedContentViewController::SharedContentViewController(
    ResourceKind kind, WindowState &window, QWidget *parent)
    : QWidget(parent)
    , m_window(window)
    , m_model(new ResourceTableModel(std::move(kind), this))
    , m_arranged(new ArrangingModel(*m_model, this))
    , m_pipeline(new ListingPipeline(*m_model, this))
    , m_tableView(new ResourceTableView(*m_arranged))
    , m_statusBar(new TableStatusBar)
    , m_previews(std::make_unique<TablePreviews>(*m_tableView, m_window, this->kind()))
{
    m_tableView->setAccessibleName(this->kind().tableName);
    for (int index = 0; index < m_model->columnCount(); ++index) {
        const Column &column = this->kind().columns[static_cast<std::size_t>(index)];
        m_tableView->setColumnWidth(index, column.width);
        m_tableView->setColumnHidden(index, column.hidden);
    }
    buildLayout();
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
    connect(m_pipeline, &ListingPipeline::loadingChanged, this, &SharedContentViewController::showLoading);
    m_progressDelay.setSingleShot(true);
    m_progressDelay.setInterval(progressDelay);
    connect(&m_progressDelay, &QTimer::timeout, m_progress, &QWidget::show);
    connect(m_pipeline, &ListingPipeline::rowsChanged, this, [this] {
        updateStatus();
        rowsChanged();
    });
    connect(&m_window, &WindowState::loadingHintChanged, this, &SharedContentViewController::updateStatus);
    connect(m_pipeline, &ListingPipeline::finished, this, &SharedContentViewController::applyOutcome);
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

void SharedContentViewController::reload()
{
    if (canLoad()) {
        loadContent(true);
    } else {
        m_window.retryLoading();
    }
}

/// Without a namespace kubectl could only complain, and while a context is being switched it would list the
/// old namespace in the new context. The table says so in place of rows.
bool SharedContentViewController::canLoad() const
{
    return !m_window.currentNamespace().isEmpty() && m_window.loadingHint().isEmpty();
}

void SharedContentViewController::reloadLogging(bool logToConsole)
{
    loadContent(logToConsole);
}

void SharedContentViewController::clear()
{
    m_rowsAsOf = QDateTime();
    m_problem.clear();
    m_loadFailed = false;
    m_previews->forget();
    m_pipeline->clear();
    rowsChanged();
    updateStatus();
}

void SharedContentViewController::clearAndReload(bool logToConsole, int niceness)
{
    clear();
    m_niceness = niceness;
    loadContent(logToConsole);
    m_niceness = 0;
}

void SharedContentViewController::reloadContent()
{
    reload();
}

void SharedContentViewController::loadContent(bool logToConsole)
{
    startLoad(logToConsole, false);
}

void SharedContentViewController::refresh()
{
    m_model->timePasses();
    if (!m_pipeline->hasUnattendedLoad()) {
        startLoad(false, true);
    }
}

void SharedContentViewController::startLoad(bool logToConsole, bool unattended)
{
    if (kind().listWord.isEmpty()) {
        writeDiagnostic(QStringLiteral("loadContent() requires override"));
        return;
    }
    if (!canLoad()) {
        updateStatus();
        return;
    }
    const std::shared_ptr<Shell> shell = m_window.kubeCtl().makeShell();
    shell->niceness = m_niceness;
    m_pipeline->load(shell, listingArguments(), logToConsole, unattended);
}

QStringList SharedContentViewController::listingArguments() const
{
    return QStringList{QStringLiteral("kubectl"), QStringLiteral("get"), kind().listWord,
        contextArgument(m_window.currentContext()), namespaceArgument(m_window.currentNamespace())};
}

void SharedContentViewController::applyOutcome(const LoadOutcome &outcome)
{
    if (outcome.stopped) {
        m_problem = tr("Loading was stopped.");
        m_loadFailed = false;
        if (!tableItems().empty()) {
            m_problem += QLatin1Char('\n') + tr("The rows are those of an earlier load.");
        }
    } else {
        m_rowsAsOf = outcome.startedAt;
        m_problem = loadProblem(outcome);
        m_loadFailed = !m_problem.isEmpty() && tableItems().empty();
    }
    updateStatus();
    Q_EMIT loadFinished();
}

void SharedContentViewController::updateStatus()
{
    const int shown = m_arranged->rowCount();
    const auto all = static_cast<int>(tableItems().size());
    const QLocale locale;
    const QString noun = kind().tableName.toLower();
    QString counts = shown == all
        ? tr("%1 %2").arg(locale.toString(all), all == 1 ? kind().humanReadableResourceName : noun)
        : tr("%1 of %2 %3").arg(locale.toString(shown), locale.toString(all), noun);
    if (const int selected = m_tableView->selectedRowCount(); selected > 0) {
        counts += QStringLiteral("  ·  ") + tr("%1 selected").arg(locale.toString(selected));
    }
    // After a failure nobody knows how many there are.
    m_statusBar->setCounts(m_loadFailed || !m_rowsAsOf.isValid() ? QString() : counts);
    m_statusBar->setAsOf(m_loadFailed ? QDateTime() : m_rowsAsOf);
    m_statusBar->setLoadingSince(
        m_pipeline->isLoading() ? m_pipeline->loadingSince() : m_window.waitingSince());
    m_statusBar->setWarning(shown > 0 ? firstLine(m_problem) : QString(), m_problem);
    const QString reason = shown > 0 ? QString() : emptyReason();
    m_tableView->setEmptyText(firstLine(reason), reason.section(QLatin1Char('\n'), 1));
}

/// Why there is nothing to see: a sentence, and further lines of details.
QString SharedContentViewController::emptyReason() const
{
    const QString noun = kind().tableName.toLower();
    if (!tableItems().empty()) {
        return tr("No %1 match “%2”.").arg(noun, filter());
    }
    if (m_pipeline->isLoading()) {
        return tr("Loading %1…").arg(noun);
    }
    if (const QString hint = m_window.loadingHint(); !hint.isEmpty()) {
        return hint;
    }
    if (m_window.currentNamespace().isEmpty()) {
        return tr("No namespace is chosen.");
    }
    if (m_loadFailed) {
        return tr("The %1 could not be loaded.").arg(noun) + QLatin1Char('\n') + m_problem;
    }
    if (!m_problem.isEmpty()) {
        return m_problem;
    }
    if (!m_rowsAsOf.isValid()) {
        return tr("The %1 have not been loaded yet.").arg(noun);
    }
    if (!kind().namespaced) {
        return tr("No %1 in this cluster.").arg(noun);
    }
    return m_window.currentNamespace() == allNamespaces
        ? tr("No %1 in any namespace.").arg(noun)
        : tr("No %1 in namespace %2.").arg(noun, m_window.currentNamespace());
}

int SharedContentViewController::chosenCount() const
{
    return m_tableView->clickedRowIsGone() ? 0
        : m_tableView->clickedRow() >= 0   ? 1
                                           : m_tableView->selectedRowCount();
}

QStringList SharedContentViewController::chosenNames() const
{
    if (m_tableView->clickedRowIsGone()) {
        return {}; // a refresh removed it while its menu was open
    }
    if (const int clicked = m_tableView->clickedRow(); clicked >= 0) {
        return {m_arranged->arrangedRow(clicked)->name};
    }
    return selectedNames();
}

QStringList SharedContentViewController::selectedNames() const
{
    QStringList names;
    for (const int row : m_tableView->selectedRowsInOrder()) {
        names.append(m_arranged->arrangedRow(row)->name);
    }
    return names;
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
    const QStringList names = chosenNames();
    if (names.isEmpty()) {
        return;
    }
    if (display_text::actsWhenPasted(names.first())) {
        refuseChange(m_window, QStringLiteral("The name was not copied"),
            tr("it holds control characters, which a terminal takes for keys."));
        return;
    }
    QApplication::clipboard()->setText(names.first());
}

void SharedContentViewController::editConfiguration()
{
    const QStringList names = chosenNames();
    if (names.isEmpty() || !m_window.canEdit()
        || !canName(names.first(1), QStringLiteral("Nothing was edited"))) {
        return;
    }
    const QStringList arguments{QStringLiteral("kubectl"), QStringLiteral("edit"), QStringLiteral("-n"),
        m_window.currentNamespace(), kind().resourceName, names.first(), QStringLiteral("-o"),
        QStringLiteral("yaml")};
    m_window.startExternalEdit(arguments, [self = QPointer(this)] {
        postToMain(self, [](SharedContentViewController &table) { table.reloadSoon(); });
    });
}

void SharedContentViewController::deleteRows()
{
    confirmAndDelete(*this, m_window, kind(), chosenNames(), [self = QPointer(this)] {
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
    canName({}, nothingPreviewed()); // the panel tells about names, and this too
    PreviewPanel::shared().present(*m_previews, *this);
}

bool SharedContentViewController::canName(const QStringList &names, const QString &notDone) const
{
    const QString reason = whyNotByName(kind(), names, m_window.currentNamespace());
    if (!reason.isEmpty()) {
        refuseChange(m_window, notDone, reason);
    }
    return reason.isEmpty();
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
    const QStringList names = chosenNames();
    if (!kind().logTarget || names.isEmpty() || !canName(names, noLogs())) {
        return;
    }
    std::vector<ContainerPair> containers;
    for (const QString &name : names) {
        containers.emplace_back(*kind().logTarget + name, allContainers);
    }
    m_window.openLogs(containers);
}

void SharedContentViewController::replaceRow(const QModelIndex &index, const Row &row)
{
    const auto position = static_cast<std::size_t>(m_arranged->mapToSource(index).row());
    const std::pair<std::size_t, Row> changed(position, row);
    m_model->replaceRows(std::span(&changed, 1));
}

void SharedContentViewController::stopLoading()
{
    m_pipeline->stop();
    m_window.stopWaiting();
}

void SharedContentViewController::showContextMenu(const QPoint &position)
{
    const bool hasRow = chosenCount() > 0;
    QMenu menu;
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
    if (m_window.canEdit()) {
        add(QStringLiteral("Edit Configuration"), &SharedContentViewController::editConfiguration, hasRow);
    }
    extendContextMenu(menu);
    menu.addSeparator();
    add(QStringLiteral("Delete…"), &SharedContentViewController::deleteRows, hasRow);
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
}

void SharedContentViewController::hideEvent(QHideEvent *event)
{
    m_timer.stop();
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
