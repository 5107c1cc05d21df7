// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/ObjectStore.h"

#include "base/Time.h"

#include <algorithm>
#include <mutex>

namespace tidewright::demo {

namespace {

constexpr std::uint64_t uidStep = 0x9e3779b97f4a7c15ULL;

std::string keyOf(const std::string &ns, const std::string &name)
{
    return ns + '/' + name;
}

std::uint64_t scramble(std::uint64_t value)
{
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9ULL;
    value = (value ^ (value >> 27)) * 0x94d049bb133111ebULL;
    return value ^ (value >> 31);
}

std::string bodyOf(json &object)
{
    object.erase("kind");
    object.erase("apiVersion");
    return toText(object);
}

std::string controllerUid(const json &metadata)
{
    for (const json &owner : at(metadata, "/ownerReferences")) {
        if (flagAt(owner, "/controller")) {
            return textAt(owner, "/uid");
        }
    }
    return {};
}

} // namespace

std::string StoredObject::textAs(const std::string &wanted) const
{
    return R"({"kind":")" + type->kind + R"(","apiVersion":")" + type->apiVersionAs(wanted) + "\","
        + body.substr(1);
}

json StoredObject::parsed() const
{
    json object = json::parse(body);
    object["kind"] = type->kind;
    object["apiVersion"] = type->apiVersionAs(type->version);
    return object;
}

std::shared_ptr<const StoredObject> StoredObject::edited(const std::function<void(json &)> &edit) const
{
    json object = parsed();
    edit(object);
    auto copy = std::make_shared<StoredObject>(*this);
    copy->name = textAt(object, "/metadata/name");
    copy->version = std::strtoull(textAt(object, "/metadata/resourceVersion").c_str(), nullptr, 10);
    copy->body = bodyOf(object);
    return copy;
}

ObjectStore::ObjectStore(std::uint64_t seed, size_t history)
    : m_history(history)
    , m_uidState(seed)
{
    for (const ResourceType &type : resourceTypes()) {
        m_shelves.try_emplace(&type);
        m_types.push_back(&type);
    }
}

std::vector<const ResourceType *> ObjectStore::types() const
{
    const std::shared_lock lock(m_mutex);
    return m_types;
}

const ResourceType *ObjectStore::findType(
    const std::string &group, const std::string &version, const std::string &plural) const
{
    const std::shared_lock lock(m_mutex);
    const auto found = std::find_if(m_types.begin(), m_types.end(),
        [&](const ResourceType *type) { return isAddressed(*type, group, version, plural); });
    return found == m_types.end() ? nullptr : *found;
}

const ResourceType &ObjectStore::serve(ResourceType type)
{
    stopServing(type.group, type.plural);
    const std::unique_lock lock(m_mutex);
    const ResourceType &kept = m_custom.emplace_back(std::move(type));
    m_shelves.try_emplace(&kept).first->second.forgotten = m_version;
    m_types.push_back(&kept);
    return kept;
}

void ObjectStore::stopServing(const std::string &group, const std::string &plural)
{
    const std::unique_lock lock(m_mutex);
    std::erase_if(m_types, [&](const ResourceType *type) {
        return type->isCustom && type->group == group && type->plural == plural;
    });
}

ObjectStore::Shelf &ObjectStore::shelfOf(const ResourceType &type)
{
    return m_shelves.at(&type);
}

const ObjectStore::Shelf &ObjectStore::shelfOf(const ResourceType &type) const
{
    return m_shelves.at(&type);
}

std::string ObjectStore::newUid()
{
    static const char digits[] = "0123456789abcdef";
    const std::uint64_t high = scramble(m_uidState += uidStep);
    const std::uint64_t low = scramble(m_uidState += uidStep);
    std::string uid;
    for (int i = 0; i < 32; ++i) {
        if (i == 8 || i == 12 || i == 16 || i == 20) {
            uid += '-';
        }
        uid += i == 12 ? '4' : digits[((i < 16 ? high : low) >> (i % 16 * 4)) & 15];
    }
    return uid;
}

ObjectPtr ObjectStore::pack(const ResourceType &type, json &object)
{
    json &metadata = object["metadata"];
    auto stored = std::make_shared<StoredObject>();
    stored->version = ++m_version;
    metadata["resourceVersion"] = std::to_string(stored->version);
    stored->type = &type;
    stored->ns = textAt(metadata, "/namespace");
    stored->name = textAt(metadata, "/name");
    stored->uid = textAt(metadata, "/uid");
    stored->ownerUid = controllerUid(metadata);
    const json &labels = at(metadata, "/labels");
    for (auto label = labels.begin(); label != labels.end(); ++label) {
        if (label->is_string()) {
            stored->labels.emplace_back(label.key(), label->get<std::string>());
        }
    }
    for (const char *map : {"labels", "annotations"}) {
        if (at(metadata, std::string("/") + map).is_object() && metadata[map].empty()) {
            metadata.erase(map);
        }
    }
    stored->body = bodyOf(object);
    return stored;
}

void ObjectStore::publish(Shelf &shelf, Change change)
{
    shelf.changes.push_back(std::move(change));
    if (shelf.changes.size() > m_history) {
        shelf.forgotten = shelf.changes.front().object->version;
        shelf.changes.pop_front();
    }
    shelf.changed.notify_all();
}

ObjectPtr ObjectStore::get(const ResourceType &type, const std::string &ns, const std::string &name) const
{
    const std::shared_lock lock(m_mutex);
    const Table &table = shelfOf(type).objects;
    const auto found = table.find(keyOf(ns, name));
    return found == table.end() ? nullptr : found->second;
}

// `undone` has objects as they were before, null for those that were not there yet.
ListPage ObjectStore::listed(const Shelf &shelf, const Table &undone, const ListQuery &query) const
{
    const std::string prefix = query.ns.empty() ? std::string() : query.ns + '/';
    const std::string start = std::max(prefix, query.from);
    ListPage page;
    auto entry = shelf.objects.lower_bound(start);
    auto earlier = undone.lower_bound(start);
    while (entry != shelf.objects.end() || earlier != undone.end()) {
        const bool wasOther
            = earlier != undone.end() && (entry == shelf.objects.end() || earlier->first <= entry->first);
        const auto &[key, object] = wasOther ? *earlier : *entry;
        if (!key.starts_with(prefix)) {
            break;
        }
        if (!page.next.empty()) {
            page.remaining += object != nullptr;
        } else if (object && (!query.filter || query.filter(*object))) {
            if (query.limit != 0 && page.objects.size() == query.limit) {
                page.next = key;
                page.remaining = 1;
            } else {
                page.objects.push_back(object);
            }
        }
        if (wasOther && entry != shelf.objects.end() && entry->first == earlier->first) {
            ++entry;
        }
        if (wasOther) {
            ++earlier;
        } else {
            ++entry;
        }
    }
    return page;
}

ListPage ObjectStore::list(const ResourceType &type, const ListQuery &query) const
{
    const std::shared_lock lock(m_mutex);
    ListPage page = listed(shelfOf(type), {}, query);
    page.version = m_version;
    return page;
}

std::vector<ObjectPtr> ObjectStore::all(const ResourceType &type, const std::string &ns) const
{
    return list(type, {ns}).objects;
}

std::optional<ListPage> ObjectStore::listAt(
    std::uint64_t version, const ResourceType &type, const ListQuery &query) const
{
    const std::shared_lock lock(m_mutex);
    const Shelf &shelf = shelfOf(type);
    if (version < shelf.forgotten) {
        return std::nullopt;
    }
    Table undone;
    for (auto change = shelf.changes.rbegin();
         change != shelf.changes.rend() && change->object->version > version; ++change) {
        undone[keyOf(change->object->ns, change->object->name)] = change->before;
    }
    ListPage page = listed(shelf, undone, query);
    page.version = version;
    return page;
}

std::vector<ObjectPtr> ObjectStore::ownedBy(
    const ResourceType &type, const std::string &ns, const std::string &uid) const
{
    return list(type, {ns, [&uid](const StoredObject &object) { return object.ownerUid == uid; }}).objects;
}

ObjectPtr ObjectStore::create(const ResourceType &type, json object)
{
    const std::unique_lock lock(m_mutex);
    json &metadata = object["metadata"];
    Shelf &shelf = shelfOf(type);
    const std::string key = keyOf(textAt(metadata, "/namespace"), textAt(metadata, "/name"));
    if (shelf.objects.contains(key)) {
        return nullptr;
    }
    if (!metadata.contains("uid")) {
        metadata["uid"] = newUid();
    }
    if (!metadata.contains("creationTimestamp") || metadata["creationTimestamp"].is_null()) {
        metadata["creationTimestamp"] = timestamp(now());
    }
    const ObjectPtr stored = pack(type, object);
    shelf.objects.emplace(key, stored);
    publish(shelf, {Change::Kind::Added, stored, nullptr});
    return stored;
}

// Null when `before` is no longer what is there.
ObjectPtr ObjectStore::replace(const ObjectPtr &before, json &after)
{
    const std::unique_lock lock(m_mutex);
    Shelf &shelf = shelfOf(*before->type);
    const auto found = shelf.objects.find(keyOf(before->ns, before->name));
    if (found == shelf.objects.end() || found->second != before) {
        return nullptr;
    }
    found->second = pack(*before->type, after);
    publish(shelf, {Change::Kind::Modified, found->second, before});
    return found->second;
}

ObjectPtr ObjectStore::update(
    const ResourceType &type, const std::string &ns, const std::string &name, const Edit &edit)
{
    while (const ObjectPtr present = get(type, ns, name)) {
        // Parsed and edited without the lock: a thousand changes a second must not keep readers waiting.
        const json before = present->parsed();
        json after = before;
        edit(after);
        if (after == before) {
            return present;
        }
        if (const ObjectPtr stored = replace(present, after)) {
            return stored;
        }
    }
    return nullptr;
}

ObjectPtr ObjectStore::remove(const ResourceType &type, const std::string &ns, const std::string &name)
{
    const std::unique_lock lock(m_mutex);
    Shelf &shelf = shelfOf(type);
    const auto found = shelf.objects.find(keyOf(ns, name));
    if (found == shelf.objects.end()) {
        return nullptr;
    }
    const ObjectPtr before = found->second;
    json last = before->parsed();
    shelf.objects.erase(found);
    const ObjectPtr removed = pack(type, last);
    publish(shelf, {Change::Kind::Deleted, removed, before});
    return removed;
}

std::uint64_t ObjectStore::version() const
{
    const std::shared_lock lock(m_mutex);
    return m_version;
}

std::optional<Changes> ObjectStore::changesAfter(
    std::uint64_t version, const ResourceType &type, std::chrono::milliseconds timeout) const
{
    std::shared_lock lock(m_mutex);
    const Shelf &shelf = shelfOf(type);
    shelf.changed.wait_for(lock, timeout, [&] {
        return version < shelf.forgotten
            || (!shelf.changes.empty() && shelf.changes.back().object->version > version);
    });
    if (version < shelf.forgotten) {
        return std::nullopt;
    }
    const auto first = std::partition_point(shelf.changes.begin(), shelf.changes.end(),
        [version](const Change &change) { return change.object->version <= version; });
    return Changes{{first, shelf.changes.end()}, std::max(m_version, version)};
}

std::uint64_t ObjectStore::oldestVersion(const ResourceType &type) const
{
    const std::shared_lock lock(m_mutex);
    return shelfOf(type).forgotten;
}

void ObjectStore::forgetChanges()
{
    const std::unique_lock lock(m_mutex);
    for (auto &[type, shelf] : m_shelves) {
        shelf.forgotten = m_version;
        shelf.changes.clear();
        shelf.changed.notify_all();
    }
}

} // namespace tidewright::demo
