// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/ClusterScope.h"
#include "objects/Planter.h"
#include "objects/Refresh.h"
#include "objects/Seed.h"

namespace tidewright::demo {

namespace {

using enum PodState;

void plantBeacons(ObjectStore &store)
{
    Planter planter(store, "beacons", 29 * days);
    planter.deployment({"beacon-api", 3, 29 * days, {{"api", "registry.example/beacon/api:0.18", 8080}}});
    planter.deployment({"tide-tables", 2, 3 * days,
        {{"tables", "registry.example/beacon/tides:1.4", 8080}, {"cache", "redis:7.2", 6379}}});
    planter.service("beacon-api", 8080, 29 * days);
    planter.cronJob({"fetch-forecast", 1, 29 * days, {{"fetch", "registry.example/beacon/forecast:3"}}},
        "*/5 * * * *", false, 3 * minutes);
    planter.object(
        "ConfigMap", "stations", 20 * days, {{"data", {{"stations.csv", "id,name\n1,North Pier\n"}}}});
}

void plantNightShift(ObjectStore &store)
{
    Planter planter(store, "night-shift", 4 * days);
    // Without the field, as recent clusters make them: a template that counts the secrets fails on it.
    planter.object("ServiceAccount", "bare", 4 * days);
    planter.job({"render-charts", 2, 20 * minutes, {{"render", "registry.example/charts/render:2"}},
        {Succeeded, Succeeded}});
    planter.deployment({"watchkeeper", 1, 4 * days, {{"watch", "registry.example/night/watch:0.1"}},
        {CrashLoop}, json::object(), 9});
}

} // namespace

void seedLighthouse(ObjectStore &store)
{
    plantNodes(store, 29 * days);
    Planter system(store, "kube-system", 29 * days);
    system.daemonSet({"network-agent", 5, 29 * days, {{"agent", "registry.example/system/network:3.27"}}}, 5);
    Planter planter(store, "default", 29 * days);
    planter.deployment({"lamp", 1, 29 * days, {{"lamp", "registry.example/lamp:1", 7000}}});
    planter.service("lamp", 7000, 29 * days);
    plantBeacons(store);
    plantNightShift(store);
    plantClusterRoles(store);
    for (const char *ns : {"default", "beacons"}) {
        refreshEndpoints(store, ns);
    }
    for (const ObjectPtr &pod : store.all(typeOfKind("Pod"))) {
        plantPodEvents(store, *pod, pod->parsed(), "");
    }
}

} // namespace tidewright::demo
