// SPDX-License-Identifier: GPL-3.0-or-later
#include "changes/Patch.h"

#include "store/ApiError.h"

#include <algorithm>
#include <map>

namespace tidewright::demo {

namespace {

// Lists that a strategic merge patch merges by key; all others are replaced. Ports are told apart below.
const std::map<std::string, std::string> &mergeKeys()
{
    static const std::map<std::string, std::string> keys{
        {"containers", "name"},
        {"initContainers", "name"},
        {"ephemeralContainers", "name"},
        {"env", "name"},
        {"volumes", "name"},
        {"volumeMounts", "mountPath"},
        {"volumeDevices", "devicePath"},
        {"imagePullSecrets", "name"},
        {"conditions", "type"},
        {"ownerReferences", "uid"},
        {"secrets", "name"},
        {"hostAliases", "ip"},
        {"topologySpreadConstraints", "topologyKey"},
    };
    return keys;
}

std::string mergeKeyOf(const std::string &field, const json &items)
{
    if (field == "ports") {
        return !items.empty() && items[0].is_object() && items[0].contains("containerPort") ? "containerPort"
                                                                                            : "port";
    }
    const auto found = mergeKeys().find(field);
    return found == mergeKeys().end() ? std::string() : found->second;
}

json::iterator itemWithKey(json &list, const std::string &key, const json &value)
{
    return std::find_if(list.begin(), list.end(),
        [&](const json &item) { return item.is_object() && item.contains(key) && item[key] == value; });
}

void mergeMap(json &target, const json &patch);

void mergeList(json &target, const json &patch, const std::string &key)
{
    if (!target.is_array()) {
        target = json::array();
    }
    const bool replaces = std::any_of(
        patch.begin(), patch.end(), [](const json &item) { return textAt(item, "/$patch") == "replace"; });
    if (replaces) {
        target = json::array();
    }
    for (const json &item : patch) {
        const std::string directive = textAt(item, "/$patch");
        if (directive == "replace") {
            continue;
        }
        const json &value = at(item, '/' + key);
        if (!item.is_object() || value.is_null()) {
            throw ApiError(422, "Invalid", "map: does not contain declared merge key: " + key);
        }
        const auto found = itemWithKey(target, key, value);
        if (directive == "delete") {
            if (found != target.end()) {
                target.erase(found);
            }
        } else if (found != target.end()) {
            mergeMap(*found, item);
        } else {
            json added = json::object();
            mergeMap(added, item);
            target.push_back(std::move(added));
        }
    }
}

void deleteFromPrimitiveList(json &target, const json &values)
{
    if (!target.is_array()) {
        return;
    }
    json kept = json::array();
    for (const json &item : target) {
        if (std::find(values.begin(), values.end(), item) == values.end()) {
            kept.push_back(item);
        }
    }
    target = std::move(kept);
}

void orderList(json &target, const std::string &key, const json &order)
{
    if (!target.is_array() || !order.is_array()) {
        return;
    }
    const auto rank = [&](const json &item) {
        const json &value = key.empty() ? item : at(item, '/' + key);
        return std::find_if(order.begin(), order.end(), [&](const json &entry) {
            return (entry.is_object() ? at(entry, '/' + key) : entry) == value;
        }) - order.begin();
    };
    std::vector<json> items(target.begin(), target.end());
    std::stable_sort(
        items.begin(), items.end(), [&](const json &a, const json &b) { return rank(a) < rank(b); });
    target = items;
}

void mergeField(json &target, const std::string &field, const json &value)
{
    const std::string key = value.is_array() ? mergeKeyOf(field, value) : std::string();
    if (value.is_null()) {
        target.erase(field);
    } else if (value.is_object()) {
        if (!target[field].is_object()) {
            target[field] = json::object();
        }
        mergeMap(target[field], value);
    } else if (!key.empty()) {
        mergeList(target[field], value, key);
    } else if (field == "finalizers" && target.contains(field)) {
        for (const json &item : value) {
            if (std::find(target[field].begin(), target[field].end(), item) == target[field].end()) {
                target[field].push_back(item);
            }
        }
    } else {
        target[field] = value;
    }
}

void retainKeys(json &target, const json &names)
{
    json kept = json::object();
    for (const json &name : names) {
        if (name.is_string() && target.contains(name.get<std::string>())) {
            kept[name.get<std::string>()] = target[name.get<std::string>()];
        }
    }
    target = std::move(kept);
}

void mergeMap(json &target, const json &patch)
{
    static const std::string order = "$setElementOrder/";
    static const std::string removal = "$deleteFromPrimitiveList/";
    if (textAt(patch, "/$patch") == "replace") {
        target = json::object();
    }
    for (auto field = patch.begin(); field != patch.end(); ++field) {
        if (field.key().starts_with(removal)) {
            deleteFromPrimitiveList(target[field.key().substr(removal.size())], *field);
        } else if (field.key() == "$retainKeys") {
            retainKeys(target, *field);
        } else if (!field.key().starts_with('$')) {
            mergeField(target, field.key(), *field);
        }
    }
    for (auto field = patch.begin(); field != patch.end(); ++field) {
        const std::string name
            = field.key().starts_with(order) ? field.key().substr(order.size()) : std::string();
        if (!name.empty() && target.contains(name)) {
            orderList(target[name], mergeKeyOf(name, target[name]), *field);
        }
    }
}

} // namespace

json applyPatch(const std::string &contentType, const json &object, const json &patch)
{
    const std::string form = contentType.substr(0, contentType.find(';'));
    json result = object;
    if (form == "application/json-patch+json") {
        try {
            return object.patch(patch);
        } catch (const json::exception &error) {
            throw ApiError(422, "Invalid", std::string("the patch does not apply: ") + error.what());
        }
    }
    if (form != "application/merge-patch+json" && form != "application/strategic-merge-patch+json") {
        throw ApiError(
            415, "UnsupportedMediaType", "the demo cluster does not serve patches of type " + form);
    }
    if (!patch.is_object()) {
        throw ApiError::badRequest("the patch must be an object");
    }
    if (form == "application/merge-patch+json") {
        result.merge_patch(patch);
    } else {
        mergeMap(result, patch);
    }
    return result;
}

} // namespace tidewright::demo
