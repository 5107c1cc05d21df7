// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/ClusterScope.h"

#include "objects/Events.h"
#include "objects/Planter.h"

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
    for (const std::string &name : nodeNames()) {
        plant(store, "Node", name, age,
            {{"metadata", {{"labels", {{"kubernetes.io/hostname", name}}}}}, {"spec", json::object()},
                {"status",
                    {{"capacity", {{"cpu", "8"}, {"memory", "32Gi"}, {"pods", "110"}}},
                        {"conditions", json::array({{{"type", "Ready"}, {"status", "True"}}})},
                        {"nodeInfo", {{"kubeletVersion", "v1.30.0-demo"}}}}}});
    }
}

void plantVolumes(ObjectStore &store)
{
    json bound = volume("100Gi", {"ReadWriteOnce"}, "Retain", "Bound", "fast-ssd");
    bound["spec"]["claimRef"]
        = {{"kind", "PersistentVolumeClaim"}, {"namespace", "data"}, {"name", "orders-db-0"}};
    plant(store, "PersistentVolume", "pv-orders-0", 320 * days, bound);
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
