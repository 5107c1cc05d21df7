// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/LiveStream.h"

#include "core/KubeCtl.h"
#include "platform/threads/MainQueue.h"
#include "resources/live/ResourcePaths.h"

#include <utility>

namespace tidewright {

namespace {

using namespace std::chrono_literals;
using State = LiveStatus::State;

/// Of changes that keep coming. One after a quiet moment is shown at once. Painting costs most of it all.
constexpr auto pace = 33ms;
/// Of a state on a watch, which a server tells without a pause.
constexpr auto stateSilenceLimit = 10s;
/// One that is not complete by then never will be: the server may know nothing of such a state.
constexpr auto stateLimit = 3min;

} // namespace

LiveStream::LiveStream(const ResourceKind &kind, const LivePlace &place, LiveMeans means, QObject *parent)
    : QObject(parent)
    , m_kind(std::make_shared<ResourceKind>(kind))
    , m_requests(m_kind, place)
    , m_means(std::move(means))
    , m_feed(std::make_shared<LiveFeed>(m_kind, m_kind->namespaced && place.nameSpace == allNamespaces,
          [self = QPointer(this)] { postToMain(self, [](LiveStream &stream) { stream.newsArrived(); }); }))
{
}

LiveStream::~LiveStream()
{
    m_feed->leave();
    shellQueue().post([feed = std::move(m_feed)] {}); // freeing many objects takes longer than a frame
}

void LiveStream::start()
{
    if (const QString obstacle = m_requests.obstacle(); !obstacle.isEmpty()) {
        refuse(obstacle);
        return;
    }
    begin();
}

void LiveStream::begin()
{
    if (m_requests.isRaw()) {
        beginState();
    } else {
        watch();
    }
}

void LiveStream::pause()
{
    if (m_status.state == State::Paused || m_status.state == State::Refused) {
        return;
    }
    const bool wasWatching = m_task == Task::Watch;
    const LiveRun run = stopChild();
    if (wasWatching && !run.garbled.isEmpty()) {
        m_isStateComplete = false;
    } else if (wasWatching && !run.resourceVersion.isEmpty()) {
        m_version = run.resourceVersion;
    }
    m_changesBefore.reset();
    setStatus(State::Paused);
}

void LiveStream::resume()
{
    if (m_status.state != State::Paused) {
        return;
    }
    setStatus(m_hasRows ? State::Reconnecting : State::Loading);
    if (m_isStateComplete) {
        watch();
    } else {
        begin();
    }
}

void LiveStream::retryNow()
{
    if (m_nextStep && m_task == Task::None && m_status.state == State::Reconnecting) {
        ++m_turn; // the pause is over
        (this->*std::exchange(m_nextStep, nullptr))();
    }
}

void LiveStream::repeat()
{
    m_feed->repeat();
    if (m_isStateComplete) {
        deliver();
    }
}

void LiveStream::beginState()
{
    m_isStateComplete = false;
    m_stateSince = m_means.date();
    m_page.reset();
    m_feed->beginState();
    const LiveRequest request
        = m_requests.paths().mayWatchState() ? m_requests.stateAndWatch() : LiveRequest();
    if (request.arguments.isEmpty()) {
        requestPage();
    } else {
        run(Task::StateWatch, request);
    }
}

void LiveStream::requestPage()
{
    const LiveRequest request = m_requests.page(m_page ? &*m_page : nullptr);
    if (request.arguments.isEmpty() && !m_requests.paths().hasLearned()) {
        discover();
        return;
    }
    if (request.arguments.isEmpty()) {
        refuse(QStringLiteral("The cluster does not know “%1”, or does not let it be watched.")
                   .arg(m_kind->listWord));
        return;
    }
    run(Task::Page, request);
}

void LiveStream::watch()
{
    if (!m_requests.isRaw()) {
        m_isStateComplete = false;
        m_feed->beginState();
    }
    run(Task::Watch, m_requests.watch(m_version));
}

void LiveStream::discover()
{
    run(Task::Discovery, m_requests.discovery());
}

void LiveStream::run(Task task, const LiveRequest &request)
{
    if (m_status.state == State::Paused) {
        return; // by whoever was just told of the step before
    }
    stopChild();
    m_task = task;
    m_nextStep = nullptr;
    m_childSince = m_means.now();
    m_isAnswered = false;
    const bool isState = task == Task::Watch && !m_requests.isRaw();
    LiveFeed::Handlers handlers = m_feed->follow(request.decoder, isState);
    m_child = m_means.run(request.arguments, std::move(handlers.piece), std::move(handlers.ended));
    if (!isState) {
        guardAgainstSilence(0);
    }
}

LiveRun LiveStream::stopChild()
{
    ++m_turn;
    m_task = Task::None;
    m_pieces = 0;
    LiveRun run = m_feed->leave();
    m_child.reset();
    return run;
}

void LiveStream::newsArrived()
{
    const LiveFeed::News news = m_feed->fetchNews();
    const QPointer self(this);
    if (m_task == Task::None) {
        scheduleBatch(); // of a child that was left meanwhile: what it told before that counts
        return;
    }
    if (m_task == Task::Watch && m_isStateComplete && news.pieces > m_pieces) {
        m_status.asOf = m_means.date();
    }
    if (news.pieces > m_pieces && m_task == Task::Watch) {
        m_patience.heard();
    }
    m_pieces = news.pieces;
    if (news.hasEvents && m_task == Task::Watch) {
        m_patience.understood();
    }
    if (!news.end) {
        scheduleBatch();
    } else {
        deliver();
    }
    if (self && m_task == Task::StateWatch && news.isStateComplete) {
        stateWatched(news.isUnsorted);
    }
    if (self && news.isConnected && m_task == Task::Watch) {
        m_requests.paths().watchAnswered();
        m_isStateComplete = news.isStateComplete;
        m_hasRows = true;
        m_status.asOf = std::exchange(m_isAnswered, true) ? m_status.asOf : m_means.date();
        setStatus(State::Live);
    }
    if (self && news.end) {
        runEnded(*news.end);
    } else if (self && news.hasLost && (m_task == Task::Watch || m_task == Task::StateWatch)) {
        runEnded({m_feed->leave(), false, {}}); // whenever it would have ended
    }
}

void LiveStream::scheduleBatch()
{
    if (m_isBatchDue || !m_feed->hasChanges()) {
        return;
    }
    const auto since = m_means.now() - m_deliveredAt;
    if (since >= pace) {
        deliver();
        return;
    }
    m_isBatchDue = true;
    m_means.later(pace - since, [self = QPointer(this)] {
        if (self && self->m_isBatchDue) {
            self->deliver();
        }
    });
}

void LiveStream::deliver()
{
    m_isBatchDue = false;
    m_deliveredAt = m_means.now();
    const LiveBatch batch = m_feed->takeBatch();
    m_changes += batch.upserts.size() + batch.removals.size();
    if (!batch.isEmpty()) {
        Q_EMIT batchReady(batch);
    }
}

void LiveStream::runEnded(const LiveRunEnd &end)
{
    const Task task = m_task;
    const auto lived = m_means.now() - m_childSince;
    stopChild();
    if (task == Task::Watch) {
        m_patience.watchEnded(lived, m_isAnswered, !end.run.resourceVersion.isEmpty() || !m_requests.isRaw());
    }
    switch (task) {
    case Task::Discovery:
        discoveryEnded(end);
        break;
    case Task::Page:
        pageEnded(end);
        break;
    case Task::StateWatch:
        stateWatchEnded(end);
        break;
    case Task::Watch:
        watchEnded(end);
        break;
    case Task::None:
        break;
    }
}

void LiveStream::pageEnded(const LiveRunEnd &end)
{
    const LiveRun &page = end.run;
    if (end.hasFailed && end.complaint.isUnknownPlace() && !m_requests.paths().hasLearned()) {
        discover();
    } else if (end.hasFailed && end.complaint.isExpired()) {
        lostState(end.complaint.firstLine());
    } else if (end.hasFailed && end.complaint.isFinal()) {
        refuse(end.complaint.firstLine());
    } else if (end.hasFailed) {
        tryAgain(end.complaint.firstLine(), &LiveStream::requestPage);
    } else if (!page.garbled.isEmpty() || !page.isWholeList) {
        lostState(page.garbled.isEmpty() ? QStringLiteral("The server's answer was cut off.") : page.garbled);
    } else if (!page.continueToken.isEmpty()) {
        m_patience.succeeded();
        m_page = page;
        requestPage();
    } else {
        m_patience.succeeded();
        m_version = page.resourceVersion;
        m_isStateComplete = true;
        m_hasRows = true;
        m_status.asOf = m_stateSince;
        m_feed->completeState();
        const QPointer self(this);
        deliver();
        if (!self || m_task != Task::None || m_status.state == State::Paused) {
            return;
        }
        if (wasAnythingHeldBack()) {
            refuse(
                QStringLiteral("Changes on the server do not come through: something on the way holds them "
                               "back."));
        } else {
            watch();
        }
    }
}

/// From here on it is a watch like any other.
void LiveStream::stateWatched(bool isUnsorted)
{
    if (isUnsorted) {
        m_requests.paths().stateWatchFailed(true);
    }
    m_patience.succeeded();
    m_task = Task::Watch;
    m_isStateComplete = true;
    guardAgainstSilence(m_pieces);
    deliver();
}

/// Whatever it was: pages have words for it.
void LiveStream::stateWatchEnded(const LiveRunEnd &end)
{
    const QString &said = end.complaint.text;
    m_requests.paths().stateWatchFailed(said.contains(QLatin1String("sendInitialEvents"))
        || said.contains(QLatin1String("resourceVersionMatch")));
    beginState();
}

void LiveStream::watchEnded(const LiveRunEnd &end)
{
    if (!end.run.resourceVersion.isEmpty()) {
        m_version = end.run.resourceVersion;
    }
    const QString complaint = end.complaint.firstLine();
    if (end.run.isExpired || (end.hasFailed && end.complaint.isExpired())) {
        lostState(QStringLiteral("The server has forgotten what changed since."));
    } else if (!end.run.garbled.isEmpty()) {
        lostState(end.run.garbled);
    } else if (!end.run.serverError.isEmpty()) {
        lostState(end.run.serverError);
    } else if (end.hasFailed && end.complaint.isFinal()) {
        refuse(complaint);
    } else if (end.hasFailed) {
        tryAgain(complaint, &LiveStream::watch);
    } else if (m_patience.endsEveryWatch()) {
        refuse(QStringLiteral("The server ends every watch at once."));
    } else if (LivePatience::isShort(m_means.now() - m_childSince)) {
        tryAgain(QStringLiteral("The server ended the watch."), &LiveStream::watch);
    } else {
        watch(); // servers end watches after a while, by design
    }
}

void LiveStream::discoveryEnded(const LiveRunEnd &end)
{
    ResourcePaths &paths = m_requests.paths();
    paths.learn(end.run.text); // of which there is some even when one of the cluster's parts does not answer
    if (paths.hasLearned()) {
        beginState();
    } else {
        tryAgain(end.complaint.text.isEmpty() ? QStringLiteral("The cluster does not tell what it serves.")
                                              : end.complaint.firstLine(),
            &LiveStream::discover);
    }
}

/// What came since, or part of it, is not known: only the whole state helps.
void LiveStream::lostState(const QString &reason)
{
    m_isStateComplete = false;
    m_changesBefore.reset();
    if (const auto step = m_patience.lostState(); step == LivePatience::Step::GiveUp) {
        refuse(reason);
    } else if (step == LivePatience::Step::Later) {
        tryAgain(reason, &LiveStream::begin);
    } else {
        setStatus(m_hasRows ? State::Reconnecting : State::Loading, reason);
        begin();
    }
}

void LiveStream::tryAgain(const QString &reason, Step step)
{
    const auto pause = m_patience.failed();
    m_nextStep = step;
    setStatus(State::Reconnecting, reason);
    if (m_status.state == State::Reconnecting) {
        after(pause, [this] { retryNow(); });
    }
}

void LiveStream::refuse(const QString &reason)
{
    stopChild();
    setStatus(State::Refused, reason);
}

void LiveStream::guardAgainstSilence(qint64 piecesBefore)
{
    const bool isState = m_task == Task::StateWatch;
    after(isState ? stateSilenceLimit : m_patience.silenceLimit(), [this, piecesBefore, isState] {
        if (isState && m_task != Task::StateWatch) {
            return; // told, and guarded anew
        }
        if (m_pieces == piecesBefore || (isState && m_means.now() - m_childSince >= stateLimit)) {
            wasSilent();
        } else {
            guardAgainstSilence(m_pieces);
        }
    });
}

void LiveStream::wasSilent()
{
    const bool wasWatching = m_task == Task::Watch;
    const bool wasToTellState = m_task == Task::StateWatch;
    const bool wasAnswered = m_isAnswered;
    const LiveRun run = stopChild();
    m_requests.paths().stateWatchFailed(wasToTellState); // something may hold back what it tells
    if (wasToTellState) {
        beginState();
        return;
    }
    if (wasWatching && !run.resourceVersion.isEmpty()) {
        m_version = run.resourceVersion;
    }
    if (!wasWatching || !wasAnswered) {
        tryAgain(QStringLiteral("The server does not answer."),
            m_isStateComplete ? &LiveStream::watch : &LiveStream::begin);
        return;
    }
    const QPointer self(this);
    deliver();
    if (self && m_status.state == State::Live) {
        m_changesBefore = m_changes;
        beginState();
    }
}

/// The state has come that was to tell what the watch did not.
bool LiveStream::wasAnythingHeldBack()
{
    const auto before = std::exchange(m_changesBefore, std::nullopt);
    return before && m_patience.compared(m_changes != *before);
}

void LiveStream::after(std::chrono::milliseconds delay, std::function<void()> action)
{
    m_means.later(delay, [self = QPointer(this), turn = m_turn, action = std::move(action)] {
        if (self && self->m_turn == turn) {
            action();
        }
    });
}

void LiveStream::setStatus(State state, const QString &reason)
{
    if (m_status.state != state || m_status.reason != reason) {
        m_status.state = state;
        m_status.reason = reason;
        Q_EMIT statusChanged();
    }
}

} // namespace tidewright
