// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Pods.h"

#include "objects/Names.h"

namespace tidewright::demo {

namespace {

json containerObject(const ContainerSpec &spec)
{
    json container{{"name", spec.name}, {"image", spec.image}, {"imagePullPolicy", "IfNotPresent"},
        {"resources",
            {{"requests", {{"cpu", "100m"}, {"memory", "128Mi"}}}, {"limits", {{"memory", "256Mi"}}}}},
        {"terminationMessagePath", "/dev/termination-log"}, {"terminationMessagePolicy", "File"}};
    if (spec.port != 0) {
        container["ports"] = json::array({{{"containerPort", spec.port}, {"protocol", "TCP"}}});
    }
    container.update(spec.more);
    return container;
}

json condition(const char *type, bool holds, Seconds since)
{
    return {{"type", type}, {"status", holds ? "True" : "False"}, {"lastProbeTime", nullptr},
        {"lastTransitionTime", timestamp(since)}};
}

json conditions(bool ready, Seconds since)
{
    return json::array({condition("Initialized", true, since), condition("Ready", ready, since + 2),
        condition("ContainersReady", ready, since + 2), condition("PodScheduled", true, since)});
}

json terminated(int exitCode, const char *reason, Seconds from, Seconds to)
{
    return {{"exitCode", exitCode}, {"reason", reason}, {"startedAt", timestamp(from)},
        {"finishedAt", timestamp(to)},
        {"containerID", "containerd://" + nameSuffix(std::uint64_t(from) * 0x9e3779b97f4a7c15ULL, 12)}};
}

json waiting(const char *reason, const std::string &message)
{
    json state{{"reason", reason}};
    if (!message.empty()) {
        state["message"] = message;
    }
    return {{"waiting", state}};
}

json containerState(PodState state, const json &container, bool troubled, Seconds since)
{
    const std::string name = textAt(container, "/name");
    const json running{{"running", {{"startedAt", timestamp(since + 2)}}}};
    switch (state) {
    case PodState::ContainerCreating:
        return waiting("ContainerCreating", "");
    case PodState::ImagePull:
        return troubled
            ? waiting("ImagePullBackOff", "Back-off pulling image \"" + textAt(container, "/image") + '"')
            : running;
    case PodState::CrashLoop:
        return troubled ? waiting("CrashLoopBackOff", "back-off 5m0s restarting failed container=" + name)
                        : running;
    case PodState::Succeeded:
        return {{"terminated", terminated(0, "Completed", since + 2, since + 40)}};
    case PodState::Failed:
        return {{"terminated", terminated(1, "Error", since + 2, since + 31)}};
    default:
        return running;
    }
}

bool runsIn(PodState state)
{
    return state == PodState::Running || state == PodState::NotReady || state == PodState::Terminating
        || state == PodState::CrashLoop || state == PodState::ImagePull;
}

json containerStatus(const json &container, PodState state, bool troubled, Seconds since, int restarts)
{
    const json current = containerState(state, container, troubled, since);
    const bool running = current.contains("running");
    json status{{"name", container["name"]}, {"image", container["image"]}, {"imageID", ""},
        {"ready", running && !(state == PodState::NotReady && troubled)}, {"started", running},
        {"restartCount", troubled ? restarts : 0}, {"state", current}, {"lastState", json::object()}};
    if (troubled && restarts > 0) {
        const Seconds end = std::max(since + 60, now() - 170);
        status["lastState"] = {{"terminated", terminated(137, "OOMKilled", end - 45, end)}};
    }
    return status;
}

// The last container of a pod is the one that has the trouble, so that sidecar pods are partly ready.
json containerStatuses(const json &pod, PodState state, Seconds since, int restarts)
{
    json statuses = json::array();
    const json &containers = at(pod, "/spec/containers");
    for (size_t i = 0; i < containers.size(); ++i) {
        statuses.push_back(
            containerStatus(containers[i], state, i + 1 == containers.size(), since, restarts));
    }
    return statuses;
}

const char *phaseOf(PodState state)
{
    switch (state) {
    case PodState::Unschedulable:
    case PodState::Scheduled:
    case PodState::ContainerCreating:
    case PodState::ImagePull:
        return "Pending";
    case PodState::Succeeded:
        return "Succeeded";
    case PodState::Failed:
    case PodState::Evicted:
        return "Failed";
    default:
        return "Running";
    }
}

void addAddresses(json &pod)
{
    const std::uint64_t hash = stableHash(textAt(pod, "/metadata/namespace") + textAt(pod, "/metadata/name"));
    if (!pod["spec"].contains("nodeName")) {
        pod["spec"]["nodeName"] = nodeNames()[hash % nodeNames().size()];
    }
    pod["status"]["hostIP"] = "10.10.0." + std::to_string(10 + hash % nodeNames().size());
    const std::string ip = "10.42." + std::to_string(hash / 251 % 200) + '.' + std::to_string(2 + hash % 251);
    pod["status"]["podIP"] = ip;
    pod["status"]["podIPs"] = json::array({{{"ip", ip}}});
}

} // namespace

const std::vector<std::string> &nodeNames()
{
    static const std::vector<std::string> names{
        "node-amber-1", "node-amber-2", "node-birch-1", "node-birch-2", "node-cedar-1"};
    return names;
}

json podTemplate(const json &labels, const std::vector<ContainerSpec> &containers, json extraSpec)
{
    json spec{{"containers", json::array()}, {"restartPolicy", "Always"}, {"dnsPolicy", "ClusterFirst"},
        {"schedulerName", "default-scheduler"}, {"securityContext", json::object()},
        {"terminationGracePeriodSeconds", 30}};
    for (const ContainerSpec &container : containers) {
        spec["containers"].push_back(containerObject(container));
    }
    spec.update(extraSpec);
    return {{"metadata", {{"labels", labels}}}, {"spec", std::move(spec)}};
}

json ownerReference(const json &owner)
{
    return {{"apiVersion", owner["apiVersion"]}, {"kind", owner["kind"]}, {"name", owner["metadata"]["name"]},
        {"uid", owner["metadata"]["uid"]}, {"controller", true}, {"blockOwnerDeletion", true}};
}

json podFromTemplate(
    const json &podTemplate, const std::string &ns, const std::string &name, const json &owner)
{
    json pod{{"metadata", at(podTemplate, "/metadata")}, {"spec", at(podTemplate, "/spec")}};
    pod["metadata"]["namespace"] = ns;
    pod["metadata"]["name"] = name;
    if (owner.is_object()) {
        pod["metadata"]["ownerReferences"] = json::array({ownerReference(owner)});
        pod["metadata"]["generateName"] = textAt(owner, "/metadata/name") + '-';
    }
    return pod;
}

void setPodState(json &pod, PodState state, Seconds since, int restarts)
{
    json &status = pod["status"] = json::object();
    status["phase"] = phaseOf(state);
    status["qosClass"] = "Burstable";
    if (state == PodState::Unschedulable) {
        json scheduled = condition("PodScheduled", false, since);
        scheduled["reason"] = "Unschedulable";
        scheduled["message"] = "0/5 nodes are available: 5 Insufficient memory.";
        status["conditions"] = json::array({scheduled});
        return;
    }
    status["startTime"] = timestamp(since);
    if (state == PodState::Evicted) {
        status["reason"] = "Evicted";
        status["message"] = "The node was low on resource: ephemeral-storage.";
        addAddresses(pod);
        return;
    }
    if (state == PodState::Terminating) {
        pod["metadata"]["deletionTimestamp"] = timestamp(now() + 30);
        pod["metadata"]["deletionGracePeriodSeconds"] = 30;
    }
    status["conditions"] = conditions(state == PodState::Running || state == PodState::Terminating, since);
    if (state != PodState::Scheduled) {
        status["containerStatuses"] = containerStatuses(pod, state, since, restarts);
    }
    if (runsIn(state) || state == PodState::Succeeded || state == PodState::Failed) {
        addAddresses(pod);
    } else if (!pod["spec"].contains("nodeName")) {
        pod["spec"]["nodeName"] = nodeNames()[stableHash(textAt(pod, "/metadata/name")) % nodeNames().size()];
    }
}

bool isPodReady(const json &pod)
{
    if (at(pod, "/metadata/deletionTimestamp").is_string() || textAt(pod, "/status/phase") != "Running") {
        return false;
    }
    for (const json &status : at(pod, "/status/containerStatuses")) {
        if (!flagAt(status, "/ready")) {
            return false;
        }
    }
    return true;
}

} // namespace tidewright::demo
