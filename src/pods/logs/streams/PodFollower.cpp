// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/streams/PodFollower.h"

#include <algorithm>

namespace tidewright {

namespace {

constexpr int allowedUnasked = 20;
constexpr int longestPause = 12; // looks

} // namespace

PodFollower::PodFollower(LogStreams &streams, LogPlace place, const std::vector<ContainerPair> &workloads,
    const LogOptions &options)
    : m_streams(streams)
    , m_place(std::move(place))
    , m_options(options)
    , m_workloads(workloads)
    , m_allowed(allowedUnasked)
{
    connect(&streams, &LogStreams::changed, this, &PodFollower::streamsChanged);
    for (std::size_t i = 0; i < workloads.size(); ++i) {
        auto watch = std::make_unique<PodWatch>(m_place, workloads[i].pod, workloads[i].nameSpace);
        connect(watch.get(), &PodWatch::listed, this, [this, i](const auto &pods) { take(i, pods); });
        connect(watch.get(), &PodWatch::failed, this, [this, i](const QString &problem) {
            m_watches[i].problem = problem;
            Q_EMIT podsChanged();
        });
        m_watches.push_back({.watch = std::move(watch)});
    }
}

void PodFollower::start()
{
    for (const Watched &watched : m_watches) {
        watched.watch->start();
    }
}

void PodFollower::allow(int streams)
{
    m_allowed = std::max(m_allowed, streams);
    answered(Question::None);
}

void PodFollower::decline()
{
    answered(Question::Declined);
}

void PodFollower::answered(Question answer)
{
    m_question = answer;
    for (const Watched &watched : m_watches) {
        watched.watch->lookSoon();
    }
}

bool PodFollower::knowsPods() const
{
    return std::all_of(
        m_watches.cbegin(), m_watches.cend(), [](const Watched &watched) { return watched.isKnown; });
}

QString PodFollower::problem() const
{
    const auto found = std::find_if(m_watches.cbegin(), m_watches.cend(),
        [](const Watched &watched) { return !watched.problem.isEmpty(); });
    return found == m_watches.cend() ? QString() : found->problem;
}

void PodFollower::take(std::size_t watch, const std::vector<LogPod> &pods)
{
    std::vector<std::pair<int, const LogContainer *>> wanted;
    for (const LogPod &pod : pods) {
        for (const LogContainer &container : pod.containers) {
            const int index = indexOf(watch, pod, container);
            if (wants(index, container)) {
                wanted.emplace_back(index, &container);
            }
        }
    }
    findGone(watch, pods);
    wanted.resize(mayStart(wanted.size()));
    for (const auto &[index, container] : wanted) {
        follow(index, *container);
    }
    m_watches[watch].isKnown = true;
    m_watches[watch].problem.clear();
    Q_EMIT podsChanged();
}

/// The source of a container, a new one when it has none. A pod that two workloads select is followed once.
int PodFollower::indexOf(std::size_t watch, const LogPod &pod, const LogContainer &container)
{
    const auto known = std::find_if(m_followed.cbegin(), m_followed.cend(), [&](const Followed &followed) {
        return followed.uid == pod.uid && followed.container.container == container.name;
    });
    if (known != m_followed.cend()) {
        return static_cast<int>(known - m_followed.cbegin());
    }
    const int index = m_streams.add();
    const bool isJoining = m_watches[watch].isKnown;
    m_followed.push_back({.container = {pod.name, container.name, m_workloads[watch].nameSpace},
        .watch = watch,
        .uid = pod.uid,
        .fromBegin = isJoining || !container.hasLog});
    Q_EMIT added(m_followed.back().container);
    if (isJoining) {
        tell(index, tr("joined"));
    }
    return index;
}

/// Whether a stream of the container is to be started now.
bool PodFollower::wants(int index, const LogContainer &container)
{
    const LogSource &source = m_streams.source(index);
    Followed &followed = m_followed[static_cast<std::size_t>(index)];
    if (source.waits) {
        return container.hasLog;
    }
    if (!source.ended || followed.isGone) {
        return false;
    }
    if (container.restarts > followed.restarts) {
        return container.hasLog;
    }
    return container.runs && --followed.pause <= 0; // the stream broke off
}

/// How many more streams may be started now.
std::size_t PodFollower::mayStart(std::size_t wanted)
{
    const auto &sources = m_streams.sources();
    const auto running = static_cast<int>(std::count_if(sources.cbegin(), sources.cend(),
        [](const LogSource &source) { return !source.waits && !source.ended; }));
    const int all = running + static_cast<int>(wanted);
    if (all > m_allowed && m_question == Question::None && wanted > 0) {
        m_question = Question::Asked;
        Q_EMIT tooMany(all);
    }
    if (m_question == Question::Asked) {
        return 0;
    }
    return std::min(wanted, static_cast<std::size_t>(std::max(0, m_allowed - running)));
}

void PodFollower::follow(int index, const LogContainer &container)
{
    Followed &followed = m_followed[static_cast<std::size_t>(index)];
    const bool isFirst = !followed.timestamps;
    const bool hasRestarted = !isFirst && container.restarts > followed.restarts;
    followed.restarts = container.restarts;
    if (isFirst) {
        followed.timestamps = std::make_shared<LogTimestamps>(m_options.timestamps);
    } else {
        tell(index, hasRestarted ? tr("restarted") : tr("taken up again"));
    }
    const QByteArray &last = followed.timestamps->last();
    followed.readsPrevious = hasRestarted && !last.isEmpty();
    const bool isWhole = followed.fromBegin || hasRestarted;
    startStream(index,
        {.from = isWhole ? LogOptions::From::All : m_options.from,
            .previous = followed.readsPrevious,
            .since = last});
}

void PodFollower::startStream(int index, LogOptions options)
{
    const Followed &followed = m_followed[static_cast<std::size_t>(index)];
    options.timestamps = true;
    followed.timestamps->resume();
    m_streams.start(
        index, m_place.makeShell(), logArguments(m_place, followed.container, options), followed.timestamps);
}

void PodFollower::findGone(std::size_t watch, const std::vector<LogPod> &pods)
{
    for (std::size_t i = 0; i < m_followed.size(); ++i) {
        Followed &followed = m_followed[i];
        const bool isThere = std::any_of(
            pods.cbegin(), pods.cend(), [&](const LogPod &pod) { return pod.uid == followed.uid; });
        followed.isGone = followed.isGone && !isThere;
        if (followed.watch == watch && !followed.isGone && !isThere) {
            followed.isGone = true;
            LogSource &source = m_streams.source(static_cast<int>(i));
            source.ended = source.ended || source.waits;
            source.waits = false;
            tell(static_cast<int>(i), tr("the pod is gone"));
        }
    }
}

void PodFollower::streamsChanged(const QList<int> &sources)
{
    for (const int index : sources) {
        if (m_streams.source(index).ended) {
            streamEnded(index);
        }
    }
}

void PodFollower::streamEnded(int index)
{
    Followed &followed = m_followed[static_cast<std::size_t>(index)];
    if (followed.readsPrevious) {
        followed.readsPrevious = false; // whether it is kept or not
        startStream(index, {.from = LogOptions::From::All, .since = followed.timestamps->last()});
        return;
    }
    if (m_streams.source(index).hasWritten) {
        followed.failures = 0;
        followed.pause = 0;
        m_watches[followed.watch].watch->lookSoon();
    } else {
        followed.pause = std::min(longestPause, 1 << std::min(followed.failures++, 4));
    }
}

void PodFollower::tell(int index, const QString &what)
{
    m_streams.source(index).tell(what);
    Q_EMIT happened(index, what);
}

} // namespace tidewright
