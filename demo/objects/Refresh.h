// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

#include <string>

namespace tidewright::demo {

/// Status that follows from the pods which are there now. Called after pods changed, when seeding as well as
/// later. A name that does not exist is left alone.
void refreshReplicaSet(ObjectStore &store, const std::string &ns, const std::string &name);
void refreshDeployment(ObjectStore &store, const std::string &ns, const std::string &name);
void refreshStatefulSet(ObjectStore &store, const std::string &ns, const std::string &name);
void refreshDaemonSet(ObjectStore &store, const std::string &ns, const std::string &name);
void refreshJob(ObjectStore &store, const std::string &ns, const std::string &name);

/// Endpoints of all services with a selector in the namespace.
void refreshEndpoints(ObjectStore &store, const std::string &ns);

/// The workload of that kind, and the deployment above a replica set.
void refreshOwner(
    ObjectStore &store, const std::string &ns, const std::string &kind, const std::string &name);

/// Numbers the replica sets of a deployment; on the deployment itself it names the current one.
inline constexpr const char *revisionAnnotation = "deployment.kubernetes.io/revision";
std::string revisionOf(const json &object);

/// replicas and its kin in a status; a count of zero has no field, as in a real cluster.
void setReplicaCounts(json &status, long long total, long long ready, long long updated);

} // namespace tidewright::demo
