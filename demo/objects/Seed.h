// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

namespace tidewright::demo {

/// The objects that the two contexts start with. Names and states are the same in every run; only times
/// follow the clock. fleetPods pods more go into namespace "fleet".
void seedHarbor(ObjectStore &store, int fleetPods);
void seedLighthouse(ObjectStore &store);

/// Part of seedHarbor: traffic, rights, storage and custom kinds.
void seedNetwork(ObjectStore &store);

/// Part of seedHarbor: the pods of namespace "fleet" under deployments of up to a hundred pods.
void seedFleet(ObjectStore &store, int pods);

/// Puts in place of all objects those of a server that means harm: of every kind one for each of a table of
/// texts that a client could take for an option, mark-up, a command, a path or keys, that text as its name
/// and the others wherever it has a text, all in namespace "default"; a pod "crowd" with 10,000 containers,
/// and a config map "huge" of 64 MB.
void makeHostile(ObjectStore &store);

} // namespace tidewright::demo
