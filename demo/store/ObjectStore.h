// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Json.h"
#include "store/ResourceType.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <shared_mutex>
#include <string>
#include <utility>
#include <vector>

namespace tidewright::demo {

// One version of one object. It is kept as JSON text, so that a list is joined and never serialised again;
// what look-ups need stands beside the text. Never changed after it was stored.
struct StoredObject
{
    const ResourceType *type = nullptr;
    std::string ns; // empty for cluster-scoped kinds
    std::string name;
    std::string uid;
    std::string ownerUid; // of the controlling owner
    std::uint64_t version = 0;
    std::vector<std::pair<std::string, std::string>> labels;
    std::string text;

    json parsed() const { return json::parse(text); }
};
using ObjectPtr = std::shared_ptr<const StoredObject>;

struct Change
{
    enum class Kind { Added, Modified, Deleted };
    Kind kind = Kind::Added;
    ObjectPtr object;
};

struct ListPage
{
    std::vector<ObjectPtr> objects;
    std::string next; // where the following page starts; empty on the last one
    std::uint64_t version = 0;
};

// All objects of one demo cluster, in memory, with the changes of late for watches. Every operation may be
// called from any thread. A callback given to an operation runs under the store's lock and must not call the
// store.
class ObjectStore
{
public:
    using Filter = std::function<bool(const StoredObject &)>;
    using Edit = std::function<void(json &)>;

    explicit ObjectStore(std::uint64_t seed);

    ObjectPtr get(const ResourceType &type, const std::string &ns, const std::string &name) const;

    // Objects in the order of namespace and name. Empty ns: all namespaces. limit 0: no paging.
    ListPage list(const ResourceType &type, const std::string &ns, const Filter &filter = {},
        size_t limit = 0, const std::string &from = {}) const;

    std::vector<ObjectPtr> ownedBy(
        const ResourceType &type, const std::string &ns, const std::string &uid) const;

    // Fills in uid, creation time, version and type words. Null when the name is taken.
    ObjectPtr create(const ResourceType &type, json object);

    // Applies the edit to the newest version in one step. Null when the object does not exist. An edit that
    // changes nothing stores nothing. What the edit throws goes to the caller and leaves the object as it
    // was.
    ObjectPtr update(
        const ResourceType &type, const std::string &ns, const std::string &name, const Edit &edit);

    // Returns what was removed, null when there was nothing.
    ObjectPtr remove(const ResourceType &type, const std::string &ns, const std::string &name);

    std::uint64_t version() const;

    // Changes after a version, waiting for one up to the timeout. Nothing when that version is too long ago.
    std::optional<std::vector<Change>> changesAfter(
        std::uint64_t version, std::chrono::milliseconds timeout) const;

    std::string newUid();

private:
    using Table = std::map<std::string, ObjectPtr>; // by "namespace/name"

    ObjectPtr pack(const ResourceType &type, json &object);
    void publish(Change::Kind kind, const ObjectPtr &object);
    const Table &tableOf(const ResourceType &type) const;

    mutable std::shared_mutex m_mutex;
    mutable std::condition_variable_any m_changed;
    std::vector<Table> m_tables; // by position in resourceTypes()
    std::deque<Change> m_changes;
    std::uint64_t m_version = 1000;
    std::uint64_t m_forgotten = 1000; // changes up to this version are gone
    std::atomic<std::uint64_t> m_uidState;
};

} // namespace tidewright::demo
