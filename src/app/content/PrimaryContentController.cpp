// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/PrimaryContentController.h"

#include "app/content/CreateFromFileDialog.h"
#include "app/content/KindTabs.h"
#include "resources/changes/ApplyFiles.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/changes/CreateFromFiles.h"
#include "resources/changes/UserRights.h"
#include "resources/listing/LoadProblem.h"
#include "resources/table/RelatedObjects.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/SharedContentViewController.h"

#include <QTimer>

namespace tidewright {

namespace {

constexpr auto reloadDelay = std::chrono::seconds(1);
constexpr int nicenessOfHidden = 10;
constexpr auto longestHiddenWait = std::chrono::seconds(3);

} // namespace

PrimaryContentController::PrimaryContentController(WindowState &window, QWidget *parent)
    : QStackedWidget(parent)
    , m_window(window)
{
    tableNamed(kindTabs().front().key());
    m_hiddenTablesWait.setSingleShot(true);
    m_hiddenTablesWait.setInterval(longestHiddenWait);
    connect(&m_hiddenTablesWait, &QTimer::timeout, this, &PrimaryContentController::loadHiddenTables);
    connect(&window, &WindowState::accessChanged, this, &PrimaryContentController::tellObstacles);
    tableSwitched();
    connect(this, &QStackedWidget::currentChanged, this, &PrimaryContentController::tableSwitched);
    connect(this, &QStackedWidget::currentChanged, this, &PrimaryContentController::shownTableChanged);
}

void PrimaryContentController::putTable(const QString &name, SharedContentViewController *table)
{
    SharedContentViewController *old = m_sidebarMap.value(name);
    const bool wasShown = old && old == currentWidget();
    insertWidget(old ? indexOf(old) : placeFor(name), table);
    m_sidebarMap.insert(name, table);
    connect(table, &SharedContentViewController::loadFinished, this, [this, table] { tableLoaded(*table); });
    connect(
        table, &SharedContentViewController::otherTableWanted, this, &PrimaryContentController::showTarget);
    Q_EMIT tableAdded(table);
    if (old) {
        table->setFilter(old->filter());
    }
    if (wasShown) {
        setCurrentWidget(table);
    }
    if (old) {
        removeWidget(old);
        old->deleteLater();
    }
}

/// In the stack: tables are in the order of the tabs, others behind.
int PrimaryContentController::placeFor(const QString &name) const
{
    const KindTab *tab = kindTab(name);
    if (!tab) {
        return count();
    }
    return static_cast<int>(std::count_if(kindTabs().data(), tab,
        [this](const KindTab &before) { return m_sidebarMap.contains(before.key()); }));
}

SharedContentViewController *PrimaryContentController::tableNamed(const QString &name)
{
    const KindTab *tab = kindTab(name);
    if (tab && !m_sidebarMap.contains(name)) {
        putTable(name, tab->make(m_window));
    }
    return m_sidebarMap.value(name);
}

void PrimaryContentController::removeTable(const QString &name)
{
    if (QWidget *table = m_sidebarMap.take(name)) {
        removeWidget(table);
        table->deleteLater();
    }
}

void PrimaryContentController::tableLoaded(SharedContentViewController &table)
{
    if (&table == currentWidget() && m_hiddenTablesWait.isActive()) {
        loadHiddenTables();
    }
    tellObstacle(nameOf(table));
}

void PrimaryContentController::tellObstacles()
{
    for (const KindTab &tab : kindTabs()) {
        tellObstacle(tab.key());
    }
    for (const SharedContentViewController *table : tables()) {
        if (const QString name = nameOf(*table); !kindTab(name)) {
            tellObstacle(name);
        }
    }
}

/// What a load has met is truer than any rule.
void PrimaryContentController::tellObstacle(const QString &name)
{
    const SharedContentViewController *table = m_sidebarMap.value(name);
    const KindTab *tab = kindTab(name);
    if (!table && !tab) {
        return;
    }
    QString obstacle;
    if (table && table->hasFailed()) {
        obstacle = kindObstacle(table->problem());
    } else if (!table || !table->rowsAsOf().isValid()) {
        obstacle = rightsObstacle(m_window, table ? table->kind() : tab->kind(), Deed::List);
    }
    Q_EMIT obstacleFound(name, obstacle);
}

const QHash<QString, QString> &PrimaryContentController::scopeMap()
{
    static const QHash<QString, QString> map = [] {
        QHash<QString, QString> result;
        for (const KindTab &tab : kindTabs()) {
            for (const char *scope : tab.scopes) {
                result.insert(QString::fromLatin1(scope), tab.key());
            }
        }
        return result;
    }();
    return map;
}

SharedContentViewController *PrimaryContentController::tableControllerForScope(const QString &scope)
{
    return tableNamed(scopeMap().value(scope));
}

bool PrimaryContentController::hasSelection(const QString &scope) const
{
    const SharedContentViewController *table = m_sidebarMap.value(scopeMap().value(scope));
    return table && table->tableView().selectionModel()->hasSelection();
}

SharedContentViewController *PrimaryContentController::shownTable() const
{
    return qobject_cast<SharedContentViewController *>(currentWidget());
}

QList<SharedContentViewController *> PrimaryContentController::tables() const
{
    QList<SharedContentViewController *> result;
    for (int index = 0; index < count(); ++index) {
        if (auto *controller = qobject_cast<SharedContentViewController *>(widget(index))) {
            result.append(controller);
        }
    }
    return result;
}

void PrimaryContentController::clusterSettingsChanged()
{
    clear();
    if (auto *controller = shownTable()) {
        controller->reloadLogging(false);
    }
    m_hiddenTablesWait.start();
}

bool PrimaryContentController::isLoadedUnseen(const SharedContentViewController &table) const
{
    const KindTab *tab = kindTab(nameOf(table));
    return tab && tab->isLoadedUnseen;
}

/// Thirteen runs at once would take the time of the one that the user waits for.
void PrimaryContentController::loadHiddenTables()
{
    m_hiddenTablesWait.stop();
    if (m_window.liveUpdates()) {
        return; // each is loaded when it is shown, which is a matter of a moment
    }
    for (const KindTab &tab : kindTabs()) {
        if (tab.isLoadedUnseen) {
            tableNamed(tab.key());
        }
    }
    for (SharedContentViewController *controller : tables()) {
        const bool isWanted = controller == shownTable() || isLoadedUnseen(*controller);
        if (isWanted && !controller->isListing() && !controller->rowsAsOf().isValid()) {
            controller->clearAndReload({.niceness = nicenessOfHidden});
        }
    }
}

void PrimaryContentController::needRows(SharedContentViewController &table) const
{
    const SharedContentViewController *shown = shownTable();
    const bool isTurn = !shown || shown->rowsAsOf().isValid(); // what the user looks at comes first
    const bool comesUnasked = !m_window.liveUpdates() && isLoadedUnseen(table);
    if (!comesUnasked && isTurn && !table.isListing() && !table.rowsAsOf().isValid()) {
        table.load({.unattended = true, .niceness = nicenessOfHidden});
    }
}

void PrimaryContentController::clear()
{
    m_hiddenTablesWait.stop();
    for (SharedContentViewController *controller : tables()) {
        controller->clear();
    }
    tellObstacles();
}

void PrimaryContentController::selectSidebarItem(const QString &name)
{
    m_selectedTabName = name.toLower();
    SharedContentViewController *table = tableNamed(m_selectedTabName);
    if (!table) {
        return;
    }
    setCurrentWidget(table);
    // Before the window knows its context there is nothing to load from; the tables load once it does.
    if (auto *controller = shownTable(); controller && !m_window.currentContext().isEmpty()) {
        controller->reloadLogging(false);
    }
}

QString PrimaryContentController::nameOf(const SharedContentViewController &table) const
{
    return m_sidebarMap.key(const_cast<SharedContentViewController *>(&table));
}

/// What selects it in the sidebar: the name of the kind, of other kinds than those of the house their
/// resource.
QString PrimaryContentController::sidebarName(const SharedContentViewController &table) const
{
    const QString key = nameOf(table);
    const QString &name = table.kind().tableName;
    return name.toLower() == key ? name : key;
}

void PrimaryContentController::tableSwitched()
{
    const auto *table = shownTable();
    if (!table || m_isTravelling) {
        return;
    }
    const QString name = sidebarName(*table);
    if (!m_history.isEmpty() && m_history.current().tab == name) {
        return; // its table was put in place of another
    }
    noteVisit();
    m_history.visit({name, table->filter(), {}});
}

/// Writes down how the table looks now that the window goes away from.
void PrimaryContentController::noteVisit()
{
    if (m_history.isEmpty()) {
        return;
    }
    VisitedTable &visit = m_history.current();
    const SharedContentViewController *table = m_sidebarMap.value(visit.tab.toLower());
    if (!table) {
        return; // closed since
    }
    const std::vector<int> rows = table->tableView().selectedRowsInOrder();
    visit.filter = table->filter();
    visit.selected = rows.empty() ? ObjectName() : table->objectAt(rows.front());
}

void PrimaryContentController::go(int steps)
{
    if (!canGo(steps)) {
        return;
    }
    noteVisit();
    const VisitedTable visit = m_history.go(steps);
    SharedContentViewController *table = m_sidebarMap.value(visit.tab.toLower());
    if (!table) {
        return;
    }
    m_isTravelling = true;
    bring(*table, visit.filter, visit.selected);
    m_isTravelling = false;
}

void PrimaryContentController::showTarget(const TableTarget &target)
{
    for (const KindTab &tab : kindTabs()) {
        if (targetWord(tab.kind()) == target.kind) {
            bring(*tableNamed(tab.key()), target.filter, target.object);
            return;
        }
    }
    for (SharedContentViewController *table : tables()) {
        if (targetWord(table->kind()) == target.kind) {
            bring(*table, target.filter, target.object);
            return;
        }
    }
    refuseChange(m_window, tr("No other table was shown"),
        tr("there is no table for the kind of %1 (%2).").arg(target.object.name, target.kind));
}

void PrimaryContentController::bring(
    SharedContentViewController &table, const QString &filter, const ObjectName &selected)
{
    table.setFilter(filter); // before it is shown, and loads
    table.completeFilter();
    Q_EMIT sidebarItemWanted(sidebarName(table));
    if (!selected.name.isEmpty()) {
        table.selectObject(selected);
    }
    table.setFocus(Qt::OtherFocusReason);
}

void PrimaryContentController::reloadContent()
{
    if (auto *controller = shownTable()) {
        controller->reload();
    }
}

void PrimaryContentController::createFromFileDialog()
{
    if (!canCreateIn(m_window)) {
        return;
    }
    const ChangePlace place(m_window);
    const auto create = [this, place](const QStringList &paths) {
        confirmWhereProtected(this, place.key(),
            {.title = tr("Confirm Create"),
                .message = tr("Are you sure you want to create what these declare?\n    ")
                    + paths.join(QLatin1String(",\n    ")),
                .yes = tr("Create"),
                .accessory = confirmationDetails(place.text())},
            [self = QPointer(this), paths, place](bool confirmed) {
                if (self && confirmed) {
                    self->createFrom(paths, place);
                }
            });
    };
    CreateFromFileDialog::open(window(), this,
        {.title = tr("Create from File"),
            .message = QStringLiteral("Select a .yaml file(s) to create resources."),
            .accept = tr("Create"),
            .folder = tr("Create from This &Folder"),
            .place = place.text()},
        create);
}

void PrimaryContentController::createFrom(const QStringList &paths, const ChangePlace &place)
{
    if (!place.isStillShown()) {
        refuseMovedChange(m_window, nothingCreated());
        return;
    }
    createFromFiles(m_window, paths, reloadingSoon());
}

void PrimaryContentController::applyFromFileDialog()
{
    if (!canApplyIn(m_window)) {
        return;
    }
    const ChangePlace place(m_window);
    CreateFromFileDialog::open(window(), this,
        {.title = tr("Apply from File"),
            .message = tr("Select .yaml files to apply. What they change is shown first."),
            .accept = tr("Compare"),
            .folder = tr("Compare This &Folder"),
            .place = place.text()},
        [this, place](const QStringList &paths) { applyFrom(paths, place); });
}

void PrimaryContentController::applyFrom(const QStringList &paths, const ChangePlace &place)
{
    if (!place.isStillShown()) {
        refuseMovedChange(m_window, nothingApplied());
        return;
    }
    applyFiles(*this, place, paths, reloadingSoon());
}

std::function<void()> PrimaryContentController::reloadingSoon()
{
    return [self = QPointer<PrimaryContentController>(this)] {
        if (self) {
            QTimer::singleShot(reloadDelay, self, &PrimaryContentController::reloadContent);
        }
    };
}

} // namespace tidewright
