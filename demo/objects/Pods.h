// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Json.h"
#include "base/Time.h"

#include <string>
#include <vector>

namespace tidewright::demo {

struct ContainerSpec
{
    std::string name;
    std::string image;
    int port = 0; ///< 0: none
    json more = json::object(); ///< fields beyond these
};

/// The situations in which a pod of the demo can be.
enum class PodState {
    Running,
    NotReady, ///< running, but the last container fails its readiness probe
    Unschedulable,
    Scheduled, ///< has a node, but no container status yet
    ContainerCreating,
    CrashLoop,
    ImagePull,
    Succeeded,
    Failed,
    Evicted, ///< failed without container statuses
    Terminating,
};

/// spec.template of a workload.
json podTemplate(
    const json &labels, const std::vector<ContainerSpec> &containers, json extraSpec = json::object());

json ownerReference(const json &owner);

/// A pod as a controller makes it: without a node and without a status. owner is null for a bare pod.
json podFromTemplate(
    const json &podTemplate, const std::string &ns, const std::string &name, const json &owner);

/// Gives the pod the node, addresses and status of the state. `since` is when the state began to come about.
void setPodState(json &pod, PodState state, Seconds since, int restarts = 0);

bool isPodReady(const json &pod);

/// Names of the nodes that pods land on; the first part of every cluster's node list.
const std::vector<std::string> &nodeNames();

} // namespace tidewright::demo
