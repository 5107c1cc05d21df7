// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

#include <string>

namespace tidewright::demo {

// The revisions of stateful and daemon sets: a ControllerRevision holds the patch that leads back to it, and
// the label of a pod names the one that the pod was made from.

inline constexpr const char *revisionLabel = "controller-revision-hash";

bool hasRevisions(const std::string &kind);

/// "SET-HASH" for the template that the set has now.
std::string revisionName(const StoredObject &set, const json &parsed);
bool isOfRevision(const StoredObject &pod, const std::string &revision);

/// Sees to it that the set's template has a revision and that it is the newest. A name that does not exist is
/// left alone.
void keepRevision(
    ObjectStore &store, const std::string &kind, const std::string &ns, const std::string &name);

} // namespace tidewright::demo
