// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Planter.h"

#include "objects/Names.h"
#include "objects/Refresh.h"
#include "objects/Revisions.h"

#include <algorithm>

namespace tidewright::demo {

namespace {

json labelsOf(const std::string &name)
{
    return {{"app", name}};
}

} // namespace

Planter::Planter(ObjectStore &store, std::string ns, Seconds namespaceAge)
    : m_store(store)
    , m_ns(std::move(ns))
{
    json body{{"metadata",
                  {{"name", m_ns}, {"creationTimestamp", timestamp(now() - namespaceAge)},
                      {"labels", {{"kubernetes.io/metadata.name", m_ns}}}}},
        {"spec", {{"finalizers", {"kubernetes"}}}}, {"status", {{"phase", "Active"}}}};
    m_store.create(typeOfKind("Namespace"), std::move(body));
    object("ServiceAccount", "default", namespaceAge,
        {{"secrets", json::array({{{"name", "default-token-" + nameSuffix(stableHash(m_ns))}}})}});
}

json Planter::metadata(const std::string &name, Seconds age) const
{
    return {{"name", name}, {"namespace", m_ns}, {"creationTimestamp", timestamp(now() - age)}};
}

json Planter::workloadBody(const Workload &workload, const json &podLabels) const
{
    json meta = metadata(workload.name, workload.age);
    meta["labels"] = labelsOf(workload.name);
    meta["generation"] = 1;
    return {{"metadata", std::move(meta)},
        {"spec",
            {{"replicas", workload.replicas}, {"selector", {{"matchLabels", podLabels}}},
                {"template", podTemplate(podLabels, workload.containers, workload.extraSpec)}}},
        {"status", json::object()}};
}

void Planter::deployment(const Workload &workload)
{
    json body = workloadBody(workload, labelsOf(workload.name));
    body["spec"]["strategy"]
        = {{"type", "RollingUpdate"}, {"rollingUpdate", {{"maxSurge", "25%"}, {"maxUnavailable", "25%"}}}};
    body["metadata"]["annotations"][revisionAnnotation] = std::to_string(workload.revisions);
    const json deployment = m_store.create(typeOfKind("Deployment"), std::move(body))->parsed();
    for (int revision = 1; revision <= workload.revisions; ++revision) {
        const bool current = revision == workload.revisions;
        const std::string hash = nameSuffix(stableHash(m_ns + workload.name + std::to_string(revision)), 9);
        const Seconds age = workload.age * (workload.revisions - revision + 1) / workload.revisions;
        json labels = labelsOf(workload.name);
        labels["pod-template-hash"] = hash;
        Workload generation = workload;
        generation.name = workload.name + '-' + hash;
        generation.age = age;
        generation.replicas = current ? workload.replicas : 0;
        if (!current) {
            generation.containers.front().image += "-rc" + std::to_string(revision);
        }
        json set = workloadBody(generation, labels);
        set["metadata"]["labels"] = labels;
        set["metadata"]["ownerReferences"] = json::array({ownerReference(deployment)});
        set["metadata"]["annotations"][revisionAnnotation] = std::to_string(revision);
        const ObjectPtr stored = m_store.create(typeOfKind("ReplicaSet"), std::move(set));
        if (current) {
            pods(generation, *stored, false);
        }
        refreshReplicaSet(m_store, m_ns, generation.name);
    }
    refreshDeployment(m_store, m_ns, workload.name);
}

void Planter::pods(const Workload &workload, const StoredObject &owner, bool numbered)
{
    const json parsed = owner.parsed();
    // An evicted pod stays beside the one that replaced it.
    const int count = std::max(workload.replicas, int(workload.states.size()));
    for (int i = 0; i < count; ++i) {
        const std::string suffix
            = numbered ? std::to_string(i) : nameSuffix(stableHash(m_ns + workload.name + std::to_string(i)));
        json pod = podFromTemplate(at(parsed, "/spec/template"), m_ns, workload.name + '-' + suffix, parsed);
        // Not all of the same age: some were replaced since.
        const Seconds age = workload.age / (1 + i % 3);
        pod["metadata"]["creationTimestamp"] = timestamp(now() - age);
        if (hasRevisions(owner.type->kind)) {
            pod["metadata"]["labels"][revisionLabel] = revisionName(owner, parsed);
        }
        if (owner.type->kind == "DaemonSet") {
            pod["spec"]["nodeName"] = nodeNames()[size_t(i) % nodeNames().size()];
        }
        const PodState state
            = size_t(i) < workload.states.size() ? workload.states[size_t(i)] : PodState::Running;
        setPodState(pod, state, now() - age, state == PodState::Running ? 0 : workload.restarts);
        m_store.create(typeOfKind("Pod"), std::move(pod));
    }
}

ObjectPtr Planter::revisedSet(const Workload &workload, const std::string &kind, json body)
{
    const ResourceType &type = typeOfKind(kind);
    ObjectPtr set = m_store.create(type, std::move(body));
    for (int revision = 1; revision <= workload.revisions; ++revision) {
        const std::string suffix = revision == workload.revisions ? "" : "-rc" + std::to_string(revision);
        set = m_store.update(type, m_ns, workload.name, [&](json &object) {
            object["spec"]["template"]["spec"]["containers"][0]["image"]
                = workload.containers.front().image + suffix;
        });
        keepRevision(m_store, kind, m_ns, workload.name);
    }
    return set;
}

void Planter::statefulSet(const Workload &workload)
{
    json body = workloadBody(workload, labelsOf(workload.name));
    body["spec"]["serviceName"] = workload.name;
    body["spec"]["podManagementPolicy"] = "OrderedReady";
    body["spec"]["updateStrategy"] = {{"type", "RollingUpdate"}, {"rollingUpdate", {{"partition", 0}}}};
    pods(workload, *revisedSet(workload, "StatefulSet", std::move(body)), true);
    refreshStatefulSet(m_store, m_ns, workload.name);
}

void Planter::daemonSet(const Workload &workload, int desired)
{
    json body = workloadBody(workload, labelsOf(workload.name));
    body["spec"].erase("replicas");
    body["status"]["desiredNumberScheduled"] = desired;
    body["spec"]["updateStrategy"] = {{"type", "RollingUpdate"}, {"rollingUpdate", {{"maxUnavailable", 1}}}};
    pods(workload, *revisedSet(workload, "DaemonSet", std::move(body)), false);
    refreshDaemonSet(m_store, m_ns, workload.name);
}

void Planter::barePod(const Workload &workload)
{
    json pod = podFromTemplate(podTemplate(labelsOf(workload.name), workload.containers, workload.extraSpec),
        m_ns, workload.name, nullptr);
    pod["metadata"]["creationTimestamp"] = timestamp(now() - workload.age);
    setPodState(pod, workload.states.empty() ? PodState::Running : workload.states.front(),
        now() - workload.age, workload.restarts);
    m_store.create(typeOfKind("Pod"), std::move(pod));
}

void Planter::job(const Workload &workload, const std::string &cronJob)
{
    const Seconds start = now() - workload.age;
    const std::string uid = m_store.newUid();
    json labels{{"job-name", workload.name}, {"controller-uid", uid}};
    Workload once = workload;
    once.extraSpec["restartPolicy"] = "Never";
    json body = workloadBody(once, labels);
    body["metadata"]["uid"] = uid;
    body["spec"].erase("replicas");
    body["spec"].update({{"completions", workload.replicas}, {"parallelism", 1}, {"backoffLimit", 0}});
    if (const ObjectPtr cron = m_store.get(typeOfKind("CronJob"), m_ns, cronJob)) {
        body["metadata"]["ownerReferences"] = json::array({ownerReference(cron->parsed())});
    }
    once.replicas = int(workload.states.size());
    const ObjectPtr job = m_store.create(typeOfKind("Job"), std::move(body));
    pods(once, *job, false);
    refreshJob(m_store, m_ns, workload.name);
    m_store.update(*job->type, m_ns, workload.name, [start](json &object) {
        json &status = object["status"];
        status["startTime"] = timestamp(start);
        for (json &condition : status["conditions"]) {
            condition["lastTransitionTime"] = condition["lastProbeTime"] = timestamp(start + 42);
        }
        if (status["conditions"].is_null()) {
            status.erase("conditions");
        }
        if (status.contains("completionTime")) {
            status["completionTime"] = timestamp(start + 42);
        }
    });
}

void Planter::cronJob(const Workload &workload, const std::string &schedule, bool suspended, Seconds lastRun)
{
    json spec = podTemplate(labelsOf(workload.name), workload.containers, {{"restartPolicy", "OnFailure"}});
    json body{{"spec",
                  {{"schedule", schedule}, {"suspend", suspended}, {"concurrencyPolicy", "Forbid"},
                      {"successfulJobsHistoryLimit", 3}, {"failedJobsHistoryLimit", 1},
                      {"jobTemplate", {{"spec", {{"template", std::move(spec)}}}}}}},
        {"status", json::object()}};
    if (lastRun >= 0) {
        body["status"]["lastScheduleTime"] = timestamp(now() - lastRun);
    }
    object("CronJob", workload.name, workload.age, std::move(body));
}

void Planter::service(const std::string &name, int port, Seconds age, const json &extra)
{
    const std::uint64_t hash = stableHash(m_ns + '/' + name);
    json spec{{"type", "ClusterIP"},
        {"clusterIP", "10.96." + std::to_string(hash % 250) + '.' + std::to_string(1 + hash / 250 % 250)},
        {"selector", labelsOf(name)}, {"sessionAffinity", "None"},
        {"ports",
            json::array({{{"name", "main"}, {"port", port}, {"targetPort", port}, {"protocol", "TCP"}}})}};
    json status{{"loadBalancer", json::object()}};
    json changes = extra;
    if (changes.contains("ingress")) {
        status["loadBalancer"]["ingress"] = changes["ingress"];
        changes.erase("ingress");
    }
    spec.merge_patch(changes);
    object("Service", name, age, {{"spec", std::move(spec)}, {"status", std::move(status)}});
}

ObjectPtr Planter::object(const std::string &kind, const std::string &name, Seconds age, json body)
{
    const ResourceType &type = typeOfKind(kind);
    json meta = metadata(name, age);
    if (!type.namespaced) {
        meta.erase("namespace");
    }
    body["metadata"].update(meta);
    return m_store.create(type, std::move(body));
}

} // namespace tidewright::demo
