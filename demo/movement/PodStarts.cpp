// SPDX-License-Identifier: GPL-3.0-or-later
#include "movement/PodStarts.h"

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

PodStarts::PodStarts(ObjectStore &store, Schedule &schedule, OwnerIsNext ownerIsNext)
    : m_store(store)
    , m_schedule(schedule)
    , m_ownerIsNext(std::move(ownerIsNext))
{
}

void PodStarts::start(const StoredObject &pod)
{
    // A little apart, so that a scaled deployment is seen to grow.
    const std::chrono::milliseconds extra(stableHash(pod.name) % 900);
    m_schedule.after(400ms, [this, pod] { advance(pod, 0); });
    m_schedule.after(1000ms, [this, pod] { advance(pod, 1); });
    m_schedule.after(1800ms + extra, [this, pod] { advance(pod, 2); });
    if (textAt(pod.parsed(), "/spec/restartPolicy", "Always") != "Always") {
        m_schedule.after(6000ms + extra, [this, pod] { advance(pod, 3); });
    }
}

void PodStarts::startWaiting()
{
    for (const ObjectPtr &pod : m_store.all(typeOfKind("Pod"))) {
        if (textAt(pod->parsed(), "/status/conditions/0/message") == allClosed) {
            start(*pod);
        }
    }
}

void PodStarts::advance(const StoredObject &pod, int step)
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
        object["spec"].emplace("nodeName", node);
        setPodState(object, states[step], since);
    });
    if (!advanced || advanced == present) {
        return;
    }
    const json parsed = advanced->parsed();
    if (step < 3) {
        recordEvent(m_store, *advanced, eventOfStep(step, parsed));
    }
    refreshAround(m_store, *advanced);
    const std::string owner = textAt(parsed, "/metadata/ownerReferences/0/kind");
    if (step == 2 && hasRevisions(owner)) {
        m_schedule.after(
            200ms, [this, ns = pod.ns, owner, name = textAt(parsed, "/metadata/ownerReferences/0/name")] {
                m_ownerIsNext(owner, ns, name);
            });
    }
}

void refreshAround(ObjectStore &store, const StoredObject &pod)
{
    const json parsed = pod.parsed();
    refreshOwner(store, pod.ns, textAt(parsed, "/metadata/ownerReferences/0/kind"),
        textAt(parsed, "/metadata/ownerReferences/0/name"));
    refreshEndpoints(store, pod.ns);
}

} // namespace tidewright::demo
