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

/// One version of one object. It is kept as JSON text, so that lists and events are joined and never
/// serialised again; what look-ups need stands beside the text. Never changed after it was stored.
struct StoredObject
{
    const ResourceType *type = nullptr;
    std::string ns; ///< empty for cluster-scoped kinds
    std::string name;
    std::string uid;
    std::string ownerUid; ///< of the controlling owner
    std::uint64_t version = 0;
    std::vector<std::pair<std::string, std::string>> labels;
    std::string body; ///< without kind and apiVersion, as the items of a list are

    /// With kind and apiVersion, which may be the type's older one.
    std::string textAs(const std::string &version) const;
    json parsed() const;
    /// A changed copy that is not stored.
    std::shared_ptr<const StoredObject> edited(const std::function<void(json &)> &edit) const;
};
using ObjectPtr = std::shared_ptr<const StoredObject>;

struct Change
{
    enum class Kind { Added, Modified, Deleted };
    Kind kind = Kind::Added;
    ObjectPtr object; ///< of a deletion: the last state, under the version of the deletion
    ObjectPtr before; ///< null when it was added
};

struct Changes
{
    std::vector<Change> list;
    std::uint64_t version = 0; ///< whoever has seen the list has seen everything up to here
};

struct ListPage
{
    std::vector<ObjectPtr> objects;
    std::string next; ///< where the following page starts; empty on the last one
    size_t remaining = 0; ///< objects after this page, whatever the filter
    std::uint64_t version = 0;
};

struct ListQuery
{
    std::string ns = {}; ///< empty: all namespaces
    std::function<bool(const StoredObject &)> filter = {};
    size_t limit = 0; ///< 0: no paging
    std::string from = {}; ///< a page's `next`
};

/// All objects of one demo cluster, in memory, with the changes of late for watches. One number counts the
/// changes of all kinds; it is the version of every object, list and deletion. Every operation may be called
/// from any thread. A filter runs under the store's lock and must not call the store.
class ObjectStore
{
public:
    using Filter = std::function<bool(const StoredObject &)>;
    using Edit = std::function<void(json &)>;

    static constexpr size_t usualHistory = 10000;

    /// Of every kind the last `history` changes are kept.
    explicit ObjectStore(std::uint64_t seed, size_t history = usualHistory);

    ObjectPtr get(const ResourceType &type, const std::string &ns, const std::string &name) const;

    /// Objects in the order of namespace and name.
    ListPage list(const ResourceType &type, const ListQuery &query) const;
    std::vector<ObjectPtr> all(const ResourceType &type, const std::string &ns = {}) const;

    /// The list as it was at an earlier version. Nothing when the changes since then are not all kept.
    std::optional<ListPage> listAt(
        std::uint64_t version, const ResourceType &type, const ListQuery &query) const;

    std::vector<ObjectPtr> ownedBy(
        const ResourceType &type, const std::string &ns, const std::string &uid) const;

    /// Fills in uid, creation time, version and type words. Null when the name is taken.
    ObjectPtr create(const ResourceType &type, json object);

    /// Applies the edit to the newest version; again when somebody else was quicker. Null when the object
    /// does not exist. An edit that changes nothing stores nothing. What the edit throws goes to the caller
    /// and leaves the object as it was.
    ObjectPtr update(
        const ResourceType &type, const std::string &ns, const std::string &name, const Edit &edit);

    /// Returns what was removed, under the version of the removal; null when there was nothing.
    ObjectPtr remove(const ResourceType &type, const std::string &ns, const std::string &name);

    /// All kinds that are served now, custom ones last. They live as long as the store.
    std::vector<const ResourceType *> types() const;
    /// Null when no such resource is served. Knows older versions too.
    const ResourceType *findType(
        const std::string &group, const std::string &version, const std::string &plural) const;
    /// Serves one more kind. One of the same group and plural takes the place of the former, whose objects
    /// must be gone.
    const ResourceType &serve(ResourceType type);
    /// The kind is not found any more.
    void stopServing(const std::string &group, const std::string &plural);

    std::uint64_t version() const;

    /// Changes of a kind after a version, waiting for one up to the timeout. Nothing when that version is too
    /// long ago.
    std::optional<Changes> changesAfter(
        std::uint64_t version, const ResourceType &type, std::chrono::milliseconds timeout) const;
    /// The first version after which all changes of the kind are known.
    std::uint64_t oldestVersion(const ResourceType &type) const;

    /// Drops all kept changes: every earlier version is too long ago now.
    void forgetChanges();

    std::string newUid();

private:
    using Table = std::map<std::string, ObjectPtr>; ///< by "namespace/name"

    /// The objects of one kind, and what became of them lately.
    struct Shelf
    {
        Table objects;
        std::deque<Change> changes;
        std::uint64_t forgotten = firstVersion; ///< changes up to this version are gone
        mutable std::condition_variable_any changed;
    };

    static constexpr std::uint64_t firstVersion = 1000;

    ObjectPtr pack(const ResourceType &type, json &object);
    void publish(Shelf &shelf, Change change);
    ObjectPtr replace(const ObjectPtr &before, json &after);
    ListPage listed(const Shelf &shelf, const Table &undone, const ListQuery &query) const;
    Shelf &shelfOf(const ResourceType &type);
    const Shelf &shelfOf(const ResourceType &type) const;

    const size_t m_history;
    mutable std::shared_mutex m_mutex;
    std::map<const ResourceType *, Shelf> m_shelves;
    std::deque<ResourceType> m_custom; ///< those too that are not served any more
    std::vector<const ResourceType *> m_types; ///< served now
    std::uint64_t m_version = firstVersion;
    std::atomic<std::uint64_t> m_uidState;
};

} // namespace tidewright::demo
