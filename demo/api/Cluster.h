// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movement/Movement.h"
#include "movement/PodLoad.h"
#include "store/ObjectStore.h"

#include <string>

namespace tidewright::demo {

/// One demo cluster: what a kubeconfig context points at. Several live in one server, told apart by the first
/// part of the URL path, which is the context's name.
struct Cluster
{
    Cluster(std::string contextName, std::uint64_t seed, bool still, size_t history)
        : name(std::move(contextName))
        , isStill(still)
        , store(seed, history)
        , movement(store, still)
        , load(store)
    {
    }

    const std::string name;
    const bool isStill;
    bool isMeasured = false; ///< serves what pods and nodes use; set before anything is served
    ObjectStore store;
    Movement movement;
    PodLoad load;
};

} // namespace tidewright::demo
