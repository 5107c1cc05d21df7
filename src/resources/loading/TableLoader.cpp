// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/loading/TableLoader.h"

#include "platform/desktop/Diagnostics.h"
#include "resources/kinds/ServedKind.h"
#include "resources/listing/LoadProblem.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tidewright {

namespace {

using namespace std::chrono_literals;

constexpr auto unwatchedStream = 1min;
/// A listing that takes a while costs the cluster and this machine something: it rests three times as long.
constexpr int restPerListing = 3;
constexpr int mostFailures = 3; // streams in a row that bring nothing, while listings do
/// Of listings in a row that failed: the first one waits for the next tick of the table's timer, which is as
/// good as half a minute, and the others end shortly before one.
constexpr std::array failurePauses{0s, 55s, 115s, 295s};
constexpr int seldomFrom = 2; // failures

std::chrono::milliseconds pauseAfter(const LoadOutcome &outcome, int failures)
{
    const auto rest = outcome.duration * restPerListing;
    if (failures == 0) {
        return rest;
    }
    const auto step = std::min<std::size_t>(static_cast<std::size_t>(failures), failurePauses.size()) - 1;
    return std::max<std::chrono::milliseconds>(rest, failurePauses[step]);
}

} // namespace

TableLoader::TableLoader(RowStore &store, WindowState &window, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_window(window)
    , m_pipeline(store)
    , m_liveRows(store)
{
    m_unwatched.setObjectName(QStringLiteral("unwatched"));
    m_unwatched.setSingleShot(true);
    m_unwatched.setInterval(unwatchedStream);
    connect(&m_unwatched, &QTimer::timeout, this, [this] {
        if (m_stream) {
            m_stream->pause();
        }
    });
    connect(&m_pipeline, &ListingPipeline::loadingChanged, this, &TableLoader::announceLoading);
    connect(&m_pipeline, &ListingPipeline::mergeBegins, &m_liveRows, &LiveRows::hold);
    connect(&m_pipeline, &ListingPipeline::rowsChanged, this, &TableLoader::rowsChanged);
    connect(&m_pipeline, &ListingPipeline::finished, this, &TableLoader::listed);
    connect(&m_pace, &ListingPace::due, this, &TableLoader::listChanges);
    connect(&m_liveRows, &LiveRows::rowsChanged, this, &TableLoader::rowsChanged);
    connect(&m_liveRows, &LiveRows::stateComplete, this, &TableLoader::stateArrived);
    connect(&window, &WindowState::liveUpdatesChanged, this, &TableLoader::liveUpdatesSwitched);
}

TableLoader::~TableLoader() = default;

bool TableLoader::canLoad() const
{
    return !m_window.currentNamespace().isEmpty() && m_window.loadingHint().isEmpty();
}

bool TableLoader::isPrinted() const
{
    return m_store.kind().printedTitles.has_value();
}

bool TableLoader::wantsStream() const
{
    const ResourceKind &kind = m_store.kind();
    // The first listing finds out the titles, which means another table.
    const bool waitsForTitles = isPrinted() && kind.printedTitles->isEmpty() && !m_sinceListing.isValid();
    return m_window.liveUpdates() && m_refusal.isEmpty() && kind.isWatchable && !waitsForTitles;
}

bool TableLoader::isStreamLoading() const
{
    return m_stream && !m_hasState && m_stream->status().state == LiveStatus::State::Loading;
}

QDateTime TableLoader::loadingSince() const
{
    return m_pipeline.isLoading() ? m_pipeline.loadingSince()
        : isStreamLoading()       ? m_streamSince
                                  : QDateTime();
}

QDateTime TableLoader::rowsAsOf() const
{
    return m_stream && m_hasState && (!isPrinted() || m_pace.isCurrent())
        ? std::max(m_stream->status().asOf, m_rowsAsOf)
        : m_rowsAsOf;
}

TableLoader::Following TableLoader::following() const
{
    if (m_window.liveUpdates() && !m_store.kind().isWatchable) {
        return Following::Refused;
    }
    if (!m_window.liveUpdates() || (m_refusal.isEmpty() && !m_hasState)) {
        return Following::Listing;
    }
    if (!m_stream || !m_hasState) {
        return Following::Refused;
    }
    switch (m_stream->status().state) {
    case LiveStatus::State::Live:
        return !isPrinted() || m_pace.isKeepingUp() ? Following::Live : Following::Behind;
    case LiveStatus::State::Paused:
        return Following::Paused;
    default:
        return Following::Reconnecting;
    }
}

QString TableLoader::followingReason() const
{
    const Following now = following();
    if (now == Following::Refused && !m_store.kind().isWatchable) {
        return tr("The server tells no changes of this kind.");
    }
    return now == Following::Refused     ? m_refusal
        : now == Following::Reconnecting ? m_stream->status().reason
                                         : QString();
}

void TableLoader::setLabelSelector(const QString &selector)
{
    if (selector != m_labelSelector) {
        m_labelSelector = selector;
        clear();
    }
}

void TableLoader::load(const LoadRequest &request)
{
    if (m_store.kind().listWord.isEmpty()) {
        writeDiagnostic(QStringLiteral("loadContent() requires override"));
        return;
    }
    if (!canLoad()) {
        return;
    }
    if (request.logged) {
        m_refusal.clear(); // the user wants to know how it is now
        m_streamFailures = 0;
        m_failures = 0;
    }
    if (wantsStream() && m_failures == 0) {
        follow();
    }
    if (m_stream && request.logged) {
        m_stream->retryNow();
    }
    if (request.logged || !m_stream || m_pace.hasFailed()) {
        list(request);
    }
}

void TableLoader::refresh()
{
    m_store.timePasses();
    const bool isDue = !m_sinceListing.isValid() || m_sinceListing.hasExpired(m_listingPause.count());
    if (!isDue || m_pipeline.hasUnattendedLoad()) {
        return;
    }
    if (!wantsStream() || !m_stream) {
        load({.unattended = true});
    } else if (needsListing()) {
        listChanges();
    }
}

/// Though there is a stream.
bool TableLoader::needsListing() const
{
    return m_pace.hasFailed()
        || (isPrinted() && following() == Following::Live
            && std::any_of(m_store.rows().begin(), m_store.rows().end(),
                [](const Row &row) { return showsSpanOfTime(*row); }));
}

void TableLoader::userIsBack()
{
    if (m_stream) {
        m_stream->retryNow();
    }
    if (m_failures < seldomFrom) {
        return;
    }
    m_failures = 0;
    m_listingPause = {};
    if (!isLoading()) {
        load({.unattended = true});
    }
}

void TableLoader::list(const LoadRequest &request)
{
    m_pace.listingBegins(!m_pipeline.isLoading());
    const std::shared_ptr<Shell> shell = m_window.kubeCtl().makeShell();
    shell->niceness = request.niceness;
    const QStringList arguments
        = QStringList{QStringLiteral("kubectl"), QStringLiteral("get"), m_store.kind().listWord}
        + placeArguments(m_window.currentContext(), m_window.currentNamespace());
    const QStringList labels = labelSelectorArguments(m_labelSelector);
    const bool everywhere = m_store.kind().namespaced && m_window.currentNamespace() == allNamespaces;
    m_pipeline.load(shell, arguments + labels, everywhere ? LineForm::WithNamespace : LineForm::Plain,
        request.logged, request.unattended);
}

/// Starts the stream, or goes on with it.
void TableLoader::follow()
{
    if (!m_isWatched) {
        m_unwatched.start();
    }
    if (m_stream) {
        m_stream->resume();
        return;
    }
    const QString context = m_window.currentContext();
    m_streamSince = QDateTime::currentDateTime();
    m_hasState = false;
    m_stream = std::make_unique<LiveStream>(isPrinted() ? versionsOf(m_store.kind()) : m_store.kind(),
        LivePlace{context, m_window.kubeCtl().contents().server(context), m_window.currentNamespace(),
            m_labelSelector},
        liveMeans([&window = m_window] { return window.kubeCtl().makeShell(); }));
    connect(m_stream.get(), &LiveStream::statusChanged, this, &TableLoader::streamChanged);
    if (isPrinted()) {
        connect(m_stream.get(), &LiveStream::batchReady, this, &TableLoader::changesTold);
    } else {
        connect(m_stream.get(), &LiveStream::batchReady, &m_liveRows, &LiveRows::take);
        if (!m_store.rows().empty()) {
            m_stream->repeat(); // those of a listing, of which some may be gone
        }
    }
    m_stream->start();
    announceLoading();
}

void TableLoader::leaveStream()
{
    if (m_stream) {
        m_rowsAsOf = rowsAsOf();
        m_stream->disconnect(this);
        m_stream->disconnect(&m_liveRows);
        m_stream->pause(); // starts nothing any more: the window may be gone before it is
        m_stream.release()->deleteLater(); // it may be the one that is telling this
    }
    m_liveRows.clear();
    m_pace.clear();
    m_hasState = false;
}

void TableLoader::streamChanged()
{
    const LiveStatus status = m_stream->status();
    if (status.state == LiveStatus::State::Live && m_hasState && !isPrinted()) {
        m_problem = m_liveRows.problem(); // no longer that of a listing that failed meanwhile
    }
    const bool failedAtOnce = !m_hasState && status.state == LiveStatus::State::Reconnecting;
    if (status.state == LiveStatus::State::Refused || (failedAtOnce && ++m_streamFailures >= mostFailures)) {
        m_refusal = status.reason;
    }
    if (failedAtOnce || !m_refusal.isEmpty()) {
        // A listing tells what is wrong in the words of its kubectl, and is what there is without a stream.
        leaveStream();
        list({.unattended = true});
    }
    announceLoading();
    Q_EMIT followingChanged();
}

void TableLoader::stateArrived()
{
    m_hasState = true;
    m_problem = m_liveRows.problem();
    m_failed = false;
    m_failures = 0;
    m_streamFailures = 0;
    announceLoading();
    Q_EMIT finished();
    Q_EMIT followingChanged();
}

/// Of a printed kind: which objects there are, and that some have changed, but not what is to be shown.
void TableLoader::changesTold(const LiveBatch &batch)
{
    const bool isFirstState = batch.stateComplete && !m_hasState;
    m_hasState = m_hasState || batch.stateComplete;
    if (isFirstState) {
        m_streamFailures = 0;
    }
    if (isFirstState || (m_hasState && (!batch.upserts.empty() || !batch.removals.empty()))) {
        m_pace.changed();
        Q_EMIT followingChanged();
    }
}

void TableLoader::listChanges()
{
    if (canLoad()) {
        list({.unattended = true});
    }
}

void TableLoader::listed(const LoadOutcome &outcome)
{
    m_sinceListing.start();
    const bool hasStreamRows = m_stream && m_hasState && !isPrinted(); // whatever the listing says
    if (outcome.stopped) {
        m_problem = tr("Loading was stopped.");
        m_failed = false;
        if (!m_store.rows().empty()) {
            m_problem += QLatin1Char('\n') + tr("The rows are those of an earlier load.");
        }
    } else {
        m_problem = loadProblem(outcome);
        m_failed
            = !hasStreamRows && !m_problem.isEmpty() && m_store.rows().empty() && !hasOnlyWarned(outcome);
        m_failures = outcome.endedWell ? 0 : m_failures + 1;
        if (outcome.endedWell || !hasStreamRows) {
            m_rowsAsOf = outcome.startedAt;
        }
        if (!outcome.endedWell) {
            m_streamFailures = 0; // it is the cluster that fails
        }
    }
    m_listingPause = pauseAfter(outcome, m_failures);
    if (outcome.otherTitles) {
        Q_EMIT otherTitles(*outcome.otherTitles);
    }
    if (!m_pipeline.isLoading()) {
        m_pace.listingsEnded(outcome.endedWell && !outcome.stopped, m_listingPause);
    }
    if (m_stream && !isPrinted()) {
        m_stream->repeat(); // the listing was read a while ago
    }
    if (!m_pipeline.isMerging()) {
        m_liveRows.release();
    }
    if (m_problem.isEmpty() && !outcome.otherTitles && wantsStream() && !m_stream && canLoad()) {
        follow(); // the cluster answers again
    }
    Q_EMIT finished();
}

void TableLoader::stop()
{
    m_pipeline.stop();
    if (isStreamLoading()) {
        leaveStream();
        m_problem = tr("Loading was stopped.");
        m_failed = false;
        announceLoading();
        Q_EMIT finished();
    }
}

void TableLoader::clear()
{
    leaveStream();
    m_refusal.clear();
    m_sinceListing.invalidate();
    m_listingPause = {};
    m_failures = 0;
    m_streamFailures = 0;
    m_rowsAsOf = QDateTime();
    m_problem.clear();
    m_failed = false;
    m_pipeline.clear();
    m_liveRows.release();
    announceLoading();
    Q_EMIT rowsChanged();
    Q_EMIT followingChanged();
}

void TableLoader::setWatched(bool watched)
{
    const bool wasWatched = std::exchange(m_isWatched, watched);
    if (!watched) {
        if (wasWatched) { // else the minute has begun
            m_unwatched.start();
        }
        return;
    }
    m_unwatched.stop();
    if (m_stream) {
        m_stream->resume();
    }
}

void TableLoader::liveUpdatesSwitched()
{
    if (!m_window.liveUpdates()) {
        leaveStream();
    }
    m_refusal.clear();
    if (m_isWatched) {
        load({.unattended = true});
    }
    announceLoading();
    Q_EMIT followingChanged();
}

void TableLoader::announceLoading()
{
    if (const bool loading = isLoading(); loading != m_wasLoading) {
        m_wasLoading = loading;
        Q_EMIT loadingChanged(loading);
    }
}

} // namespace tidewright
