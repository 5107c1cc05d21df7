// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/live/LiveBatch.h"
#include "resources/live/LiveFeed.h"
#include "resources/live/LiveMeans.h"
#include "resources/live/LivePatience.h"
#include "resources/live/LiveRequests.h"

#include <QDateTime>
#include <QObject>

#include <optional>

namespace tidewright {

/// How a table may describe its rows.
struct LiveStatus
{
    enum class State {
        Loading, ///< the first state is on its way
        Live, ///< every change arrives as it happens
        Reconnecting, ///< the rows are those of `asOf`, until the server is reached again
        Paused, ///< likewise, until `resume`
        Refused, ///< there is and will be no stream: list the objects instead
    };

    State state = State::Loading;
    QDateTime asOf; ///< when the rows were known to be true; invalid before the first state is complete
    QString reason; ///< of Reconnecting and Refused: a sentence, or what kubectl complained of
};

/// Keeps one table's rows as the cluster has them: fetches the state through `kubectl get --raw`, page by
/// page or, where an answer to a watch has come through before, by a watch that begins with it, and then
/// watches for changes; after an interruption it goes on where it was, or compares the whole state once more
/// when the server has forgotten that. Kinds with confidential data never come raw but as kubectl's own `get
/// --watch` prints them. Owned by a table, which lets it go whenever it likes; nothing waits for a child.
/// Main thread; JSON is read on the threads of the children.
class LiveStream : public QObject
{
    Q_OBJECT
public:
    LiveStream(const ResourceKind &kind, const LivePlace &place, LiveMeans means, QObject *parent = nullptr);
    ~LiveStream() override;

    /// Once. What is found out at once is told by `status` only.
    void start();
    /// Ends the child; what is known is kept, so that `resume` costs no new state as a rule.
    void pause();
    void resume();
    /// Cuts short the pause before the next try.
    void retryNow();
    /// Reports all objects once more, as soon as all are known: the rows have come from elsewhere meanwhile.
    void repeat();

    const LiveStatus &status() const { return m_status; }

Q_SIGNALS:
    /// At most thirty times a second but for the ends of states. Changes of rows only come through this.
    void batchReady(const tidewright::LiveBatch &batch);
    void statusChanged();

private:
    enum class Task { None, Discovery, Page, StateWatch, Watch };

    void begin();
    void beginState();
    void requestPage();
    void watch();
    void discover();
    void run(Task task, const LiveRequest &request);
    LiveRun stopChild();

    void newsArrived();
    void scheduleBatch();
    void deliver();
    void runEnded(const LiveRunEnd &end);
    void pageEnded(const LiveRunEnd &end);
    void stateWatched(bool isUnsorted);
    void stateWatchEnded(const LiveRunEnd &end);
    void watchEnded(const LiveRunEnd &end);
    void discoveryEnded(const LiveRunEnd &end);
    void lostState(const QString &reason);
    void guardAgainstSilence(qint64 piecesBefore);
    void wasSilent();
    bool wasAnythingHeldBack();

    using Step = void (LiveStream::*)();
    void tryAgain(const QString &reason, Step step);
    void refuse(const QString &reason);
    void setStatus(LiveStatus::State state, const QString &reason = {});
    void after(std::chrono::milliseconds delay, std::function<void()> action);

    const std::shared_ptr<const ResourceKind> m_kind;
    const LiveRequests m_requests;
    const LiveMeans m_means;
    std::shared_ptr<LiveFeed> m_feed;
    LiveStatus m_status;

    Task m_task = Task::None;
    std::shared_ptr<void> m_child;
    quint64 m_turn = 0; // what was put off before another turn began is dropped
    Step m_nextStep = nullptr; // after a pause
    std::chrono::milliseconds m_childSince{0};
    QDateTime m_stateSince; // the latest one was begun
    qint64 m_pieces = 0;
    bool m_isAnswered = false; // by the server, on a watch

    bool m_isStateComplete = false;
    bool m_hasRows = false; // a state was complete once
    std::optional<LiveRun> m_page; // of this state, the latest
    QByteArray m_version; // the watch goes on from here
    LivePatience m_patience;

    std::chrono::milliseconds m_deliveredAt{0};
    bool m_isBatchDue = false;
    std::size_t m_changes = 0; // of rows, delivered so far
    std::optional<std::size_t> m_changesBefore; // a state that is to tell what a silent watch did not
};

} // namespace tidewright
