// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movement/Controllers.h"
#include "movement/Schedule.h"
#include "store/ObjectStore.h"

#include <atomic>
#include <string>

namespace tidewright::demo {

/// How a DELETE was meant.
struct Removal
{
    bool orphan = false; ///< leave what the object owns
    bool immediate = false; ///< no grace period
};

/// What follows from changes of the objects, and what happens without any: the controllers, the garbage
/// collection, the containers that crash. Told by the server about every write; safe from any thread.
class Movement
{
public:
    Movement(ObjectStore &store, bool still);

    /// Things begin to happen (unless still).
    void start();

    /// Fills in what a server defaults in a new object.
    void prepare(const ResourceType &type, json &object);

    void created(const ObjectPtr &object);
    void modified(const ObjectPtr &object);

    /// Deletes the object and what it owns. Returns the object as it is now when it takes a while to go, else
    /// null.
    ObjectPtr remove(const ObjectPtr &object, const Removal &removal);

    std::string randomSuffix();

private:
    ObjectPtr beginRemoval(const ObjectPtr &object, const Removal &removal);
    void removeNow(const ObjectPtr &object, const Removal &removal);
    void removeOwned(const StoredObject &owner);
    void removeContents(const std::string &ns);

    ObjectStore &m_store;
    Schedule m_schedule;
    Controllers m_controllers;
    std::atomic<std::uint64_t> m_names{0};
};

} // namespace tidewright::demo
