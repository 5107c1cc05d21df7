// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Time.h"
#include "objects/Pods.h"
#include "store/ObjectStore.h"

#include <string>
#include <vector>

namespace tidewright::demo {

inline constexpr Seconds minutes = 60;
inline constexpr Seconds hours = 3600;
inline constexpr Seconds days = 86400;

/// A workload to plant. states are those of its first pods, the others run.
struct Workload
{
    std::string name;
    int replicas = 1;
    Seconds age = days;
    std::vector<ContainerSpec> containers;
    std::vector<PodState> states = {};
    json extraSpec = json::object(); ///< of the pods
    int restarts = 0; ///< of the pods in trouble
    int revisions = 1; ///< of a deployment, stateful or daemon set
};

/// Plants related objects of one namespace into a store: a deployment with its replica sets and pods, a
/// service with its endpoints. Used while seeding only.
class Planter
{
public:
    Planter(ObjectStore &store, std::string ns, Seconds namespaceAge);

    void deployment(const Workload &workload);
    void statefulSet(const Workload &workload);
    void daemonSet(const Workload &workload, int desired);
    void barePod(const Workload &workload);
    void cronJob(
        const Workload &workload, const std::string &schedule, bool suspended = false, Seconds lastRun = -1);

    /// A job with one pod per state; it is complete when all succeeded, failed when all failed.
    void job(const Workload &workload, const std::string &cronJob = {});

    /// A service in front of the pods of the workload of that name. extra is merged into its spec.
    void service(const std::string &name, int port, Seconds age, const json &extra = json::object());

    /// Any object of the namespace, or of the cluster when the kind has none.
    ObjectPtr object(
        const std::string &kind, const std::string &name, Seconds age, json body = json::object());

private:
    json metadata(const std::string &name, Seconds age) const;
    json workloadBody(const Workload &workload, const json &podLabels) const;
    void pods(const Workload &workload, const StoredObject &owner, bool numbered);
    /// A stateful or daemon set, with its revisions; returns the newest state.
    ObjectPtr revisedSet(const Workload &workload, const std::string &kind, json body);

    ObjectStore &m_store;
    std::string m_ns;
};

} // namespace tidewright::demo
