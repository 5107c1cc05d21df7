// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/PrimaryContentController.h"

#include "app/content/CreateFromFileDialog.h"
#include "pods/table/PodController.h"
#include "resources/changes/ApplyFiles.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/changes/CreateFromFiles.h"
#include "resources/changes/UserRights.h"
#include "resources/controllers/CronJobController.h"
#include "resources/controllers/DaemonSetController.h"
#include "resources/controllers/DeploymentController.h"
#include "resources/controllers/EventController.h"
#include "resources/controllers/JobController.h"
#include "resources/controllers/NodeController.h"
#include "resources/controllers/SecretController.h"
#include "resources/controllers/ServiceController.h"
#include "resources/controllers/StatefulSetController.h"
#include "resources/controllers/StorageClassController.h"
#include "resources/kinds/ClusterRole.h"
#include "resources/kinds/ClusterRoleBinding.h"
#include "resources/kinds/ConfigMap.h"
#include "resources/kinds/CustomResourceDefinition.h"
#include "resources/kinds/Endpoint.h"
#include "resources/kinds/HorizontalPodAutoscaler.h"
#include "resources/kinds/Ingress.h"
#include "resources/kinds/Namespace.h"
#include "resources/kinds/NetworkPolicy.h"
#include "resources/kinds/PersistentVolume.h"
#include "resources/kinds/PersistentVolumeClaim.h"
#include "resources/kinds/ReplicaSet.h"
#include "resources/kinds/Role.h"
#include "resources/kinds/RoleBinding.h"
#include "resources/kinds/ServiceAccount.h"
#include "resources/listing/LoadProblem.h"
#include "resources/table/RelatedObjects.h"
#include "resources/table/ResourceTableView.h"

#include <QTimer>

namespace tidewright {

namespace {

constexpr auto reloadDelay = std::chrono::seconds(1);
constexpr int nicenessOfHidden = 10;
constexpr auto longestHiddenWait = std::chrono::seconds(3);

/// One tab: its sidebar name, the scopes of actions that mean it, and what makes its table.
struct Tab
{
    const char *name;
    std::initializer_list<const char *> scopes;
    SharedContentViewController *(*make)(WindowState &);
    bool isLoadedUnseen = true; ///< with the one that is shown, when it has another context or namespace
};

/// A table with commands of its own.
template <typename Controller> SharedContentViewController *table(WindowState &window)
{
    return new Controller(window);
}

template <ResourceKind (*kind)()> SharedContentViewController *tableOf(WindowState &window)
{
    return new SharedContentViewController(kind(), window);
}

constexpr Tab tabs[] = {
    {"Pods", {"pod", "container"}, table<PodController>},
    {"Deployments", {"deployment"}, table<DeploymentController>},
    {"Services", {"service"}, table<ServiceController>},
    {"Persistent Volumes", {"persistentvolume"}, tableOf<persistentVolumeKind>},
    {"Cron Jobs", {"cronjob"}, table<CronJobController>},
    {"Config Maps", {"configmap"}, tableOf<configMapKind>},
    {"Secrets", {"secret"}, table<SecretController>},
    {"Events", {"event"}, table<EventController>},
    {"Endpoints", {"endpoint"}, tableOf<endpointKind>},
    {"Jobs", {"job"}, table<JobController>},
    {"Service Accounts", {"serviceaccount"}, tableOf<serviceAccountKind>},
    {"Cluster Roles", {"clusterrole"}, tableOf<clusterRoleKind>},
    {"Replica Sets", {"replicaset"}, tableOf<replicaSetKind>},
    {"Daemon Sets", {"daemonset"}, table<DaemonSetController>},
    {"Stateful Sets", {"statefulset"}, table<StatefulSetController>, false},
    {"Persistent Volume Claims", {"persistentvolumeclaim"}, tableOf<persistentVolumeClaimKind>, false},
    {"Storage Classes", {"storageclass"}, table<StorageClassController>, false},
    {"Ingresses", {"ingress"}, tableOf<ingressKind>, false},
    {"Network Policies", {"networkpolicy"}, tableOf<networkPolicyKind>, false},
    {"Horizontal Pod Autoscalers", {"horizontalpodautoscaler"}, tableOf<horizontalPodAutoscalerKind>, false},
    {"Nodes", {"node"}, table<NodeController>, false},
    {"Namespaces", {}, tableOf<namespaceKind>, false},
    {"Roles", {"role"}, tableOf<roleKind>, false},
    {"Role Bindings", {"rolebinding"}, tableOf<roleBindingKind>, false},
    {"Cluster Role Bindings", {"clusterrolebinding"}, tableOf<clusterRoleBindingKind>, false},
    {"Custom Resource Definitions", {"customresourcedefinition"}, tableOf<customResourceDefinitionKind>,
        false},
};

} // namespace

PrimaryContentController::PrimaryContentController(WindowState &window, QWidget *parent)
    : QStackedWidget(parent)
    , m_window(window)
{
    for (const Tab &tab : tabs) {
        const QString name = QString::fromLatin1(tab.name);
        putTable(name.toLower(), tab.make(window));
    }
    m_hiddenTablesWait.setSingleShot(true);
    m_hiddenTablesWait.setInterval(longestHiddenWait);
    connect(&m_hiddenTablesWait, &QTimer::timeout, this, &PrimaryContentController::loadHiddenTables);
    connect(&window, &WindowState::accessChanged, this, [this] {
        for (SharedContentViewController *table : tables()) {
            tellObstacle(*table);
        }
    });
    tableSwitched();
    connect(this, &QStackedWidget::currentChanged, this, &PrimaryContentController::tableSwitched);
    connect(this, &QStackedWidget::currentChanged, this, &PrimaryContentController::shownTableChanged);
}

void PrimaryContentController::putTable(const QString &name, SharedContentViewController *table)
{
    QWidget *old = m_sidebarMap.value(name);
    const bool wasShown = old && old == currentWidget();
    insertWidget(old ? indexOf(old) : count(), table);
    m_sidebarMap.insert(name, table);
    connect(table, &SharedContentViewController::loadFinished, this, [this, table] { tableLoaded(*table); });
    connect(
        table, &SharedContentViewController::otherTableWanted, this, &PrimaryContentController::showTarget);
    Q_EMIT tableAdded(table);
    if (const auto *oldTable = qobject_cast<SharedContentViewController *>(old)) {
        table->setFilter(oldTable->filter());
    }
    if (wasShown) {
        setCurrentWidget(table);
    }
    if (old) {
        removeWidget(old);
        old->deleteLater();
    }
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
    tellObstacle(table);
}

/// What a load has met is truer than any rule.
void PrimaryContentController::tellObstacle(SharedContentViewController &table)
{
    const QString name = m_sidebarMap.key(&table);
    if (name.isEmpty()) {
        return;
    }
    const QString obstacle = table.hasFailed() ? kindObstacle(table.problem())
        : table.rowsAsOf().isValid()           ? QString()
                                               : rightsObstacle(m_window, table.kind(), Deed::List);
    Q_EMIT obstacleFound(name, obstacle);
}

const QHash<QString, QString> &PrimaryContentController::scopeMap()
{
    static const QHash<QString, QString> map = [] {
        QHash<QString, QString> result;
        for (const Tab &tab : tabs) {
            for (const char *scope : tab.scopes) {
                result.insert(QString::fromLatin1(scope), QString::fromLatin1(tab.name).toLower());
            }
        }
        return result;
    }();
    return map;
}

SharedContentViewController *PrimaryContentController::tableControllerForScope(const QString &scope) const
{
    return qobject_cast<SharedContentViewController *>(m_sidebarMap.value(scopeMap().value(scope)));
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
    const auto index = static_cast<std::size_t>(indexOf(&table)); // in the order of the tabs, others behind
    return index < std::size(tabs) && tabs[index].isLoadedUnseen;
}

/// Thirteen runs at once would take the time of the one that the user waits for.
void PrimaryContentController::loadHiddenTables()
{
    m_hiddenTablesWait.stop();
    if (m_window.liveUpdates()) {
        return; // each is loaded when it is shown, which is a matter of a moment
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
        tellObstacle(*controller);
    }
}

void PrimaryContentController::selectSidebarItem(const QString &name)
{
    m_selectedTabName = name.toLower();
    QWidget *tab = m_sidebarMap.value(m_selectedTabName);
    if (!tab) {
        return;
    }
    setCurrentWidget(tab);
    // Before the window knows its context there is nothing to load from; the tables load once it does.
    if (auto *controller = shownTable(); controller && !m_window.currentContext().isEmpty()) {
        controller->reloadLogging(false);
    }
}

/// What selects it in the sidebar: the name of the kind, of other kinds than those of the house their
/// resource.
QString PrimaryContentController::sidebarName(const SharedContentViewController &table) const
{
    const QString key = m_sidebarMap.key(const_cast<SharedContentViewController *>(&table));
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
    const auto *table = qobject_cast<SharedContentViewController *>(m_sidebarMap.value(visit.tab.toLower()));
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
    auto *table = qobject_cast<SharedContentViewController *>(m_sidebarMap.value(visit.tab.toLower()));
    if (!table) {
        return;
    }
    m_isTravelling = true;
    bring(*table, visit.filter, visit.selected);
    m_isTravelling = false;
}

void PrimaryContentController::showTarget(const TableTarget &target)
{
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
