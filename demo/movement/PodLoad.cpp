// SPDX-License-Identifier: GPL-3.0-or-later
#include "movement/PodLoad.h"

#include "base/Time.h"
#include "objects/Names.h"
#include "objects/Pods.h"

#include <chrono>
#include <thread>

namespace tidewright::demo {

namespace {

constexpr const char *ns = "fleet";

const ResourceType &podType()
{
    static const ResourceType &type = typeOfKind("Pod");
    return type;
}

} // namespace

PodLoad::PodLoad(ObjectStore &store)
    : m_store(store)
{
}

void PodLoad::change(size_t count)
{
    const std::lock_guard lock(m_mutex);
    if (m_names.empty() && count > 0) {
        for (const ObjectPtr &pod : m_store.all(podType(), ns)) {
            m_names.push_back(pod->name);
        }
    }
    for (size_t i = 0; i < count && (!m_names.empty() || !m_removed.empty()); ++i) {
        changeOne();
    }
}

void PodLoad::changeOne()
{
    const std::uint64_t chance = stableHash(std::to_string(++m_turn));
    if (!m_removed.empty()) {
        createSuccessor();
        return;
    }
    const size_t chosen = chance % m_names.size();
    // In the turn after this one its successor comes.
    if (m_turn % 10 == 0) {
        removePod(chosen);
    } else {
        changeState(m_names[chosen], chance / m_names.size());
    }
}

void PodLoad::changeState(const std::string &name, std::uint64_t chance)
{
    static constexpr PodState states[]{PodState::Running, PodState::Running, PodState::NotReady,
        PodState::CrashLoop, PodState::ContainerCreating};
    m_store.update(podType(), ns, name, [chance](json &pod) {
        const json &statuses = at(pod, "/status/containerStatuses");
        const long long restarts = statuses.empty() ? 0 : numberAt(statuses.back(), "/restartCount");
        setPodState(pod, states[chance % std::size(states)], now());
        for (json &status : pod["status"]["containerStatuses"]) {
            status["restartCount"] = restarts + 1;
        }
    });
}

void PodLoad::removePod(size_t index)
{
    const ObjectPtr removed = m_store.remove(podType(), ns, m_names[index]);
    std::swap(m_names[index], m_names.back());
    m_names.pop_back();
    // Somebody else may have been quicker: then it has no successor from here.
    m_removed = removed ? removed->body : std::string();
}

void PodLoad::createSuccessor()
{
    json pod = json::parse(std::exchange(m_removed, {}));
    json &metadata = pod["metadata"];
    metadata.erase("uid");
    metadata.erase("creationTimestamp");
    metadata["name"]
        = textAt(metadata, "/generateName", "pod-") + nameSuffix(stableHash(std::to_string(m_turn)));
    setPodState(pod, PodState::Running, now());
    if (const ObjectPtr created = m_store.create(podType(), std::move(pod))) {
        m_names.push_back(created->name);
    }
}

void PodLoad::start(int perSecond)
{
    std::thread([this, perSecond] {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point start = Clock::now();
        for (std::uint64_t done = 0;;) {
            const std::chrono::duration<double> elapsed = Clock::now() - start;
            const auto due = std::uint64_t(elapsed.count() * perSecond);
            change(due - done);
            done = due;
            std::this_thread::sleep_for(std::chrono::milliseconds(perSecond > 200 ? 5 : 1000 / perSecond));
        }
    }).detach();
}

} // namespace tidewright::demo
