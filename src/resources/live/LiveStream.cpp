// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/LiveStream.h"

#include "core/KubeCtl.h"
#include "platform/threads/MainQueue.h"
#include "resources/live/KubectlComplaint.h"
#include "resources/live/ListDecoder.h"
#include "resources/live/ResourcePaths.h"
#include "resources/live/TemplateDecoder.h"
#include "resources/live/WatchDecoder.h"

#include <QUrl>

#include <algorithm>
#include <array>
#include <utility>

namespace tidewright {

namespace {

using namespace std::chrono_literals;
using State = LiveStatus::State;

constexpr auto frame = 16ms;
constexpr auto firstPause = 1000ms;
constexpr int longestPauseDoublings = 6;
/// Most servers note the passing of time each minute (bookmarks), some only once something has changed. So
/// after this much silence the state tells whether there was nothing to say or somebody holds bytes back.
constexpr auto silenceLimit = 150s;
constexpr int longestSilenceDoublings = 4;
constexpr auto shortWatch = 5s;
constexpr int patienceWithSilence = 2;
constexpr int patience = 3; // how often something must go wrong in a row before listing is the better way

/// Objects per page. A screen's worth comes first; the rest in few runs, none of which is a burden to a
/// server.
constexpr std::array<int, 3> pageSizes{500, 2000, 8000};

/// Collects what is not about objects.
class TextDecoder : public LiveDecoder
{
public:
    void take(QByteArrayView bytes, std::vector<LiveChange> &) override { m_run.text += bytes; }
};

} // namespace

LiveStream::LiveStream(const ResourceKind &kind, LivePlace place, LiveMeans means, QObject *parent)
    : QObject(parent)
    , m_kind(std::make_shared<ResourceKind>(kind))
    , m_place(std::move(place))
    , m_means(std::move(means))
    , m_feed(std::make_shared<LiveFeed>(m_kind, m_kind->namespaced && m_place.nameSpace == allNamespaces,
          [self = QPointer(this)] { postToMain(self, [](LiveStream &stream) { stream.newsArrived(); }); }))
{
}

LiveStream::~LiveStream()
{
    m_feed->leave();
}

void LiveStream::start()
{
    QString problem;
    if (!m_kind->isConfidential) {
        auto lines = std::make_shared<ObjectLines>(*m_kind, problem);
        m_lines = problem.isEmpty() ? std::move(lines) : nullptr;
    }
    if (!isRaw() && !watchOutputArguments(*m_kind)) {
        refuse(problem);
        return;
    }
    begin();
}

void LiveStream::begin()
{
    if (isRaw()) {
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
    m_continueToken.clear();
    m_page = 0;
    m_feed->beginState();
    requestPage();
}

QString LiveStream::rawPath(const QString &query) const
{
    const auto path = ResourcePaths::of(m_place.server).find(m_kind->listWord);
    return path ? path->listPath(m_place.server, m_place.nameSpace) + query
            + labelSelectorQuery(m_place.labelSelector)
                : QString();
}

void LiveStream::requestPage()
{
    const auto size = pageSizes[static_cast<std::size_t>(std::min<int>(m_page, pageSizes.size() - 1))];
    QString query = QStringLiteral("?limit=%1").arg(size);
    if (!m_continueToken.isEmpty()) {
        query += QLatin1String("&continue=")
            + QString::fromLatin1(QUrl::toPercentEncoding(QString::fromUtf8(m_continueToken)));
    }
    const QString path = rawPath(query);
    if (path.isEmpty()) {
        refuse(QStringLiteral("The cluster does not know “%1”.").arg(m_kind->listWord));
        return;
    }
    run(Task::Page, {QStringLiteral("--raw"), path}, std::make_shared<ListDecoder>(m_lines));
}

void LiveStream::watch()
{
    QStringList arguments{QStringLiteral("-v=6")}; // tells when the server has answered
    if (!isRaw()) {
        m_isStateComplete = false;
        m_feed->beginState();
        arguments += m_kind->listWord;
        if (m_kind->namespaced) {
            arguments += namespaceArgument(m_place.nameSpace);
        }
        arguments += labelSelectorArguments(m_place.labelSelector);
        arguments += watchOutputArguments(*m_kind).value_or(QStringList());
        run(Task::Watch, arguments, std::make_shared<TemplateDecoder>());
        return;
    }
    arguments += {QStringLiteral("--raw"),
        rawPath(QStringLiteral("?watch=1&allowWatchBookmarks=true&resourceVersion=%1")
                    .arg(QString::fromLatin1(QUrl::toPercentEncoding(QString::fromUtf8(m_version)))))};
    run(Task::Watch, arguments, std::make_shared<WatchDecoder>(m_lines));
}

void LiveStream::discover()
{
    run(Task::Discovery, ResourcePaths::discoveryArguments(), std::make_shared<TextDecoder>());
}

void LiveStream::run(Task task, const QStringList &arguments, std::shared_ptr<LiveDecoder> decoder)
{
    if (m_status.state == State::Paused) {
        return; // by whoever was just told of the step before
    }
    stopChild();
    m_task = task;
    m_childSince = m_means.now();
    m_isAnswered = false;
    const bool isState = task == Task::Watch && !isRaw();
    LiveFeed::Handlers handlers = m_feed->follow(std::move(decoder), isState);
    QStringList all = task == Task::Discovery ? QStringList() : QStringList(QStringLiteral("get"));
    if (!m_place.context.isEmpty()) {
        all += contextArgument(m_place.context);
    }
    m_child = m_means.run(all + arguments, std::move(handlers.piece), std::move(handlers.ended));
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
    m_status.asOf = QDateTime::currentDateTime();
    if (news.pieces > m_pieces && m_task == Task::Watch) {
        m_silences = 0;
        m_quietTimes = 0;
        m_emptyWatches = 0;
    }
    m_pieces = news.pieces;
    if (news.hasEvents && m_task == Task::Watch) {
        m_lostStates = 0;
    }
    if (!news.end) {
        scheduleBatch();
    } else {
        deliver();
    }
    if (self && news.isConnected && m_task == Task::Watch) {
        m_isStateComplete = news.isStateComplete;
        m_hasRows = true;
        m_isAnswered = true;
        setStatus(State::Live);
    }
    if (self && news.end) {
        runEnded(*news.end);
    }
}

void LiveStream::scheduleBatch()
{
    if (m_isBatchDue || !m_feed->hasChanges()) {
        return;
    }
    const auto since = m_means.now() - m_deliveredAt;
    if (since >= frame) {
        deliver();
        return;
    }
    m_isBatchDue = true;
    m_means.later(frame - since, [self = QPointer(this)] {
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
    if (task == Task::Watch && lived < shortWatch && end.run.resourceVersion.isEmpty() && isRaw()) {
        ++m_emptyWatches;
    } else if (task == Task::Watch && lived >= shortWatch && m_isAnswered) {
        m_failures = 0;
    }
    switch (task) {
    case Task::Discovery:
        discoveryEnded(end);
        break;
    case Task::Page:
        pageEnded(end);
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
    if (end.hasFailed && end.complaint.isUnknownPlace() && !ResourcePaths::of(m_place.server).hasLearned()) {
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
        m_failures = 0;
        m_continueToken = page.continueToken;
        ++m_page;
        requestPage();
    } else {
        m_failures = 0;
        m_version = page.resourceVersion;
        m_isStateComplete = true;
        m_hasRows = true;
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
    } else if (m_emptyWatches >= patience) {
        refuse(QStringLiteral("The server ends every watch at once."));
    } else if (m_means.now() - m_childSince < shortWatch) {
        tryAgain(QStringLiteral("The server ended the watch."), &LiveStream::watch);
    } else {
        watch(); // servers end watches after a while, by design
    }
}

void LiveStream::discoveryEnded(const LiveRunEnd &end)
{
    ResourcePaths &paths = ResourcePaths::of(m_place.server);
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
    if (++m_lostStates > patience) {
        refuse(reason);
    } else if (m_lostStates == 1) {
        setStatus(m_hasRows ? State::Reconnecting : State::Loading, reason);
        begin();
    } else {
        tryAgain(reason, &LiveStream::begin);
    }
}

void LiveStream::tryAgain(const QString &reason, void (LiveStream::*step)())
{
    const auto pause = firstPause * (1 << std::min(m_failures, longestPauseDoublings));
    ++m_failures;
    setStatus(State::Reconnecting, reason);
    if (m_status.state == State::Reconnecting) {
        after(pause, [this, step] { (this->*step)(); });
    }
}

void LiveStream::refuse(const QString &reason)
{
    stopChild();
    setStatus(State::Refused, reason);
}

void LiveStream::guardAgainstSilence(qint64 piecesBefore)
{
    after(silenceLimit * (1 << m_quietTimes), [this, piecesBefore] {
        if (m_pieces == piecesBefore) {
            wasSilent();
        } else {
            guardAgainstSilence(m_pieces);
        }
    });
}

void LiveStream::wasSilent()
{
    const bool wasWatching = m_task == Task::Watch;
    const bool wasAnswered = m_isAnswered;
    const LiveRun run = stopChild();
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
    if (before && m_changes != *before) {
        return ++m_silences >= patienceWithSilence;
    }
    if (before) {
        m_quietTimes = std::min(m_quietTimes + 1, longestSilenceDoublings);
    }
    return false;
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
