// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/usage/UsageWatch.h"

#include "platform/threads/MainQueue.h"

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

using namespace std::chrono_literals;

constexpr auto askInterval = 30s; // the column's explanation and the manual say so
/// A cluster without figures rarely gets some.
constexpr auto pauseWithoutFigures = 5min;
constexpr int restPerQuestion = 3;
constexpr qint64 applyMilliseconds = 3; // leaves most of a frame to input and painting

/// That objects are too young to have figures, as kubectl says it.
bool isForNow(const QString &problem)
{
    return problem.contains(QLatin1String("metrics not available"), Qt::CaseInsensitive);
}

} // namespace

UsageWatch::UsageWatch(RowStore &store, WindowState &window, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_window(window)
{
    if (store.kind().topWord.isEmpty()) {
        return;
    }
    m_timer.setObjectName(QStringLiteral("usageTimer"));
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &UsageWatch::ask);
    connect(&store, &RowStore::rowsReplaced, this, [this](std::span<const std::size_t> positions) {
        for (const std::size_t position : positions) {
            compare(*m_store.rows()[position]);
        }
    });
    connect(&store, &RowStore::rowsAppended, this, [this](std::size_t firstPosition) {
        for (const Row &row : std::span(m_store.rows()).subspan(firstPosition)) {
            compare(*row);
        }
        schedule();
    });
}

UsageWatch::~UsageWatch()
{
    if (m_shell) {
        m_shell->cancel();
    }
}

void UsageWatch::setWanted(bool wanted)
{
    if (std::exchange(m_isWanted, wanted) != wanted) {
        schedule();
    }
}

void UsageWatch::askAgain()
{
    if (!m_shell) { // else the answer is on its way
        m_rest.setRemainingTime(0);
        m_isTold = true;
        schedule();
    }
}

void UsageWatch::clear()
{
    if (const auto shell = std::exchange(m_shell, nullptr)) {
        shell->cancel();
    }
    m_rest.setRemainingTime(0);
    m_usages.clear();
    m_outdated.clear();
    setProblem({});
    schedule();
}

bool UsageWatch::canAsk() const
{
    return m_isWanted && !m_shell && !m_store.rows().empty() && !m_store.kind().topWord.isEmpty();
}

void UsageWatch::schedule()
{
    m_timer.stop();
    if (canAsk()) {
        m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(m_rest.remainingTimeAsDuration()));
    }
}

void UsageWatch::ask()
{
    if (!canAsk()) {
        return; // the rows are gone; the next ones bring it about again
    }
    const ResourceKind &kind = m_store.kind();
    const QString nameSpace = m_window.currentNamespace();
    QStringList arguments{QStringLiteral("kubectl"), QStringLiteral("top"), kind.topWord,
        contextArgument(m_window.currentContext())};
    if (kind.namespaced) {
        arguments.append(namespaceArgument(nameSpace));
    }
    arguments.append(QStringLiteral("--no-headers"));
    const bool everywhere = kind.namespaced && nameSpace == allNamespaces;
    m_asked.start();
    m_shell = m_window.kubeCtl().makeShell();
    m_shell->runAsync(arguments, std::exchange(m_isTold, false), m_window.console(),
        [self = QPointer(this), shell = m_shell, everywhere](const ShellResult &result) {
            const bool isAnswer = result.exitStatus == 0; // beside warnings
            const Answer answer{isAnswer ? usagesOf(result.output, everywhere) : Usages(),
                isAnswer ? QString() : result.failure()};
            postToMain(self, [shell, answer](UsageWatch &watch) {
                if (watch.m_shell == shell) { // else the table shows another place by now
                    watch.answered(answer);
                }
            });
        });
}

void UsageWatch::answered(const Answer &answer)
{
    m_shell.reset();
    const std::chrono::milliseconds cost(m_asked.elapsed());
    const std::chrono::milliseconds rest
        = answer.problem.isEmpty() || isForNow(answer.problem) ? askInterval - cost : pauseWithoutFigures;
    m_rest.setRemainingTime(std::max(rest, cost * restPerQuestion));
    setUsages(answer.usages);
    setProblem(answer.problem);
    schedule();
}

void UsageWatch::setProblem(const QString &problem)
{
    if (std::exchange(m_problem, problem) != problem) {
        Q_EMIT problemChanged();
    }
}

void UsageWatch::setUsages(const Usages &usages)
{
    const Usages former = std::exchange(m_usages, usages);
    for (auto usage = usages.cbegin(); usage != usages.cend(); ++usage) {
        if (former.value(usage.key()) != usage.value()) {
            m_outdated.push_back(usage.key());
        }
    }
    for (auto usage = former.cbegin(); usage != former.cend(); ++usage) {
        if (!usages.contains(usage.key())) {
            m_outdated.push_back(usage.key());
        }
    }
    applySoon();
}

/// Rows come and change from elsewhere, without figures, or with those of a while ago.
void UsageWatch::compare(const KubeTableItem &row)
{
    const Key key(row.nameSpace, row.name);
    if (m_store.kind().usage(row) != m_usages.value(key)) {
        m_outdated.push_back(key);
        applySoon();
    }
}

/// Not in the middle of a change of the store, of which `compare` is told.
void UsageWatch::applySoon()
{
    if (!m_outdated.empty() && !std::exchange(m_isApplying, true)) {
        postToMain(QPointer(this), [](UsageWatch &watch) { watch.apply(); });
    }
}

void UsageWatch::apply()
{
    m_isApplying = false;
    m_store.replaceRows(changedRows());
    applySoon();
}

/// Some of the outdated ones, in the order of the store.
std::vector<std::pair<std::size_t, Row>> UsageWatch::changedRows()
{
    const ResourceKind &kind = m_store.kind();
    std::vector<std::pair<std::size_t, Row>> changed;
    QElapsedTimer elapsed;
    elapsed.start();
    for (; !m_outdated.empty() && elapsed.elapsed() < applyMilliseconds; m_outdated.pop_front()) {
        const Key &key = m_outdated.front();
        const auto position = m_store.find(key.first, key.second);
        const Usage usage = m_usages.value(key);
        if (!position || kind.usage(*m_store.rows()[*position]) == usage) {
            continue;
        }
        const auto row = kind.copy(*m_store.rows()[*position]);
        row->line = m_store.rows()[*position]->line; // which tells nothing of what is assigned here
        kind.assignUsage(usage, *row);
        changed.emplace_back(*position, row);
    }
    const auto before = [](const auto &a, const auto &b) { return a.first < b.first; };
    const auto isSame = [](const auto &a, const auto &b) { return a.first == b.first; };
    std::sort(changed.begin(), changed.end(), before);
    changed.erase(std::unique(changed.begin(), changed.end(), isSame), changed.end());
    return changed;
}

} // namespace tidewright
