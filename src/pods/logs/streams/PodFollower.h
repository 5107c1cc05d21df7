// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/streams/LogStreams.h"
#include "pods/logs/streams/PodWatch.h"

namespace tidewright {

/// Follows every container of the pods that workloads and services select, in a stream of its own: `kubectl
/// logs
/// --all-containers` gives up all of a pod when one container has not started, and does not come back to one
/// that restarts. Pods that come join with their first line. A container that restarts, or whose stream
/// breaks off, is taken up again behind its last line. Main thread.
class PodFollower : public QObject
{
    Q_OBJECT
public:
    /// The streams outlive it, and are its alone. A workload is a pair whose pod is its name for kubectl,
    /// such as "deploy/web".
    PodFollower(LogStreams &streams, LogPlace place, const std::vector<ContainerPair> &workloads,
        const LogOptions &options);

    void start();
    /// More than 20 streams at a time need the user's consent: `tooMany` is told, and nothing is started
    /// until one of these is called. What was declined is not asked again.
    void allow(int streams);
    void decline();

    /// Which pods there are was told at least once, of each workload.
    bool knowsPods() const;
    /// Why the latest pods are not known; empty while they are.
    QString problem() const;

Q_SIGNALS:
    /// The streams have one more source.
    void added(const ContainerPair &container);
    /// Something has become of a source; what it writes next comes behind it.
    void happened(int source, const QString &what);
    void tooMany(int streams);
    /// What `knowsPods` and `problem` say.
    void podsChanged();

private:
    /// A source.
    struct Followed
    {
        ContainerPair container;
        std::size_t watch = 0; ///< of which workload
        QString uid; ///< of the pod
        bool fromBegin = false; ///< its log is shown whole
        int restarts = 0; ///< when its latest stream was begun
        std::shared_ptr<LogTimestamps> timestamps = {};
        bool readsPrevious = false; ///< what the instance before has left comes first
        int failures = 0; ///< streams without a line, one after another
        int pause = 0; ///< looks to wait for before the next
        bool isGone = false; ///< its pod
    };
    struct Watched
    {
        std::unique_ptr<PodWatch> watch;
        bool isKnown = false;
        QString problem = {};
    };

    enum class Question { None, Asked, Declined };

    void take(std::size_t watch, const std::vector<LogPod> &pods);
    int indexOf(std::size_t watch, const LogPod &pod, const LogContainer &container);
    bool wants(int index, const LogContainer &container);
    std::size_t mayStart(std::size_t wanted);
    void answered(Question answer);
    void follow(int index, const LogContainer &container);
    void startStream(int index, LogOptions options);
    void findGone(std::size_t watch, const std::vector<LogPod> &pods);
    void streamsChanged(const QList<int> &sources);
    void streamEnded(int index);
    void tell(int index, const QString &what);

    LogStreams &m_streams;
    const LogPlace m_place;
    const LogOptions m_options;
    std::vector<ContainerPair> m_workloads;
    std::vector<Watched> m_watches;
    std::vector<Followed> m_followed; ///< by source
    int m_allowed;
    Question m_question = Question::None;
};

} // namespace tidewright
