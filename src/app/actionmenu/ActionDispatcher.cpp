// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/actionmenu/ActionDispatcher.h"

#include "app/content/PrimaryContentController.h"
#include "platform/text/Glob.h"
#include "pods/table/PodController.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/table/ResourceTableView.h"

namespace tidewright {

namespace {

const auto podScope = QStringLiteral("pod");
const auto containerScope = QStringLiteral("container");
/// A pattern may be slow on every one of many names, and there may be many patterns.
constexpr auto patienceToEnable = std::chrono::milliseconds(15);
constexpr auto patienceToEnableAll = std::chrono::milliseconds(60);
constexpr auto patienceToRun = std::chrono::milliseconds(500);
/// How long a result stands while rows come in slice by slice, each of which would ask again.
constexpr auto restWhileLoading = std::chrono::milliseconds(500);

struct Match
{
    std::optional<QString> name;
    bool timeIsUp = false; ///< not all names were tried
};

/// The first of `count` names that the pattern matches.
Match firstMatch(
    const QString &pattern, int count, const std::function<QString(int)> &nameAt, const QDeadlineTimer &end)
{
    Glob glob(pattern);
    glob.compile();
    auto searcher = glob.searcher();
    for (int number = 0; number < count; ++number) {
        const QString name = nameAt(number);
        if (searcher.matches(name)) {
            return {name};
        }
        if (end.hasExpired()) {
            return {std::nullopt, true};
        }
    }
    return {};
}

/// Selected rows count in the order of the user's clicks, which is the selection's own; those of pods that
/// are to match a pattern count as they are shown.
Match chosenName(const SharedContentViewController &table, const CustomActionConfig &config)
{
    const auto &pattern = config.use_name_matching_pattern;
    const bool asShown = pattern && config.scope == podScope;
    const ResourceTableView &view = table.tableView();
    QStringList selected;
    for (const int row : asShown ? view.selectedRowsInOrder() : view.selectedRowsAsChosen()) {
        selected.append(table.arrangedObjects().arrangedRow(row)->name);
    }
    if (!pattern) {
        return {selected.isEmpty() ? std::nullopt : std::optional(selected.first())};
    }
    const ArrangingModel &shown = table.arrangedObjects();
    const auto selectedCount = static_cast<int>(selected.size());
    return firstMatch(
        *pattern, selectedCount + shown.rowCount(),
        [&](int number) {
            return number < selectedCount ? selected.at(number)
                                          : shown.arrangedRow(number - selectedCount)->name;
        },
        QDeadlineTimer(patienceToRun));
}

QString notRun(const CustomActionItem &item)
{
    return QObject::tr("\"%1\" was not run").arg(item.title());
}

} // namespace

ActionDispatcher::ActionDispatcher(const PrimaryContentController &content, WindowState &window)
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
        || !allows(m_window, notRun(*item), item->readOnlyObstacle(shownContext(m_window)))) {
        return;
    }
    auto environment = target(*item);
    if (!environment) {
        return;
    }
    const QStringList places{m_window.currentContext(), m_window.currentNamespace()};
    if (!allows(m_window, notRun(*item), nameObstacle(environment->values() + places))) {
        return;
    }
    environment->insert(QStringLiteral("CONTEXT"), m_window.currentContext());
    environment->insert(QStringLiteral("NAMESPACE"), m_window.currentNamespace());
    item->performAction(*environment, ChangePlace(m_window));
}

std::optional<ActionEnvironment> ActionDispatcher::target(const CustomActionItem &item) const
{
    const QString &scope = item.config().scope;
    if (scope == QLatin1String("namespace")) {
        return ActionEnvironment();
    }
    const SharedContentViewController *table = m_content.tableControllerForScope(scope);
    if (!table) {
        return std::nullopt;
    }
    if (scope == containerScope) {
        const auto pairs = qobject_cast<const PodController *>(table)->selectedContainerPairs();
        if (pairs.empty()) {
            return std::nullopt;
        }
        return ActionEnvironment{{QStringLiteral("POD"), pairs.front().first},
            {QStringLiteral("CONTAINER"), pairs.front().second}};
    }
    const Match chosen = chosenName(*table, item.config());
    if (chosen.timeIsUp) {
        refuseChange(m_window, notRun(item),
            QObject::tr("looking for a name like %1 took too long.")
                .arg(item.config().use_name_matching_pattern.value_or(QString())));
    }
    return chosen.name ? std::optional(ActionEnvironment{{scope.toUpper(), *chosen.name}}) : std::nullopt;
}

QString ActionDispatcher::obstacle(const CustomActionItem &item) const
{
    if (const QString hint = m_window.loadingHint(); !hint.isEmpty()) {
        return hint.section(QLatin1Char('\n'), 0, 0);
    }
    if (!item.isActiveIn(m_window.currentContext())) {
        return QObject::tr("This action is not meant for the context %1.").arg(m_window.currentContext());
    }
    if (const QString reason = item.readOnlyObstacle(shownContext(m_window)); !reason.isEmpty()) {
        return reason;
    }
    return item.config().scope == QLatin1String("namespace") ? QString() : targetObstacle(item);
}

QString ActionDispatcher::targetObstacle(const CustomActionItem &item) const
{
    const QString &scope = item.config().scope;
    SharedContentViewController *table = m_content.tableControllerForScope(scope);
    if (!table) {
        return QObject::tr("This action is for a \"%1\", and there are none here.").arg(scope);
    }
    const QString noun = table->kind().humanReadableResourceName;
    if (scope == containerScope) {
        return qobject_cast<PodController *>(table)->selectedContainerPairs().empty()
            ? QObject::tr("Choose a container in the row of a pod first.")
            : QString();
    }
    if (const auto pattern = item.config().use_name_matching_pattern) {
        m_content.needRows(*table);
        if (hasMatch(item, *table)) {
            return {};
        }
        return table->isListing() && !table->rowsAsOf().isValid()
            ? QObject::tr("Loading %1…").arg(table->kind().tableName.toLower())
            : QObject::tr("No %1 is named like %2.").arg(noun, *pattern);
    }
    return table->tableView().selectionModel()->hasSelection() ? QString()
                                                               : QObject::tr("Select a %1 first.").arg(noun);
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
    const auto nameAt = [&](int number) {
        return onlyShown ? shown.arrangedRow(number)->name : all[static_cast<std::size_t>(number)]->name;
    };
    // What takes too long to find out is left to the run.
    if (m_checks.hasExpired()) {
        return true;
    }
    const Match match
        = firstMatch(pattern, count, nameAt, std::min(QDeadlineTimer(patienceToEnable), m_checks));
    const bool matches = match.name || match.timeIsUp;
    m_results.insert(
        key, new PatternResult{table.generation(), filter, matches, QDeadlineTimer(restWhileLoading)});
    return matches;
}

} // namespace tidewright
