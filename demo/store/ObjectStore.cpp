// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/ObjectStore.h"

#include "base/Time.h"

#include <mutex>

namespace tidewright::demo {

namespace {

constexpr size_t rememberedChanges = 5000;
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

std::string controllerUid(const json &metadata)
{
    for (const json &owner : at(metadata, "/ownerReferences")) {
        if (flagAt(owner, "/controller"))
            return textAt(owner, "/uid");
    }
    return {};
}

} // namespace

ObjectStore::ObjectStore(std::uint64_t seed)
    : m_tables(resourceTypes().size())
    , m_uidState(seed)
{
}

const ObjectStore::Table &ObjectStore::tableOf(const ResourceType &type) const
{
    return m_tables[size_t(&type - resourceTypes().data())];
}

std::string ObjectStore::newUid()
{
    static const char digits[] = "0123456789abcdef";
    const std::uint64_t high = scramble(m_uidState += uidStep);
    const std::uint64_t low = scramble(m_uidState += uidStep);
    std::string uid;
    for (int i = 0; i < 32; ++i) {
        if (i == 8 || i == 12 || i == 16 || i == 20)
            uid += '-';
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
        if (label->is_string())
            stored->labels.emplace_back(label.key(), label->get<std::string>());
    }
    stored->text = toText(object);
    return stored;
}

void ObjectStore::publish(Change::Kind kind, const ObjectPtr &object)
{
    m_changes.push_back({kind, object});
    if (m_changes.size() > rememberedChanges) {
        m_forgotten = m_changes.front().object->version;
        m_changes.pop_front();
    }
    m_changed.notify_all();
}

ObjectPtr ObjectStore::get(const ResourceType &type, const std::string &ns, const std::string &name) const
{
    const std::shared_lock lock(m_mutex);
    const Table &table = tableOf(type);
    const auto found = table.find(keyOf(ns, name));
    return found == table.end() ? nullptr : found->second;
}

ListPage ObjectStore::list(const ResourceType &type, const std::string &ns, const Filter &filter,
    size_t limit, const std::string &from) const
{
    const std::shared_lock lock(m_mutex);
    const Table &table = tableOf(type);
    const std::string prefix = ns.empty() ? std::string() : ns + '/';
    ListPage page;
    page.version = m_version;
    for (auto entry = table.lower_bound(std::max(prefix, from)); entry != table.end(); ++entry) {
        if (!entry->first.starts_with(prefix))
            break;
        if (filter && !filter(*entry->second))
            continue;
        if (limit != 0 && page.objects.size() == limit) {
            page.next = entry->first;
            break;
        }
        page.objects.push_back(entry->second);
    }
    return page;
}

std::vector<ObjectPtr> ObjectStore::ownedBy(
    const ResourceType &type, const std::string &ns, const std::string &uid) const
{
    return list(type, ns, [&uid](const StoredObject &object) { return object.ownerUid == uid; }).objects;
}

ObjectPtr ObjectStore::create(const ResourceType &type, json object)
{
    const std::unique_lock lock(m_mutex);
    json &metadata = object["metadata"];
    auto &table = const_cast<Table &>(tableOf(type));
    const std::string key = keyOf(textAt(metadata, "/namespace"), textAt(metadata, "/name"));
    if (table.contains(key))
        return nullptr;
    object["apiVersion"] = type.apiVersion();
    object["kind"] = type.kind;
    if (!metadata.contains("uid"))
        metadata["uid"] = newUid();
    if (!metadata.contains("creationTimestamp") || metadata["creationTimestamp"].is_null())
        metadata["creationTimestamp"] = timestamp(now());
    const ObjectPtr stored = pack(type, object);
    table.emplace(key, stored);
    publish(Change::Kind::Added, stored);
    return stored;
}

ObjectPtr ObjectStore::update(
    const ResourceType &type, const std::string &ns, const std::string &name, const Edit &edit)
{
    const std::unique_lock lock(m_mutex);
    auto &table = const_cast<Table &>(tableOf(type));
    const auto found = table.find(keyOf(ns, name));
    if (found == table.end())
        return nullptr;
    const json before = found->second->parsed();
    json after = before;
    edit(after);
    if (after == before)
        return found->second;
    found->second = pack(type, after);
    publish(Change::Kind::Modified, found->second);
    return found->second;
}

ObjectPtr ObjectStore::remove(const ResourceType &type, const std::string &ns, const std::string &name)
{
    const std::unique_lock lock(m_mutex);
    auto &table = const_cast<Table &>(tableOf(type));
    const auto found = table.find(keyOf(ns, name));
    if (found == table.end())
        return nullptr;
    json last = found->second->parsed();
    table.erase(found);
    const ObjectPtr removed = pack(type, last);
    publish(Change::Kind::Deleted, removed);
    return removed;
}

std::uint64_t ObjectStore::version() const
{
    const std::shared_lock lock(m_mutex);
    return m_version;
}

std::optional<std::vector<Change>> ObjectStore::changesAfter(
    std::uint64_t version, std::chrono::milliseconds timeout) const
{
    std::shared_lock lock(m_mutex);
    m_changed.wait_for(lock, timeout, [&] { return m_version > version; });
    if (version < m_forgotten)
        return std::nullopt;
    std::vector<Change> changes;
    for (auto change = m_changes.rbegin(); change != m_changes.rend() && change->object->version > version;
         ++change)
        changes.push_back(*change);
    return std::vector<Change>(changes.rbegin(), changes.rend());
}

} // namespace tidewright::demo
