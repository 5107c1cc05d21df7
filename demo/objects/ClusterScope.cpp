// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/ClusterScope.h"

#include "objects/Events.h"
#include "objects/Planter.h"

#include <algorithm>

namespace tidewright::demo {

namespace {

void plant(ObjectStore &store, const std::string &kind, const std::string &name, Seconds age, json body)
{
    body["metadata"]["name"] = name;
    body["metadata"]["creationTimestamp"] = timestamp(now() - age);
    store.create(typeOfKind(kind), std::move(body));
}

json volume(
    const char *size, json accessModes, const char *policy, const char *phase, const char *storageClass)
{
    return {{"spec",
                {{"capacity", {{"storage", size}}}, {"accessModes", std::move(accessModes)},
                    {"persistentVolumeReclaimPolicy", policy}, {"storageClassName", storageClass},
                    {"hostPath", {{"path", "/var/lib/demo"}}}}},
        {"status", {{"phase", phase}}}};
}

struct NodeSpec
{
    std::string name;
    std::string roles; ///< separated by commas
    int number = 0; ///< among the cluster's nodes
};

json nodeConditions()
{
    json list = json::array();
    for (const auto &[type, reason] : {std::pair("MemoryPressure", "KubeletHasSufficientMemory"),
             {"DiskPressure", "KubeletHasNoDiskPressure"}, {"PIDPressure", "KubeletHasSufficientPID"},
             {"Ready", "KubeletReady"}}) {
        const bool isReady = std::string(type) == "Ready";
        list.push_back({{"type", type}, {"status", isReady ? "True" : "False"}, {"reason", reason},
            {"lastHeartbeatTime", timestamp(now())}, {"lastTransitionTime", timestamp(now() - 9 * days)}});
    }
    return list;
}

json nodeBody(const NodeSpec &node)
{
    json labels{{"kubernetes.io/hostname", node.name}, {"kubernetes.io/os", "linux"},
        {"kubernetes.io/arch", "amd64"}};
    for (size_t begin = 0; begin < node.roles.size();) {
        const size_t end = std::min(node.roles.find(',', begin), node.roles.size());
        labels["node-role.kubernetes.io/" + node.roles.substr(begin, end - begin)] = "";
        begin = end + 1;
    }
    const std::string number = std::to_string(node.number);
    const bool isBig = node.number % 2 == 0;
    json addresses
        = json::array({{{"type", "InternalIP"}, {"address", "10.10.0." + std::to_string(9 + node.number)}},
            {{"type", "Hostname"}, {"address", node.name}}});
    if (isBig) {
        addresses.push_back({{"type", "ExternalIP"}, {"address", "198.51.100." + number}});
    }
    return {{"metadata", {{"labels", labels}}}, {"spec", {{"podCIDR", "10.42." + number + ".0/24"}}},
        {"status",
            {{"capacity",
                 {{"cpu", isBig ? "16" : "8"}, {"memory", isBig ? "65843252Ki" : "32Gi"}, {"pods", "110"}}},
                {"allocatable",
                    {{"cpu", isBig ? "15800m" : "7900m"}, {"memory", isBig ? "64000Mi" : "31Gi"},
                        {"pods", "110"}}},
                {"addresses", addresses}, {"conditions", nodeConditions()},
                {"nodeInfo",
                    {{"kubeletVersion", "v1.30.0-demo"}, {"osImage", "Demo Linux 12"},
                        {"kernelVersion", "6.1.0-18-amd64"}, {"architecture", "amd64"},
                        {"operatingSystem", "linux"}, {"containerRuntimeVersion", "containerd://1.7.13"}}}}}};
}

json rules(int count)
{
    static const char *const resources[]{"pods", "services", "configmaps", "secrets", "deployments", "jobs"};
    json list = json::array();
    for (int i = 0; i < count; ++i) {
        list.push_back({{"apiGroups", json::array({""})}, {"resources", json::array({resources[i % 6]})},
            {"verbs", json::array({"get", "list", "watch"})}});
    }
    return {{"rules", list}};
}

} // namespace

void plantNodes(ObjectStore &store, Seconds age)
{
    int number = 0;
    for (const std::string &name : nodeNames()) {
        plant(store, "Node", name, age, nodeBody({name, "worker", ++number}));
    }
    json control = nodeBody({"control-1", "control-plane", ++number});
    control["spec"]["taints"]
        = json::array({{{"key", "node-role.kubernetes.io/control-plane"}, {"effect", "NoSchedule"}}});
    plant(store, "Node", "control-1", age, control);
    json closed = nodeBody({"node-cedar-2", "worker", ++number});
    closed["spec"]["unschedulable"] = true;
    closed["status"]["conditions"][0]["status"] = "True"; // MemoryPressure
    plant(store, "Node", "node-cedar-2", age / 4, closed);
    json lost = nodeBody({"node-drift-1", "worker,spot", ++number});
    for (json &condition : lost["status"]["conditions"]) {
        condition["status"] = "Unknown";
        condition["reason"] = "NodeStatusUnknown";
    }
    plant(store, "Node", "node-drift-1", age / 40, lost);
}

void plantVolumes(ObjectStore &store)
{
    json bound = volume("100Gi", {"ReadWriteOnce"}, "Retain", "Bound", "fast-ssd");
    bound["spec"]["claimRef"]
        = {{"kind", "PersistentVolumeClaim"}, {"namespace", "data"}, {"name", "orders-db-0"}};
    plant(store, "PersistentVolume", "pv-orders-0", 320 * days, bound);
    json models = volume("20Gi", {"ReadOnlyMany"}, "Retain", "Bound", "fast-ssd");
    models["spec"]["claimRef"]
        = {{"kind", "PersistentVolumeClaim"}, {"namespace", "payments"}, {"name", "fraud-models"}};
    plant(store, "PersistentVolume", "pv-fraud-models", 15 * days, models);
    plant(store, "PersistentVolume", "pv-spare", 9 * days,
        volume("20Gi", json::array({"ReadWriteOnce", "ReadOnlyMany"}), "Delete", "Available", "standard"));
    json released = volume("500Gi", {"ReadWriteMany"}, "Retain", "Released", "archive");
    released["spec"]["claimRef"]
        = {{"kind", "PersistentVolumeClaim"}, {"namespace", "data"}, {"name", "old-reports"}};
    plant(store, "PersistentVolume", "pv-reports-2022", 402 * days, released);
    json bare = volume("1Gi", {"ReadWriteOnce"}, "Recycle", "Failed", "");
    bare["spec"].erase("storageClassName");
    plant(store, "PersistentVolume", "pv-broken", 77 * days, bare);
}

void plantClusterRoles(ObjectStore &store)
{
    plant(store, "ClusterRole", "cluster-admin", 412 * days, rules(2));
    plant(store, "ClusterRole", "view", 412 * days, rules(12));
    plant(store, "ClusterRole", "system:node", 412 * days, rules(17));
    plant(store, "ClusterRole", "shop-deployer", 63 * days, rules(4));
    plant(store, "ClusterRole", "aggregate-nothing", 5 * days, json::object());
}

void plantPodEvents(
    ObjectStore &store, const StoredObject &pod, const json &parsed, const std::string &waitingReason)
{
    const Seconds start = parseTimestamp(textAt(parsed, "/metadata/creationTimestamp"));
    if (waitingReason == "CrashLoopBackOff") {
        recordEvent(
            store, pod, {"Warning", "BackOff", "Back-off restarting failed container"}, now() - 130, 41);
    } else if (waitingReason == "ImagePullBackOff") {
        recordEvent(store, pod, {"Warning", "Failed", "Error: ImagePullBackOff"}, now() - 75, 8);
    } else if (textAt(parsed, "/status/conditions/0/reason") == "Unschedulable") {
        recordEvent(store, pod,
            {"Warning", "FailedScheduling", textAt(parsed, "/status/conditions/0/message"),
                "default-scheduler"},
            now() - 200, 12);
    } else if (now() - start < 12 * hours) {
        recordEvent(store, pod,
            {"Normal", "Started", "Started container " + textAt(parsed, "/spec/containers/0/name")},
            start + 3);
    }
}

} // namespace tidewright::demo
