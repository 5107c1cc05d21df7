// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/ListingPipeline.h"

#include "core/running/Shell.h"
#include "platform/threads/MainQueue.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

constexpr qint64 sliceMilliseconds = 3; // leaves most of a frame to input and painting
constexpr std::size_t chunkRows = 500;

/// What kubectl says in place of a table without lines.
bool isThatNothingIsThere(const ShellResult &result)
{
    return result.exitStatus == 0 && result.output.isEmpty() && result.error
        && result.error->startsWith(QLatin1String("No resources found"))
        && !result.error->contains(QLatin1Char('\n'));
}

} // namespace

ListingPipeline::ListingPipeline(RowStore &store, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_kind(std::make_shared<ResourceKind>(store.kind()))
{
}

ListingPipeline::~ListingPipeline()
{
    endLoads();
}

void ListingPipeline::load(const std::shared_ptr<Shell> &shell, const QStringList &arguments, LineForm form,
    bool logToConsole, bool unattended)
{
    const quint64 id = ++m_lastId;
    Load load;
    load.id = id;
    load.shell = shell;
    load.arguments = arguments;
    load.form = form;
    load.logToConsole = logToConsole;
    load.unattended = unattended;
    load.outcome.startedAt = QDateTime::currentDateTime();
    load.running.start();
    m_loads.push_back(std::move(load));
    if (m_loads.size() == 1) {
        Q_EMIT loadingChanged(true);
    }
    if (const Load *started = find(id)) {
        run(*started, m_otherOutput.isEmpty() ? m_kind->outputArguments : m_otherOutput);
    }
}

void ListingPipeline::run(const Load &load, const QStringList &outputArguments)
{
    const bool wantsField = load.form == LineForm::WithNamespace && !m_kind->printedTitles;
    const QStringList output = wantsField ? withNamespaceField(outputArguments) : outputArguments;
    load.shell->runAsync(load.arguments + output, load.logToConsole, nullptr,
        [self = QPointer(this), id = load.id, shell = load.shell](const ShellResult &result) {
            LoadOutcome outcome;
            outcome.error = isThatNothingIsThere(result) ? std::nullopt : result.error;
            outcome.errorIsText = shell->errorWasText();
            outcome.isText = shell->outputWasText();
            outcome.signal = result.signal;
            outcome.endedWell = result.exitStatus == 0;
            postToMain(self, [id, listing = result.output, outcome](ListingPipeline &pipeline) {
                pipeline.listingArrived(id, listing, outcome);
            });
        });
}

void ListingPipeline::stop()
{
    for (Load &load : m_loads) {
        if (!load.arrived) { // what is here already is only a moment from being shown
            load.outcome.stopped = true;
            load.shell->cancel();
        }
    }
}

void ListingPipeline::clear()
{
    const bool wasLoading = isLoading();
    endLoads();
    m_loads.clear();
    m_arrived.clear();
    m_merging.reset();
    m_application = {};
    m_otherOutput.clear();
    m_store.clear();
    if (wasLoading) {
        Q_EMIT loadingChanged(false);
    }
}

bool ListingPipeline::hasUnattendedLoad() const
{
    return std::any_of(m_loads.cbegin(), m_loads.cend(), [](const Load &load) { return load.unattended; });
}

QDateTime ListingPipeline::loadingSince() const
{
    return m_loads.empty() ? QDateTime() : m_loads.front().outcome.startedAt;
}

ListingPipeline::Load *ListingPipeline::find(quint64 id)
{
    const auto load = std::find_if(
        m_loads.begin(), m_loads.end(), [id](const Load &candidate) { return candidate.id == id; });
    return load == m_loads.end() ? nullptr : &*load;
}

void ListingPipeline::listingArrived(quint64 id, const QByteArray &listing, const LoadOutcome &outcome)
{
    Load *load = find(id);
    if (!load) {
        return; // cleared meanwhile
    }
    if (load->outcome.stopped) {
        finish(id);
        return;
    }
    if (tryOtherOutput(*load, outcome)) {
        return;
    }
    const QDateTime startedAt = load->outcome.startedAt;
    load->arrived = true;
    load->listing = listing;
    load->outcome = outcome;
    load->outcome.startedAt = startedAt;
    m_arrived.push_back(id);
    mergeNext();
}

bool ListingPipeline::tryOtherOutput(Load &load, const LoadOutcome &outcome)
{
    if (!m_kind->otherOutput || !outcome.error || std::exchange(load.triedAgain, true)) {
        return false;
    }
    const QStringList otherOutput = m_kind->otherOutput(*outcome.error);
    if (!otherOutput.isEmpty()) {
        m_otherOutput = otherOutput; // it would fail again and again
        run(load, otherOutput);
    }
    return !otherOutput.isEmpty();
}

void ListingPipeline::mergeNext()
{
    if (m_merging || m_arrived.empty()) {
        return;
    }
    const quint64 id = m_arrived.front();
    m_arrived.pop_front();
    m_merging = id;
    Q_EMIT mergeBegins();
    const Load &load = *find(id);
    shellQueue().post([self = QPointer(this), id, kind = m_kind, listing = load.listing, form = load.form,
                          snapshot = m_store.snapshot()]() mutable {
        auto result = std::make_shared<MergeResult>(mergeListing(*kind, listing, *snapshot, form));
        snapshot.reset(); // or the model would copy its rows before the first change
        postToMain(self, [id, result](ListingPipeline &pipeline) { pipeline.merged(id, result); });
    });
}

void ListingPipeline::merged(quint64 id, std::shared_ptr<MergeResult> result)
{
    Load *load = find(id);
    if (!load || m_merging != id) {
        return; // cleared meanwhile
    }
    load->listing.clear();
    load->outcome.lines = result->lines;
    load->outcome.skippedLines = result->skippedLines;
    load->outcome.firstSkippedLine = result->firstSkippedLine;
    load->outcome.otherTitles = result->otherTitles;
    m_application = {id, std::move(result)};
    applySlice(id);
}

void ListingPipeline::applySlice(quint64 id)
{
    if (m_application.loadId != id || !m_application.merged) {
        return; // cleared meanwhile
    }
    MergeResult &merged = *m_application.merged;
    QElapsedTimer elapsed;
    elapsed.start();
    while (elapsed.elapsed() < sliceMilliseconds) {
        if (m_application.changedDone < merged.changed.size()) {
            const std::size_t count = std::min(chunkRows, merged.changed.size() - m_application.changedDone);
            m_store.replaceRows(std::span(merged.changed).subspan(m_application.changedDone, count));
            m_application.changedDone += count;
        } else if (!merged.stale.empty()) {
            m_store.removeRowsAt(merged.stale);
            merged.stale.clear();
        } else if (m_application.addedDone < merged.added.size()) {
            const std::size_t count = std::min(chunkRows, merged.added.size() - m_application.addedDone);
            m_store.appendRows(std::span(merged.added).subspan(m_application.addedDone, count));
            m_application.addedDone += count;
        } else {
            Q_EMIT rowsChanged();
            finish(id);
            return;
        }
    }
    Q_EMIT rowsChanged();
    postToMain(QPointer(this), [id](ListingPipeline &pipeline) { pipeline.applySlice(id); });
}

void ListingPipeline::finish(quint64 id)
{
    const auto load = std::find_if(
        m_loads.begin(), m_loads.end(), [id](const Load &candidate) { return candidate.id == id; });
    if (load == m_loads.end()) {
        return; // whoever heard of the rows has cleared the table
    }
    LoadOutcome outcome = load->outcome;
    outcome.duration = std::chrono::milliseconds(load->running.elapsed());
    m_loads.erase(load);
    if (m_merging == id) {
        m_merging.reset();
        m_application = {};
    }
    Q_EMIT finished(outcome);
    if (m_loads.empty()) {
        Q_EMIT loadingChanged(false);
    }
    mergeNext();
}

void ListingPipeline::endLoads()
{
    for (const Load &load : m_loads) {
        load.shell->cancel();
    }
}

} // namespace tidewright
