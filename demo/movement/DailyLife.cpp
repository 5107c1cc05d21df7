// SPDX-License-Identifier: GPL-3.0-or-later
#include "movement/DailyLife.h"

#include "base/Time.h"
#include "objects/Events.h"
#include "objects/Names.h"
#include "objects/Pods.h"
#include "objects/Refresh.h"

#include <deque>
#include <memory>

namespace tidewright::demo {

namespace {

using namespace std::chrono_literals;

constexpr size_t keptEvents = 150;
constexpr size_t keptJobs = 3;

struct Life
{
    ObjectStore &store;
    Schedule &schedule;
    Controllers &controllers;
    std::deque<std::pair<std::string, std::string>> events; // namespace and name of what was added here
    std::deque<std::pair<std::string, std::string>> jobs;
    std::uint64_t turn = 0;
};
using LifePtr = std::shared_ptr<Life>;

void tellEvent(Life &life, const StoredObject &about, const EventText &text)
{
    life.events.emplace_back(about.ns, recordEvent(life.store, about, text));
    if (life.events.size() > keptEvents) {
        life.store.remove(typeOfKind("Event"), life.events.front().first, life.events.front().second);
        life.events.pop_front();
    }
}

void setState(Life &life, const StoredObject &pod, PodState state, int restarts)
{
    life.store.update(*pod.type, pod.ns, pod.name, [&](json &object) {
        if (at(object, "/metadata/deletionTimestamp").is_null()) {
            setPodState(object, state, parseTimestamp(textAt(object, "/status/startTime")), restarts);
        }
    });
    const json parsed = pod.parsed();
    refreshOwner(life.store, pod.ns, textAt(parsed, "/metadata/ownerReferences/0/kind"),
        textAt(parsed, "/metadata/ownerReferences/0/name"));
}

void crashAgain(const LifePtr &life, const ObjectPtr &pod)
{
    const ObjectPtr present = life->store.get(*pod->type, pod->ns, pod->name);
    if (!present || present->uid != pod->uid) {
        return;
    }
    const json parsed = present->parsed();
    const json &statuses = at(parsed, "/status/containerStatuses");
    if (statuses.empty()) {
        return;
    }
    const int restarts = int(numberAt(statuses.back(), "/restartCount")) + 1;
    setState(*life, *present, PodState::NotReady, restarts);
    life->schedule.after(6s, [life, present, restarts] {
        setState(*life, *present, PodState::CrashLoop, restarts);
        tellEvent(*life, *present, {"Warning", "BackOff", "Back-off restarting failed container"});
    });
    life->schedule.after(40s, [life, present] { crashAgain(life, present); });
}

void mentionSomething(const LifePtr &life)
{
    static const std::vector<EventText> sayings{
        {"Warning", "Unhealthy", "Readiness probe failed: HTTP probe failed with statuscode: 503"},
        {"Normal", "Pulled", "Successfully pulled image in 2.114s"},
        {"Warning", "Unhealthy", "Liveness probe failed: context deadline exceeded"},
        {"Normal", "Killing", "Stopping container after configuration change"},
        {"Warning", "DNSConfigForming",
            "Nameserver limits were exceeded, some nameservers have been omitted"},
    };
    const std::uint64_t turn = stableHash(std::to_string(life->turn++));
    const auto pods
        = life->store.list(typeOfKind("Pod"), {turn % 2 == 0 ? "shop" : "default", {}, 40}).objects;
    if (!pods.empty()) {
        tellEvent(*life, *pods[turn / 7 % pods.size()], sayings[turn % sayings.size()]);
    }
    life->schedule.after(12s, [life] { mentionSomething(life); });
}

void runNextCronJob(const LifePtr &life, size_t turn)
{
    const auto due
        = life->store
              .list(typeOfKind("CronJob"),
                  {{}, [](const StoredObject &object) { return !flagAt(object.parsed(), "/spec/suspend"); }})
              .objects;
    if (!due.empty()) {
        const StoredObject &cronJob = *due[turn % due.size()];
        const std::string job = life->controllers.runCronJob(cronJob);
        if (!job.empty()) {
            life->jobs.emplace_back(cronJob.ns, job);
        }
    }
    if (life->jobs.size() > keptJobs) {
        const auto [ns, name] = life->jobs.front();
        life->jobs.pop_front();
        if (const ObjectPtr job = life->store.remove(typeOfKind("Job"), ns, name)) {
            for (const ObjectPtr &pod : life->store.ownedBy(typeOfKind("Pod"), ns, job->uid)) {
                life->store.remove(*pod->type, ns, pod->name);
            }
        }
    }
    life->schedule.after(45s, [life, turn] { runNextCronJob(life, turn + 1); });
}

} // namespace

void beginDailyLife(ObjectStore &store, Schedule &schedule, Controllers &controllers)
{
    const auto life = std::make_shared<Life>(Life{store, schedule, controllers, {}, {}, 0});
    const auto crashing = store.list(typeOfKind("Pod"),
        {{}, [](const StoredObject &pod) { return pod.body.find("\"CrashLoopBackOff\"") != pod.body.npos; }});
    std::chrono::seconds delay = 0s;
    for (const ObjectPtr &pod : crashing.objects) {
        schedule.after(delay += 3s, [life, pod] { crashAgain(life, pod); });
    }
    schedule.after(4s, [life] { mentionSomething(life); });
    schedule.after(20s, [life] { runNextCronJob(life, 0); });
}

} // namespace tidewright::demo
