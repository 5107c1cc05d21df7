// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/decoding/LiveRun.h"
#include "resources/live/KubectlComplaint.h"
#include "resources/live/LiveObjects.h"

#include <functional>
#include <memory>
#include <mutex>

namespace tidewright {

/// How a child of a live stream ended, with all that was learned from it.
struct LiveRunEnd
{
    LiveRun run;
    bool hasFailed = false;
    /// Its standard error without log lines, cut; or how it ended. Empty after a success.
    KubectlComplaint complaint;
};

/// What stands between the threads that read the children of one live stream and the main thread. Shared by
/// them; the children may outlive the stream. All operations may be called on any thread.
class LiveFeed : public std::enable_shared_from_this<LiveFeed>
{
public:
    /// `news` is called, on any thread and under no lock, when there is something to fetch. It is called once
    /// until then.
    LiveFeed(std::shared_ptr<const ResourceKind> kind, bool tellsNamespaces, std::function<void()> news);

    /// What is to be done with the output of a child.
    struct Handlers
    {
        std::function<void(const QByteArray &output, const std::optional<QByteArray> &error)> piece;
        std::function<void(const std::optional<QString> &failure)> ended;
    };
    /// Takes a new child for the only one whose output counts. `isStateUntilConnected`: what comes before the
    /// answer to its watch is the whole state.
    Handlers follow(std::shared_ptr<LiveDecoder> decoder, bool isStateUntilConnected);
    /// Nothing counts any more until the next child. Yields what the one before had learned.
    LiveRun leave();

    void beginState();
    void completeState();
    /// LiveObjects::repeat
    void repeat();

    struct News
    {
        bool isConnected = false; ///< the server has answered the child
        bool hasEvents = false; ///< and has sent what could be read
        bool hasLost = false; ///< it sent an error, or what cannot be read: nothing that follows counts
        bool isStateComplete = false;
        bool isUnsorted = false; ///< LiveRun::isUnsorted
        qint64 pieces = 0; ///< of standard output that came from it
        std::optional<LiveRunEnd> end; ///< told once
    };
    News fetchNews();
    LiveBatch takeBatch();
    bool hasChanges() const;

private:
    struct Child;

    void takeOutput(Child &child, const QByteArray &output);
    void takeError(Child &child, const QByteArray &error);
    void end(Child &child, const std::optional<QString> &failure);
    void connected(Child &child);
    /// Runs `change` if the child is still the one that counts, and reports news.
    void update(const Child &child, const std::function<void()> &change);

    const std::function<void()> m_news;
    mutable std::mutex m_mutex; // guards the rest
    LiveObjects m_objects;
    const Child *m_child = nullptr; // only compared
    LiveRun m_run; // of that child, as of its latest piece
    bool m_isConnected = false;
    qint64 m_pieces = 0;
    std::optional<LiveRunEnd> m_end;
    bool m_isAnnounced = false;
};

} // namespace tidewright
