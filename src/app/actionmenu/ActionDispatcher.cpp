// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/actionmenu/ActionDispatcher.h"

#include "app/content/KindTabs.h"
#include "app/content/PrimaryContentController.h"
#include "platform/text/Glob.h"
#include "pods/table/PodController.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/table/ResourceTableView.h"

#include <QSet>

#include <map>

namespace tidewright {

namespace {

const auto podScope = QStringLiteral("pod");
const auto namespaceVariable = QStringLiteral("NAMESPACE");
const auto containerScope = QStringLiteral("container");
/// A pattern may be slow on every one of many names, and there may be many patterns.
constexpr auto patienceToEnable = std::chrono::milliseconds(15);
constexpr auto patienceToEnableAll = std::chrono::milliseconds(60);
constexpr auto patienceToRun = std::chrono::milliseconds(500);
/// How long a result stands while rows come in slice by slice, each of which would ask again.
constexpr auto restWhileLoading = std::chrono::milliseconds(500);

struct Match
{
    std::optional<ObjectName> object;
    bool timeIsUp = false; ///< not all names were tried
};

/// The first of `count` rows whose name the pattern matches.
Match firstMatch(
    const QString &pattern, int count, const std::function<Row(int)> &rowAt, const QDeadlineTimer &end)
{
    Glob glob(pattern);
    glob.compile();
    auto searcher = glob.searcher();
    for (int number = 0; number < count; ++number) {
        if (const Row row = rowAt(number); searcher.matches(row->name)) {
            return {ObjectName{row->nameSpace, row->name}};
        }
        if (end.hasExpired()) {
            return {std::nullopt, true};
        }
    }
    return {};
}

/// The first of the chosen resources; where all namespaces are shown, the first of each namespace.
struct Chosen
{
    ObjectNames objects;
    bool timeIsUp = false;
};

/// Selected rows count in the order of the user's clicks, which is the selection's own; those of pods that
/// are to match a pattern count as they are shown.
Chosen chosenObjects(const SharedContentViewController &table, const CustomActionConfig &config)
{
    const auto &pattern = config.use_name_matching_pattern;
    const bool asShown = pattern && config.scope == podScope;
    const ResourceTableView &view = table.tableView();
    const ArrangingModel &shown = table.arrangedObjects();
    std::map<QString, Rows> selected; // by namespace
    QStringList namespaces;
    for (const int number : asShown ? view.selectedRowsInOrder() : view.selectedRowsAsChosen()) {
        const Row &row = shown.arrangedRow(number);
        if (!selected.contains(row->nameSpace)) {
            namespaces.append(row->nameSpace);
        }
        selected[row->nameSpace].push_back(row);
    }
    Chosen chosen;
    const QDeadlineTimer end(patienceToRun);
    for (const QString &nameSpace : std::as_const(namespaces)) {
        const Rows &rows = selected.at(nameSpace);
        const Match match = pattern
            ? firstMatch(
                *pattern, static_cast<int>(rows.size()),
                [&rows](int number) { return rows.at(static_cast<std::size_t>(number)); }, end)
            : Match{ObjectName{nameSpace, rows.front()->name}};
        if (match.object) {
            chosen.objects.append(*match.object);
        }
        chosen.timeIsUp = chosen.timeIsUp || match.timeIsUp;
    }
    if (pattern && chosen.objects.isEmpty() && !chosen.timeIsUp) {
        const Match match = firstMatch(
            *pattern, shown.rowCount(), [&shown](int number) { return shown.arrangedRow(number); }, end);
        chosen.timeIsUp = match.timeIsUp;
        if (match.object) {
            chosen.objects.append(*match.object);
        }
    }
    return chosen;
}

/// Why an action must not run in a context, as its configuration says; empty when it may.
QString contextObstacle(const CustomActionItem &item, const QString &context)
{
    return item.isActiveIn(context)
        ? QString()
        : QObject::tr("This action is not meant for the context %1.").arg(context);
}

QString notRun(const CustomActionItem &item)
{
    return QObject::tr("\"%1\" was not run").arg(item.title());
}

/// The first container chosen in each namespace.
std::vector<ActionEnvironment> containerTargets(const std::vector<ContainerPair> &pairs)
{
    std::vector<ActionEnvironment> runs;
    QSet<QString> seen;
    for (const auto &[pod, container, nameSpace] : pairs) {
        if (!seen.contains(nameSpace)) {
            seen.insert(nameSpace);
            runs.push_back({{QStringLiteral("POD"), pod}, {QStringLiteral("CONTAINER"), container},
                {namespaceVariable, nameSpace}});
        }
    }
    return runs;
}

} // namespace

ActionDispatcher::ActionDispatcher(PrimaryContentController &content, WindowState &window)
    : m_content(content)
    , m_window(window)
{
}

void ActionDispatcher::beginChecks()
{
    m_checks = QDeadlineTimer(patienceToEnableAll);
}

void ActionDispatcher::dispatchAction(const std::shared_ptr<CustomActionItem> &item) const
{
    // While there is a hint, what the tables show is not where the window is going.
    if (!allows(m_window, notRun(*item), m_window.loadingHint())
        || !allows(m_window, notRun(*item), contextObstacle(*item, m_window.currentContext()))
        || !allows(m_window, notRun(*item), item->readOnlyObstacle(shownContext(m_window)))) {
        return;
    }
    std::vector<ActionEnvironment> runs = targets(*item);
    if (runs.empty() && !allows(m_window, notRun(*item), obstacle(*item))) {
        return;
    }
    for (ActionEnvironment &environment : runs) {
        environment.insert(QStringLiteral("CONTEXT"), m_window.currentContext());
        if (environment.value(namespaceVariable).isEmpty()) {
            environment.insert(namespaceVariable, m_window.currentNamespace());
        }
        if (!allows(m_window, notRun(*item), nameObstacle(environment.values()))) {
            return;
        }
    }
    if (runs.size() > 1 && !item->config().once_per_namespace.value_or(false)) {
        QStringList namespaces;
        for (const ActionEnvironment &environment : runs) {
            namespaces.append(environment.value(namespaceVariable));
        }
        refuseChange(m_window, notRun(*item),
            QObject::tr(
                "what is chosen lies in several namespaces (%1). Choose in one of them, or let the action's "
                "config.json say \"once_per_namespace\": true.")
                .arg(namespaces.join(QLatin1String(", "))));
        return;
    }
    item->performActions(runs, ChangePlace(m_window));
}

std::vector<ActionEnvironment> ActionDispatcher::targets(const CustomActionItem &item) const
{
    const QString &scope = item.config().scope;
    if (scope == QLatin1String("namespace")) {
        return {ActionEnvironment()};
    }
    const SharedContentViewController *table = m_content.tableControllerForScope(scope);
    if (!table) {
        return {};
    }
    if (scope == containerScope) {
        return containerTargets(qobject_cast<const PodController *>(table)->selectedContainerPairs());
    }
    const Chosen chosen = chosenObjects(*table, item.config());
    if (chosen.timeIsUp) {
        refuseChange(m_window, notRun(item),
            QObject::tr("looking for a name like %1 took too long.")
                .arg(item.config().use_name_matching_pattern.value_or(QString())));
    }
    std::vector<ActionEnvironment> runs;
    for (const auto &[nameSpace, name] : chosen.objects) {
        runs.push_back({{scope.toUpper(), name}, {namespaceVariable, nameSpace}});
    }
    return runs;
}

QString ActionDispatcher::obstacle(const CustomActionItem &item) const
{
    if (const QString hint = m_window.loadingHint(); !hint.isEmpty()) {
        return hint.section(QLatin1Char('\n'), 0, 0);
    }
    if (const QString reason = contextObstacle(item, m_window.currentContext()); !reason.isEmpty()) {
        return reason;
    }
    if (const QString reason = item.readOnlyObstacle(shownContext(m_window)); !reason.isEmpty()) {
        return reason;
    }
    return item.config().scope == QLatin1String("namespace") ? QString() : targetObstacle(item);
}

QString ActionDispatcher::targetObstacle(const CustomActionItem &item) const
{
    const QString &scope = item.config().scope;
    const KindTab *tab = kindTab(PrimaryContentController::scopeMap().value(scope));
    if (!tab) {
        return QObject::tr("This action is for a \"%1\", and there are none here.").arg(scope);
    }
    const ResourceKind kind = tab->kind();
    const QString &noun = kind.humanReadableResourceName;
    if (scope == containerScope) {
        const auto *pods = qobject_cast<PodController *>(m_content.tableControllerForScope(scope));
        return pods->selectedContainerPairs().empty()
            ? QObject::tr("Choose a container in the row of a pod first.")
            : QString();
    }
    if (const auto pattern = item.config().use_name_matching_pattern) {
        SharedContentViewController *table = m_content.tableControllerForScope(scope);
        m_content.needRows(*table);
        if (hasMatch(item, *table)) {
            return {};
        }
        return table->isListing() && !table->rowsAsOf().isValid()
            ? QObject::tr("Loading %1…").arg(kind.tableName.toLower())
            : QObject::tr("No %1 is named like %2.").arg(noun, *pattern);
    }
    return m_content.hasSelection(scope) ? QString() : QObject::tr("Select a %1 first.").arg(noun);
}

/// For pods the rows that are shown count, for other kinds all rows.
bool ActionDispatcher::hasMatch(const CustomActionItem &item, const SharedContentViewController &table) const
{
    const QString pattern = item.config().use_name_matching_pattern.value_or(QString());
    const bool onlyShown = item.config().scope == podScope;
    const QString filter = onlyShown ? table.filter() : QString();
    const std::pair key(pattern, &table);
    const PatternResult *known = m_results.object(key);
    if (known && known->filter == filter
        && (known->generation == table.generation() || (table.isListing() && !known->rest.hasExpired()))) {
        return known->matches;
    }
    const ArrangingModel &shown = table.arrangedObjects();
    const Rows &all = table.tableItems();
    const auto count = onlyShown ? shown.rowCount() : static_cast<int>(all.size());
    const auto rowAt = [&](int number) {
        return onlyShown ? shown.arrangedRow(number) : all[static_cast<std::size_t>(number)];
    };
    // What takes too long to find out is left to the run.
    if (m_checks.hasExpired()) {
        return true;
    }
    const Match match
        = firstMatch(pattern, count, rowAt, std::min(QDeadlineTimer(patienceToEnable), m_checks));
    const bool matches = match.object || match.timeIsUp;
    m_results.insert(
        key, new PatternResult{table.generation(), filter, matches, QDeadlineTimer(restWhileLoading)});
    return matches;
}

} // namespace tidewright
