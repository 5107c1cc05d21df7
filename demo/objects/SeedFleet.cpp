// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Names.h"
#include "objects/Planter.h"
#include "objects/Refresh.h"
#include "objects/Seed.h"

#include <algorithm>

namespace tidewright::demo {

namespace {

constexpr int podsPerDeployment = 100;

// One pod in fifty is not simply running.
PodState stateOf(int index)
{
    switch (index % 250) {
    case 17:
        return PodState::CrashLoop;
    case 66:
        return PodState::NotReady;
    case 121:
        return PodState::ContainerCreating;
    case 180:
        return PodState::ImagePull;
    case 233:
        return PodState::Unschedulable;
    default:
        return PodState::Running;
    }
}

std::vector<ContainerSpec> containersOf(int deployment)
{
    std::vector<ContainerSpec> containers{
        {"app", "registry.example/fleet/app:1." + std::to_string(deployment), 8080}};
    if (deployment % 3 == 1) {
        containers.push_back({"mesh-proxy", "registry.example/mesh/proxy:1.22.1", 15001});
    }
    return containers;
}

} // namespace

void seedFleet(ObjectStore &store, int pods)
{
    static const char *const words[]{
        "anchor", "buoy", "capstan", "dinghy", "ensign", "fender", "galley", "halyard"};
    Planter planter(store, "fleet", 90 * days);
    for (int planted = 0, number = 0; planted < pods; ++number) {
        const int count = std::min(podsPerDeployment, pods - planted);
        Workload workload{std::string(words[number % 8]) + '-' + std::to_string(number), count,
            (1 + number % 80) * days, containersOf(number)};
        for (int i = 0; i < count; ++i) {
            workload.states.push_back(stateOf(planted + i));
        }
        workload.restarts = 1 + number % 30;
        planter.deployment(workload);
        planted += count;
    }
}

} // namespace tidewright::demo
