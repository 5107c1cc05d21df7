// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Refresh.h"

#include "base/Time.h"
#include "objects/Pods.h"
#include "objects/Revisions.h"
#include "store/Selector.h"

#include <algorithm>

namespace tidewright::demo {

namespace {

struct PodCount
{
    long long total = 0;
    long long ready = 0;
    long long active = 0;
    long long succeeded = 0;
    long long failed = 0;
    long long upToDate = 0; ///< of the owner's newest revision
};

PodCount countPods(const ObjectStore &store, const std::string &ns, const std::string &ownerUid,
    const std::string &revision = {})
{
    PodCount count;
    for (const ObjectPtr &object : store.ownedBy(typeOfKind("Pod"), ns, ownerUid)) {
        const json pod = object->parsed();
        const std::string phase = textAt(pod, "/status/phase");
        if (at(pod, "/metadata/deletionTimestamp").is_string()) {
            continue;
        }
        count.succeeded += phase == "Succeeded";
        count.failed += phase == "Failed";
        count.active += phase == "Running" || phase == "Pending";
        count.total += phase != "Failed" && phase != "Succeeded";
        count.ready += isPodReady(pod);
        count.upToDate += isOfRevision(*object, revision);
    }
    return count;
}

void setOrErase(json &object, const char *field, long long value)
{
    if (value == 0) {
        object.erase(field);
    } else {
        object[field] = value;
    }
}

json subsetOf(const json &service, const json &addresses, const json &notReady)
{
    json subset = json::object();
    if (!addresses.empty()) {
        subset["addresses"] = addresses;
    }
    if (!notReady.empty()) {
        subset["notReadyAddresses"] = notReady;
    }
    for (const json &port : at(service, "/spec/ports")) {
        const json &target = at(port, "/targetPort");
        json entry{{"port", target.is_number() ? target : port["port"]},
            {"protocol", textAt(port, "/protocol", "TCP")}};
        if (port.contains("name")) {
            entry["name"] = port["name"];
        }
        subset["ports"].push_back(entry);
    }
    return subset;
}

json subsetsOf(const json &service, const std::vector<ObjectPtr> &pods)
{
    json ready = json::array(), notReady = json::array();
    for (const ObjectPtr &object : pods) {
        if (!Selector::mapMatches(at(service, "/spec/selector"), *object)) {
            continue;
        }
        const json pod = object->parsed();
        const std::string ip = textAt(pod, "/status/podIP");
        const std::string phase = textAt(pod, "/status/phase");
        if (ip.empty() || phase == "Succeeded" || phase == "Failed") {
            continue;
        }
        json address{{"ip", ip}, {"nodeName", at(pod, "/spec/nodeName")},
            {"targetRef",
                {{"kind", "Pod"}, {"name", object->name}, {"namespace", object->ns}, {"uid", object->uid}}}};
        (isPodReady(pod) ? ready : notReady).push_back(std::move(address));
    }
    if (ready.empty() && notReady.empty()) {
        return json::array();
    }
    return json::array({subsetOf(service, ready, notReady)});
}

void refreshEndpointsOf(ObjectStore &store, const StoredObject &service, const std::vector<ObjectPtr> &pods)
{
    const json parsed = service.parsed();
    if (at(parsed, "/spec/selector").empty()) {
        return;
    }
    const json subsets = subsetsOf(parsed, pods);
    const auto apply = [&](json &endpoints) {
        if (subsets.empty()) {
            endpoints.erase("subsets");
        } else {
            endpoints["subsets"] = subsets;
        }
    };
    const ResourceType &type = typeOfKind("Endpoints");
    if (store.update(type, service.ns, service.name, apply)) {
        return;
    }
    json endpoints{{"metadata",
        {{"name", service.name}, {"namespace", service.ns},
            {"creationTimestamp", at(parsed, "/metadata/creationTimestamp")}}}};
    apply(endpoints);
    store.create(type, endpoints);
}

json jobCondition(const char *type, const json &reason)
{
    json condition{{"type", type}, {"status", "True"}, {"lastProbeTime", timestamp(now())},
        {"lastTransitionTime", timestamp(now())}};
    if (reason.is_string()) {
        condition["reason"] = reason;
    }
    return condition;
}

} // namespace

std::string revisionOf(const json &object)
{
    const json &annotations = at(object, "/metadata/annotations");
    return annotations.is_object() ? annotations.value(revisionAnnotation, std::string()) : std::string();
}

void setReplicaCounts(json &status, long long total, long long ready, long long updated)
{
    if (status.is_null()) {
        status = json::object();
    }
    status["replicas"] = total;
    setOrErase(status, "readyReplicas", ready);
    setOrErase(status, "availableReplicas", ready);
    setOrErase(status, "updatedReplicas", updated);
    setOrErase(status, "unavailableReplicas", total - ready);
}

void refreshReplicaSet(ObjectStore &store, const std::string &ns, const std::string &name)
{
    const ObjectPtr object = store.get(typeOfKind("ReplicaSet"), ns, name);
    if (!object) {
        return;
    }
    const PodCount count = countPods(store, ns, object->uid);
    store.update(*object->type, ns, name, [&](json &set) {
        json &status = set["status"];
        setReplicaCounts(status, count.total, count.ready, 0);
        status.erase("unavailableReplicas");
        setOrErase(status, "fullyLabeledReplicas", count.total);
        status["observedGeneration"] = numberAt(set, "/metadata/generation", 1);
    });
}

void refreshDeployment(ObjectStore &store, const std::string &ns, const std::string &name)
{
    const ObjectPtr object = store.get(typeOfKind("Deployment"), ns, name);
    if (!object) {
        return;
    }
    long long total = 0, ready = 0, updated = 0;
    const std::string current = revisionOf(object->parsed());
    for (const ObjectPtr &owned : store.ownedBy(typeOfKind("ReplicaSet"), ns, object->uid)) {
        const json set = owned->parsed();
        const long long replicas = numberAt(set, "/status/replicas");
        total += replicas;
        ready += numberAt(set, "/status/readyReplicas");
        if (revisionOf(set) == current) {
            updated += replicas;
        }
    }
    store.update(*object->type, ns, name, [&](json &deployment) {
        json &status = deployment["status"];
        setReplicaCounts(status, total, ready, updated);
        status["observedGeneration"] = numberAt(deployment, "/metadata/generation", 1);
        status["conditions"] = json::array(
            {{{"type", "Available"},
                 {"status", ready >= numberAt(deployment, "/spec/replicas", 1) ? "True" : "False"},
                 {"reason", ready > 0 ? "MinimumReplicasAvailable" : "MinimumReplicasUnavailable"}},
                {{"type", "Progressing"}, {"status", "True"}, {"reason", "NewReplicaSetAvailable"}}});
    });
}

void refreshStatefulSet(ObjectStore &store, const std::string &ns, const std::string &name)
{
    const ObjectPtr object = store.get(typeOfKind("StatefulSet"), ns, name);
    if (!object) {
        return;
    }
    const std::string revision = revisionName(*object, object->parsed());
    const PodCount count = countPods(store, ns, object->uid, revision);
    store.update(*object->type, ns, name, [&](json &set) {
        json &status = set["status"];
        setReplicaCounts(status, count.total, count.ready, count.upToDate);
        status.erase("unavailableReplicas");
        status["observedGeneration"] = numberAt(set, "/metadata/generation", 1);
        status["updateRevision"] = revision;
        if (count.upToDate == count.total || !status.contains("currentRevision")) {
            status["currentRevision"] = revision;
        }
        setOrErase(status, "currentReplicas",
            status["currentRevision"] == revision ? count.upToDate : count.total - count.upToDate);
    });
}

void refreshDaemonSet(ObjectStore &store, const std::string &ns, const std::string &name)
{
    const ObjectPtr object = store.get(typeOfKind("DaemonSet"), ns, name);
    if (!object) {
        return;
    }
    const PodCount count = countPods(store, ns, object->uid, revisionName(*object, object->parsed()));
    store.update(*object->type, ns, name, [&](json &set) {
        json &status = set["status"];
        if (status.is_null()) {
            status = json::object();
        }
        status["desiredNumberScheduled"] = std::max(count.total, numberAt(status, "/desiredNumberScheduled"));
        status["currentNumberScheduled"] = count.total;
        status["updatedNumberScheduled"] = count.upToDate;
        status["observedGeneration"] = numberAt(set, "/metadata/generation", 1);
        status["numberMisscheduled"] = 0;
        status["numberReady"] = count.ready;
        setOrErase(status, "numberAvailable", count.ready);
    });
}

void refreshJob(ObjectStore &store, const std::string &ns, const std::string &name)
{
    const ObjectPtr object = store.get(typeOfKind("Job"), ns, name);
    if (!object) {
        return;
    }
    const PodCount count = countPods(store, ns, object->uid);
    store.update(*object->type, ns, name, [&](json &job) {
        json &status = job["status"];
        if (status.is_null()) {
            status = json::object();
        }
        const bool ended = status.contains("conditions");
        setOrErase(status, "active", count.active);
        setOrErase(status, "succeeded", count.succeeded);
        setOrErase(status, "failed", count.failed);
        if (!ended && count.succeeded > 0 && count.succeeded >= numberAt(job, "/spec/completions", 1)) {
            status["conditions"] = json::array({jobCondition("Complete", nullptr)});
            status["completionTime"] = timestamp(now());
        } else if (!ended && count.failed > numberAt(job, "/spec/backoffLimit", 6)) {
            status["conditions"] = json::array({jobCondition("Failed", "BackoffLimitExceeded")});
        }
    });
}

void refreshEndpoints(ObjectStore &store, const std::string &ns)
{
    const std::vector<ObjectPtr> services = store.all(typeOfKind("Service"), ns);
    if (services.empty()) {
        return;
    }
    const std::vector<ObjectPtr> pods = store.all(typeOfKind("Pod"), ns);
    for (const ObjectPtr &service : services) {
        refreshEndpointsOf(store, *service, pods);
    }
}

void refreshOwner(ObjectStore &store, const std::string &ns, const std::string &kind, const std::string &name)
{
    if (kind == "ReplicaSet") {
        refreshReplicaSet(store, ns, name);
        if (const ObjectPtr set = store.get(typeOfKind("ReplicaSet"), ns, name)) {
            refreshDeployment(store, ns, textAt(set->parsed(), "/metadata/ownerReferences/0/name"));
        }
    } else if (kind == "StatefulSet") {
        refreshStatefulSet(store, ns, name);
    } else if (kind == "DaemonSet") {
        refreshDaemonSet(store, ns, name);
    } else if (kind == "Job") {
        refreshJob(store, ns, name);
    }
}

} // namespace tidewright::demo
