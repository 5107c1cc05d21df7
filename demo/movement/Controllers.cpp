// SPDX-License-Identifier: GPL-3.0-or-later
#include "movement/Controllers.h"

#include "base/Time.h"
#include "movement/ReplicaSets.h"
#include "objects/Events.h"
#include "objects/Names.h"
#include "objects/Pods.h"
#include "objects/Refresh.h"
#include "objects/Revisions.h"

#include <algorithm>

namespace tidewright::demo {

namespace {

using namespace std::chrono_literals;

void setDefault(json &object, const char *field, const json &value)
{
    if (!object.contains(field)) {
        object[field] = value;
    }
}

void prepareJob(ObjectStore &store, json &job)
{
    const std::string uid = store.newUid();
    const std::string name = textAt(job, "/metadata/name");
    job["metadata"]["uid"] = uid;
    json &spec = job["spec"];
    setDefault(spec, "completions", 1);
    setDefault(spec, "parallelism", 1);
    setDefault(spec, "backoffLimit", 6);
    spec["selector"] = {{"matchLabels", {{"controller-uid", uid}}}};
    json &labels = spec["template"]["metadata"]["labels"];
    labels["controller-uid"] = uid;
    labels["job-name"] = name;
    job["metadata"]["labels"]["job-name"] = name;
}

bool isLive(const json &pod)
{
    const std::string phase = textAt(pod, "/status/phase");
    return phase != "Failed" && phase != "Succeeded" && at(pod, "/metadata/deletionTimestamp").is_null();
}

long long ordinal(const StoredObject &pod)
{
    return std::strtoll(pod.name.c_str() + pod.name.rfind('-') + 1, nullptr, 10);
}

size_t wantedPods(const std::string &kind, const json &owner)
{
    if (kind == "DaemonSet") {
        return size_t(
            std::max(1LL, numberAt(owner, "/status/desiredNumberScheduled", (long long)nodeNames().size())));
    }
    return size_t(std::max(0LL, numberAt(owner, "/spec/replicas", 1)));
}

} // namespace

Controllers::Controllers(ObjectStore &store, Schedule &schedule, RemovePod removePod)
    : m_store(store)
    , m_schedule(schedule)
    , m_removePod(std::move(removePod))
    , m_podStarts(
          store, schedule, [this](const std::string &kind, const std::string &ns, const std::string &name) {
              reconcile(kind, {ns, name});
          })
{
}

void Controllers::prepare(const ResourceType &type, json &object)
{
    object["status"] = json::object();
    object["metadata"]["generation"] = 1;
    json &spec = object["spec"];
    if (!spec.is_object()) {
        return;
    }
    if (type.kind == "Pod") {
        setDefault(spec, "restartPolicy", "Always");
        setDefault(spec, "serviceAccountName", "default");
        object["status"]["phase"] = "Pending";
    } else if (type.kind == "Job") {
        prepareJob(m_store, object);
    } else if (type.kind == "CronJob") {
        setDefault(spec, "suspend", false);
        setDefault(spec, "concurrencyPolicy", "Allow");
    } else if (type.kind != "DaemonSet") {
        setDefault(spec, "replicas", 1);
    }
}

void Controllers::changed(const ObjectPtr &object)
{
    const std::string kind = object->type->kind;
    const Key key{object->ns, object->name};
    if (kind == "Pod") {
        const json pod = object->parsed();
        if (textAt(pod, "/status/phase") == "Pending" && at(pod, "/status").size() == 1) {
            m_podStarts.start(*object);
        }
        refreshAround(m_store, *object);
    } else if (kind == "Service") {
        refreshEndpoints(m_store, key.ns);
    } else if (kind == "Node") {
        m_podStarts.startWaiting();
    } else if (kind == "Deployment" || kind == "ReplicaSet" || kind == "StatefulSet" || kind == "DaemonSet"
        || kind == "Job") {
        m_schedule.after(150ms, [this, kind, key] { reconcile(kind, key); });
    }
}

void Controllers::removed(const ObjectPtr &object)
{
    if (object->type->kind != "Pod") {
        return;
    }
    refreshAround(m_store, *object);
    const json pod = object->parsed();
    const std::string kind = textAt(pod, "/metadata/ownerReferences/0/kind");
    const Key owner{object->ns, textAt(pod, "/metadata/ownerReferences/0/name")};
    if (kind == "ReplicaSet" || kind == "StatefulSet" || kind == "DaemonSet") {
        m_schedule.after(200ms, [this, kind, owner] { reconcile(kind, owner); });
    }
}

void Controllers::reconcile(const std::string &kind, const Key &key)
{
    if (kind == "Deployment") {
        reconcileDeployment(key);
    } else if (kind == "Job") {
        startJob(key);
    } else {
        reconcilePods(kind, key);
    }
}

void Controllers::reconcileDeployment(const Key &key)
{
    const ObjectPtr object = m_store.get(typeOfKind("Deployment"), key.ns, key.name);
    if (!object) {
        return;
    }
    const json deployment = object->parsed();
    const ObjectPtr current = replicaSetFor(m_store, *object, deployment);
    setReplicas(*current, numberAt(deployment, "/spec/replicas", 1));
    for (const ObjectPtr &set : m_store.ownedBy(typeOfKind("ReplicaSet"), key.ns, object->uid)) {
        // The new pods come up first.
        if (set->name != current->name && numberAt(set->parsed(), "/spec/replicas") > 0) {
            m_schedule.after(2500ms, [this, set] { setReplicas(*set, 0); });
        }
    }
    refreshDeployment(m_store, key.ns, key.name);
}

void Controllers::setReplicas(const StoredObject &replicaSet, long long replicas)
{
    const Key key{replicaSet.ns, replicaSet.name};
    const ObjectPtr set = m_store.update(*replicaSet.type, key.ns, key.name,
        [replicas](json &object) { object["spec"]["replicas"] = replicas; });
    if (set) {
        reconcilePods("ReplicaSet", key);
    }
}

void Controllers::reconcilePods(const std::string &kind, const Key &key)
{
    if (hasRevisions(kind)) {
        keepRevision(m_store, kind, key.ns, key.name);
    }
    const ObjectPtr owner = m_store.get(typeOfKind(kind), key.ns, key.name);
    if (!owner) {
        return;
    }
    const json parsed = owner->parsed();
    const size_t wanted = wantedPods(kind, parsed);
    std::vector<ObjectPtr> pods = m_store.ownedBy(typeOfKind("Pod"), key.ns, owner->uid);
    std::erase_if(pods, [](const ObjectPtr &pod) { return !isLive(pod->parsed()); });
    // The youngest go first; of numbered ones those with the highest numbers.
    std::sort(pods.begin(), pods.end(), [kind](const ObjectPtr &a, const ObjectPtr &b) {
        return kind == "StatefulSet" ? ordinal(*a) < ordinal(*b) : a->version < b->version;
    });
    for (; pods.size() > wanted; pods.pop_back()) {
        m_removePod(pods.back());
    }
    if (pods.size() < wanted) {
        createPods(*owner, parsed, pods, wanted);
    } else if (hasRevisions(kind)) {
        rollOutOne(*owner, parsed, pods);
    }
    refreshOwner(m_store, key.ns, kind, key.name);
}

void Controllers::rollOutOne(
    const StoredObject &owner, const json &parsed, const std::vector<ObjectPtr> &pods)
{
    const std::string revision = revisionName(owner, parsed);
    ObjectPtr next, unready; // one that is not ready is in nobody's way
    bool allReady = true;
    for (const ObjectPtr &pod : pods) {
        const bool isReady = isPodReady(pod->parsed());
        allReady = allReady && isReady;
        if (!isOfRevision(*pod, revision)) {
            (isReady ? next : unready) = pod;
        }
    }
    const bool waits = textAt(parsed, "/spec/updateStrategy/type") == "OnDelete";
    if (!waits && (unready || (next && allReady))) {
        m_removePod(unready ? unready : next);
    }
}

void Controllers::createPods(
    const StoredObject &owner, const json &parsed, const std::vector<ObjectPtr> &pods, size_t wanted)
{
    const std::string &kind = owner.type->kind;
    if (kind == "StatefulSet") {
        // A name that is still taken becomes free when the pod that has it is gone.
        for (size_t number = 0; number < wanted; ++number) {
            createPod(owner, parsed, owner.name + '-' + std::to_string(number));
        }
        return;
    }
    std::vector<std::string> nodes = kind == "DaemonSet" ? nodeNames() : std::vector<std::string>();
    for (const ObjectPtr &pod : pods) {
        std::erase(nodes, textAt(pod->parsed(), "/spec/nodeName"));
    }
    for (size_t missing = pods.size(); missing < wanted; ++missing) {
        const std::string node = nodes.empty() ? std::string() : nodes.back();
        if (!nodes.empty()) {
            nodes.pop_back();
        }
        for (int attempt = 0; attempt < 10; ++attempt) {
            const std::string suffix = nameSuffix(stableHash(m_store.newUid()));
            if (createPod(owner, parsed, owner.name + '-' + suffix, node)) {
                break;
            }
        }
    }
}

bool Controllers::createPod(
    const StoredObject &owner, const json &parsed, const std::string &name, const std::string &node)
{
    json pod = podFromTemplate(at(parsed, "/spec/template"), owner.ns, name, parsed);
    pod["status"] = {{"phase", "Pending"}};
    if (hasRevisions(owner.type->kind)) {
        pod["metadata"]["labels"][revisionLabel] = revisionName(owner, parsed);
    }
    if (!node.empty()) {
        pod["spec"]["nodeName"] = node;
    }
    const ObjectPtr created = m_store.create(typeOfKind("Pod"), std::move(pod));
    if (created) {
        recordEvent(m_store, owner,
            {"Normal", "SuccessfulCreate", "Created pod: " + created->name, "controller-manager"});
        m_podStarts.start(*created);
    }
    return created != nullptr;
}

void Controllers::startJob(const Key &key)
{
    const ObjectPtr job = m_store.get(typeOfKind("Job"), key.ns, key.name);
    if (!job || at(job->parsed(), "/status/startTime").is_string()) {
        return;
    }
    m_store.update(*job->type, key.ns, key.name, [](json &object) {
        object["status"]["startTime"] = timestamp(now());
        // Without a policy of its own a job's pod would be restarted for ever.
        if (textAt(object, "/spec/template/spec/restartPolicy", "Always") == "Always") {
            object["spec"]["template"]["spec"]["restartPolicy"] = "Never";
        }
    });
    const json parsed = m_store.get(*job->type, key.ns, key.name)->parsed();
    const long long completions = std::clamp(numberAt(parsed, "/spec/completions", 1), 1LL, 50LL);
    createPods(*job, parsed, {}, size_t(completions));
    refreshJob(m_store, key.ns, key.name);
}

} // namespace tidewright::demo
