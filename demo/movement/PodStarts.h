// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movement/Schedule.h"
#include "store/ObjectStore.h"

#include <functional>
#include <string>

namespace tidewright::demo {

/// The way of a pod from Pending to Running or to its end, and to a node that takes it. Works through the
/// schedule; owned by Controllers.
class PodStarts
{
public:
    /// `ownerIsNext` is told when a pod has come to run of whose owner's pods one after the other is
    /// replaced.
    using OwnerIsNext
        = std::function<void(const std::string &kind, const std::string &ns, const std::string &name)>;

    PodStarts(ObjectStore &store, Schedule &schedule, OwnerIsNext ownerIsNext);

    void start(const StoredObject &pod);
    /// Those that found all nodes closed.
    void startWaiting();

private:
    void advance(const StoredObject &pod, int step);

    ObjectStore &m_store;
    Schedule &m_schedule;
    OwnerIsNext m_ownerIsNext;
};

/// The counts of a pod's owner and the endpoints beside it, as its state is now.
void refreshAround(ObjectStore &store, const StoredObject &pod);

} // namespace tidewright::demo
