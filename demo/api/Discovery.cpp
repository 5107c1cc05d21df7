// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Discovery.h"

#include "api/Metrics.h"
#include "base/Json.h"

#include <cstdio>
#include <set>

namespace tidewright::demo {

namespace {

using Types = std::vector<const ResourceType *>;

bool isOldClient(const std::string &userAgent)
{
    int minor = 0;
    const size_t start = userAgent.find("/v1.");
    return start != userAgent.npos && std::sscanf(userAgent.c_str() + start, "/v1.%d", &minor) == 1
        && minor < 21;
}

json versionEntry(const std::string &group, const std::string &version)
{
    return {{"groupVersion", group + '/' + version}, {"version", version}};
}

const std::string &listedVersion(const ResourceType &type, bool oldClient)
{
    return oldClient && !type.olderVersion.empty() ? type.olderVersion : type.version;
}

json groupEntry(const std::string &group, const Types &types, bool oldClient)
{
    std::set<std::string> versions; // which puts v1 before v1beta1
    for (const ResourceType *type : types) {
        if (type->group == group) {
            versions.insert(listedVersion(*type, oldClient));
        }
    }
    json entry{{"name", group}, {"versions", json::array()}};
    for (const std::string &version : versions) {
        entry["versions"].push_back(versionEntry(group, version));
    }
    entry["preferredVersion"] = entry["versions"].front();
    return entry;
}

std::set<std::string> groupsOf(const Types &types)
{
    std::set<std::string> names;
    for (const ResourceType *type : types) {
        if (!type->group.empty()) {
            names.insert(type->group);
        }
    }
    return names;
}

json resourceEntry(const ResourceType &type)
{
    json entry{{"name", type.plural}, {"singularName", type.singular}, {"namespaced", type.namespaced},
        {"kind", type.kind},
        {"verbs", {"create", "delete", "deletecollection", "get", "list", "patch", "update", "watch"}}};
    if (type.isReadOnly) {
        entry["verbs"] = {"get", "list"};
    }
    if (!type.shortNames.empty()) {
        entry["shortNames"] = type.shortNames;
    }
    if (type.inCategoryAll) {
        entry["categories"] = {"all"};
    }
    return entry;
}

json subresourceEntry(const ResourceType &type, const std::string &name)
{
    json entry{{"name", type.plural + '/' + name}, {"singularName", ""}, {"namespaced", type.namespaced},
        {"kind", name == "scale" ? "Scale" : type.kind}, {"verbs", {"get"}}};
    if (name != "log") {
        entry["verbs"] = {"get", "patch", "update"};
    }
    if (name == "scale") {
        entry["group"] = "autoscaling";
        entry["version"] = "v1";
    }
    return entry;
}

std::optional<std::string> resourceList(
    const std::string &group, const std::string &version, const Types &types, bool oldClient)
{
    json resources = json::array();
    for (const ResourceType *type : types) {
        if (type->group != group || version != listedVersion(*type, oldClient)) {
            continue;
        }
        resources.push_back(resourceEntry(*type));
        for (const std::string &name : type->subresources) {
            resources.push_back(subresourceEntry(*type, name));
        }
    }
    if (resources.empty()) {
        return std::nullopt;
    }
    return toText({{"kind", "APIResourceList"}, {"apiVersion", "v1"},
        {"groupVersion", group.empty() ? version : group + '/' + version}, {"resources", resources}});
}

std::string versionText()
{
    return toText({{"major", "1"}, {"minor", "30"}, {"gitVersion", "v1.30.0-demo"}, {"gitCommit", ""},
        {"gitTreeState", ""}, {"buildDate", "2024-01-01T00:00:00Z"}, {"goVersion", ""}, {"compiler", ""},
        {"platform", "linux/demo"}});
}

std::string groupList(const Types &types, bool oldClient)
{
    json list = json::array();
    for (const std::string &group : groupsOf(types)) {
        list.push_back(groupEntry(group, types, oldClient));
    }
    return toText({{"kind", "APIGroupList"}, {"apiVersion", "v1"}, {"groups", list}});
}

} // namespace

std::optional<std::string> discoveryText(
    const std::vector<std::string> &path, const std::string &userAgent, const Cluster &cluster)
{
    const Types types = servedTypes(cluster);
    const bool oldClient = isOldClient(userAgent);
    if (path.size() == 1 && path[0] == "version") {
        return versionText();
    }
    if (path.size() == 1 && path[0] == "api") {
        return toText({{"kind", "APIVersions"}, {"versions", {"v1"}}});
    }
    if (path.size() == 1 && path[0] == "apis") {
        return groupList(types, oldClient);
    }
    if (path.size() == 2 && path[0] == "api") {
        return resourceList("", path[1], types, oldClient);
    }
    if (path.size() == 2 && path[0] == "apis" && groupsOf(types).contains(path[1])) {
        return toText(groupEntry(path[1], types, oldClient));
    }
    if (path.size() == 3 && path[0] == "apis") {
        return resourceList(path[1], path[2], types, oldClient);
    }
    return std::nullopt;
}

} // namespace tidewright::demo
