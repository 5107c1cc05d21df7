// SPDX-License-Identifier: GPL-3.0-or-later
#include "movement/Controllers.h"

#include "base/Time.h"
#include "objects/Events.h"
#include "objects/Names.h"
#include "objects/Pods.h"
#include "objects/Refresh.h"
#include "objects/Revisions.h"

#include <algorithm>

namespace tidewright::demo {

namespace {

using namespace std::chrono_literals;

constexpr const char *hashLabel = "pod-template-hash";

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

json withoutHash(json podTemplate)
{
    if (at(podTemplate, "/metadata/labels").is_object()) {
        podTemplate["metadata"]["labels"].erase(hashLabel);
    }
    return podTemplate;
}

long long revisionNumber(const json &object)
{
    return std::strtoll(revisionOf(object).c_str(), nullptr, 10);
}

long long ordinal(const StoredObject &pod)
{
    return std::strtoll(pod.name.c_str() + pod.name.rfind('-') + 1, nullptr, 10);
}

constexpr const char *allClosed = "0 nodes are available: all were unschedulable.";

bool takesPods(const json &node)
{
    const json &conditions = at(node, "/status/conditions");
    return !flagAt(node, "/spec/unschedulable") && at(node, "/spec/taints").empty()
        && std::none_of(conditions.begin(), conditions.end(), [](const json &condition) {
               return textAt(condition, "/type") == "Ready" && textAt(condition, "/status") != "True";
           });
}

/// A node that takes new pods, the same for the same text; empty when there is none.
std::string openNode(const ObjectStore &store, const std::string &pod)
{
    std::vector<std::string> open;
    const std::vector<ObjectPtr> nodes = store.all(typeOfKind("Node"));
    for (const ObjectPtr &node : nodes) {
        if (takesPods(node->parsed())) {
            open.push_back(node->name);
        }
    }
    if (nodes.empty()) {
        open = nodeNames();
    }
    return open.empty() ? std::string() : open[stableHash(pod) % open.size()];
}

size_t wantedPods(const std::string &kind, const json &owner)
{
    if (kind == "DaemonSet") {
        return size_t(
            std::max(1LL, numberAt(owner, "/status/desiredNumberScheduled", (long long)nodeNames().size())));
    }
    return size_t(std::max(0LL, numberAt(owner, "/spec/replicas", 1)));
}

EventText eventOfStep(int step, const json &pod)
{
    const std::string image = textAt(pod, "/spec/containers/0/image");
    if (step == 0) {
        return {"Normal", "Scheduled",
            "Successfully assigned " + textAt(pod, "/metadata/namespace") + '/'
                + textAt(pod, "/metadata/name") + " to " + textAt(pod, "/spec/nodeName"),
            "default-scheduler"};
    }
    if (step == 1) {
        return {"Normal", "Pulled", "Container image \"" + image + "\" already present on machine"};
    }
    return {"Normal", "Started", "Started container " + textAt(pod, "/spec/containers/0/name")};
}

} // namespace

Controllers::Controllers(ObjectStore &store, Schedule &schedule, RemovePod removePod)
    : m_store(store)
    , m_schedule(schedule)
    , m_removePod(std::move(removePod))
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
            startPod(*object);
        }
        podsChanged(*object);
    } else if (kind == "Service") {
        refreshEndpoints(m_store, key.ns);
    } else if (kind == "Node") {
        scheduleWaiting();
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
    podsChanged(*object);
    const json pod = object->parsed();
    const std::string kind = textAt(pod, "/metadata/ownerReferences/0/kind");
    const Key owner{object->ns, textAt(pod, "/metadata/ownerReferences/0/name")};
    if (kind == "ReplicaSet" || kind == "StatefulSet" || kind == "DaemonSet") {
        m_schedule.after(200ms, [this, kind, owner] { reconcile(kind, owner); });
    }
}

void Controllers::podsChanged(const StoredObject &pod)
{
    const json parsed = pod.parsed();
    refreshOwner(m_store, pod.ns, textAt(parsed, "/metadata/ownerReferences/0/kind"),
        textAt(parsed, "/metadata/ownerReferences/0/name"));
    refreshEndpoints(m_store, pod.ns);
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
    const ObjectPtr current = replicaSetFor(*object, deployment);
    setReplicas(*current, numberAt(deployment, "/spec/replicas", 1));
    for (const ObjectPtr &set : m_store.ownedBy(typeOfKind("ReplicaSet"), key.ns, object->uid)) {
        // The new pods come up first.
        if (set->name != current->name && numberAt(set->parsed(), "/spec/replicas") > 0) {
            m_schedule.after(2500ms, [this, set] { setReplicas(*set, 0); });
        }
    }
    refreshDeployment(m_store, key.ns, key.name);
}

ObjectPtr Controllers::replicaSetFor(const StoredObject &deployment, const json &parsed)
{
    const ResourceType &type = typeOfKind("ReplicaSet");
    const json wanted = withoutHash(at(parsed, "/spec/template"));
    ObjectPtr found, current;
    long long newest = 0;
    for (const ObjectPtr &set : m_store.ownedBy(type, deployment.ns, deployment.uid)) {
        const json candidate = set->parsed();
        if (revisionOf(candidate) == revisionOf(parsed)) {
            current = set;
        }
        newest = std::max(newest, revisionNumber(candidate));
        if (withoutHash(at(candidate, "/spec/template")) == wanted) {
            found = set;
        }
    }
    if (current && flagAt(parsed, "/spec/paused")) {
        return current;
    }
    if (found && revisionOf(found->parsed()) == revisionOf(parsed)) {
        return found;
    }

    const std::string revision = std::to_string(newest + 1);
    const auto mark
        = [&revision](json &object) { object["metadata"]["annotations"][revisionAnnotation] = revision; };
    m_store.update(*deployment.type, deployment.ns, deployment.name, mark);
    if (found) {
        return m_store.update(type, found->ns, found->name, mark);
    }
    const std::string hash = nameSuffix(stableHash(toText(wanted)), 9);
    json set{{"metadata",
                 {{"name", deployment.name + '-' + hash}, {"namespace", deployment.ns},
                     {"labels", at(wanted, "/metadata/labels")},
                     {"ownerReferences", json::array({ownerReference(parsed)})}}},
        {"spec", {{"replicas", 0}, {"selector", at(parsed, "/spec/selector")}, {"template", wanted}}},
        {"status", {{"replicas", 0}}}};
    set["spec"]["template"]["metadata"]["labels"][hashLabel] = hash;
    set["spec"]["selector"]["matchLabels"][hashLabel] = hash;
    set["metadata"]["labels"][hashLabel] = hash;
    mark(set);
    const ObjectPtr created = m_store.create(type, set);
    return created ? created : m_store.get(type, deployment.ns, deployment.name + '-' + hash);
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
        startPod(*created);
    }
    return created != nullptr;
}

void Controllers::startPod(const StoredObject &pod)
{
    // A little apart, so that a scaled deployment is seen to grow.
    const std::chrono::milliseconds extra(stableHash(pod.name) % 900);
    m_schedule.after(400ms, [this, pod] { advancePod(pod, 0); });
    m_schedule.after(1000ms, [this, pod] { advancePod(pod, 1); });
    m_schedule.after(1800ms + extra, [this, pod] { advancePod(pod, 2); });
    if (textAt(pod.parsed(), "/spec/restartPolicy", "Always") != "Always") {
        m_schedule.after(6000ms + extra, [this, pod] { advancePod(pod, 3); });
    }
}

void Controllers::scheduleWaiting()
{
    for (const ObjectPtr &pod : m_store.all(typeOfKind("Pod"))) {
        if (textAt(pod->parsed(), "/status/conditions/0/message") == allClosed) {
            startPod(*pod);
        }
    }
}

void Controllers::advancePod(const StoredObject &pod, int step)
{
    static constexpr PodState states[]{
        PodState::Scheduled, PodState::ContainerCreating, PodState::Running, PodState::Succeeded};
    const ObjectPtr present = m_store.get(*pod.type, pod.ns, pod.name);
    if (!present || present->uid != pod.uid) {
        return;
    }
    const Seconds since = parseTimestamp(textAt(present->parsed(), "/metadata/creationTimestamp"));
    const std::string node = openNode(m_store, pod.ns + pod.name);
    const ObjectPtr advanced = m_store.update(*pod.type, pod.ns, pod.name, [&](json &object) {
        if (at(object, "/metadata/deletionTimestamp").is_string()) {
            return;
        }
        if (textAt(object, "/spec/nodeName").empty() && node.empty()) {
            setPodState(object, PodState::Unschedulable, since);
            object["status"]["conditions"][0]["message"] = allClosed;
            return;
        }
        setDefault(object["spec"], "nodeName", node);
        setPodState(object, states[step], since);
    });
    if (!advanced || advanced == present) {
        return;
    }
    const json parsed = advanced->parsed();
    if (step < 3) {
        recordEvent(m_store, *advanced, eventOfStep(step, parsed));
    }
    podsChanged(*advanced);
    const std::string owner = textAt(parsed, "/metadata/ownerReferences/0/kind");
    if (step == 2 && hasRevisions(owner)) {
        m_schedule.after(
            200ms, [this, owner, key = Key{pod.ns, textAt(parsed, "/metadata/ownerReferences/0/name")}] {
                reconcile(owner, key);
            });
    }
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
