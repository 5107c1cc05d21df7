// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movement/Schedule.h"
#include "store/ObjectStore.h"

#include <functional>
#include <string>

namespace tidewright::demo {

/// What the controllers of a cluster do: replica sets for deployments, pods for whatever runs pods, the way
/// of a pod from Pending to Running or to its end, and the counts that follow. Works through the schedule;
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
    void podsChanged(const StoredObject &pod);

    ObjectPtr replicaSetFor(const StoredObject &deployment, const json &parsed);
    void setReplicas(const StoredObject &replicaSet, long long replicas);
    void createPod(const StoredObject &owner, const json &parsed, size_t count);
    void startPod(const StoredObject &pod);
    void advancePod(const StoredObject &pod, int step);

    ObjectStore &m_store;
    Schedule &m_schedule;
    RemovePod m_removePod;
};

} // namespace tidewright::demo
