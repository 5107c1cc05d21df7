// SPDX-License-Identifier: GPL-3.0-or-later
#include "movement/CrashLoops.h"

#include "base/Time.h"
#include "objects/Events.h"
#include "objects/Pods.h"
#include "objects/Refresh.h"

#include <deque>
#include <memory>

namespace tidewright::demo {

namespace {

using namespace std::chrono_literals;

constexpr size_t keptEvents = 150;

struct Loops
{
    ObjectStore &store;
    Schedule &schedule;
    std::deque<std::pair<std::string, std::string>> events; // namespace and name of what was added here
};
using LoopsPtr = std::shared_ptr<Loops>;

void tellEvent(Loops &loops, const StoredObject &about)
{
    const EventText text{"Warning", "BackOff", "Back-off restarting failed container"};
    loops.events.emplace_back(about.ns, recordEvent(loops.store, about, text));
    if (loops.events.size() > keptEvents) {
        const auto &[ns, name] = loops.events.front();
        loops.store.remove(typeOfKind("Event"), ns, name);
        loops.events.pop_front();
    }
}

void setState(Loops &loops, const StoredObject &pod, PodState state, int restarts)
{
    loops.store.update(*pod.type, pod.ns, pod.name, [&](json &object) {
        if (at(object, "/metadata/deletionTimestamp").is_null()) {
            setPodState(object, state, parseTimestamp(textAt(object, "/status/startTime")), restarts);
        }
    });
    const json parsed = pod.parsed();
    refreshOwner(loops.store, pod.ns, textAt(parsed, "/metadata/ownerReferences/0/kind"),
        textAt(parsed, "/metadata/ownerReferences/0/name"));
}

void crashAgain(const LoopsPtr &loops, const ObjectPtr &pod)
{
    const ObjectPtr present = loops->store.get(*pod->type, pod->ns, pod->name);
    if (!present || present->uid != pod->uid) {
        return;
    }
    const json parsed = present->parsed();
    const json &statuses = at(parsed, "/status/containerStatuses");
    if (statuses.empty()) {
        return;
    }
    const int restarts = int(numberAt(statuses.back(), "/restartCount")) + 1;
    setState(*loops, *present, PodState::NotReady, restarts);
    loops->schedule.after(6s, [loops, present, restarts] {
        setState(*loops, *present, PodState::CrashLoop, restarts);
        tellEvent(*loops, *present);
    });
    loops->schedule.after(40s, [loops, present] { crashAgain(loops, present); });
}

} // namespace

void beginCrashLoops(ObjectStore &store, Schedule &schedule)
{
    const auto loops = std::make_shared<Loops>(Loops{store, schedule, {}});
    const auto isCrashing
        = [](const StoredObject &pod) { return pod.body.find("\"CrashLoopBackOff\"") != pod.body.npos; };
    std::chrono::seconds delay = 0s;
    for (const ObjectPtr &pod : store.list(typeOfKind("Pod"), {{}, isCrashing}).objects) {
        schedule.after(delay += 3s, [loops, pod] { crashAgain(loops, pod); });
    }
}

} // namespace tidewright::demo
