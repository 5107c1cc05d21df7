// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movement/PodStarts.h"
#include "store/ObjectStore.h"

#include <functional>
#include <string>

namespace tidewright::demo {

/// What the controllers of a cluster do: replica sets for deployments, pods for whatever runs pods, and the
/// counts that follow. Works through the schedule;
/// owned by Movement.
class Controllers
{
public:
    using RemovePod = std::function<void(const ObjectPtr &)>;

    Controllers(ObjectStore &store, Schedule &schedule, RemovePod removePod);

    /// Defaults of a new object.
    void prepare(const ResourceType &type, json &object);

    void changed(const ObjectPtr &object);
    void removed(const ObjectPtr &object);

private:
    struct Key
    {
        std::string ns, name;
    };

    void reconcile(const std::string &kind, const Key &key);
    void reconcileDeployment(const Key &key);
    void reconcilePods(const std::string &kind, const Key &key);
    void startJob(const Key &key);

    /// Replaces one pod of an older revision, when all others are ready.
    void rollOutOne(const StoredObject &owner, const json &parsed, const std::vector<ObjectPtr> &pods);
    void setReplicas(const StoredObject &replicaSet, long long replicas);
    void createPods(
        const StoredObject &owner, const json &parsed, const std::vector<ObjectPtr> &pods, size_t wanted);
    bool createPod(
        const StoredObject &owner, const json &parsed, const std::string &name, const std::string &node = {});

    ObjectStore &m_store;
    Schedule &m_schedule;
    RemovePod m_removePod;
    PodStarts m_podStarts;
};

} // namespace tidewright::demo
