// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/Discovery.h"

#include "base/Json.h"
#include "store/ResourceType.h"

#include <cstdio>
#include <set>

namespace tidewright::demo {

namespace {

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

json groupEntry(const std::string &group, bool oldClient)
{
    json versions = json::array({versionEntry(group, "v1")});
    if (group == "batch" && oldClient) {
        versions.push_back(versionEntry(group, "v1beta1"));
    }
    return {{"name", group}, {"versions", versions}, {"preferredVersion", versionEntry(group, "v1")}};
}

std::set<std::string> groups()
{
    std::set<std::string> names;
    for (const ResourceType &type : resourceTypes()) {
        if (!type.group.empty()) {
            names.insert(type.group);
        }
    }
    return names;
}

json resourceEntry(const ResourceType &type)
{
    json entry{{"name", type.plural}, {"singularName", type.singular}, {"namespaced", type.namespaced},
        {"kind", type.kind},
        {"verbs", {"create", "delete", "deletecollection", "get", "list", "patch", "update", "watch"}}};
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

std::optional<std::string> resourceList(const std::string &group, const std::string &version, bool oldClient)
{
    json resources = json::array();
    for (const ResourceType &type : resourceTypes()) {
        const std::string &listedIn
            = oldClient && !type.olderVersion.empty() ? type.olderVersion : type.version;
        if (type.group != group || version != listedIn) {
            continue;
        }
        resources.push_back(resourceEntry(type));
        for (const std::string &name : type.subresources) {
            resources.push_back(subresourceEntry(type, name));
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

std::string groupList(bool oldClient)
{
    json list = json::array();
    for (const std::string &group : groups()) {
        list.push_back(groupEntry(group, oldClient));
    }
    return toText({{"kind", "APIGroupList"}, {"apiVersion", "v1"}, {"groups", list}});
}

} // namespace

std::optional<std::string> discoveryText(const std::vector<std::string> &path, const std::string &userAgent)
{
    const bool oldClient = isOldClient(userAgent);
    if (path.size() == 1 && path[0] == "version") {
        return versionText();
    }
    if (path.size() == 1 && path[0] == "api") {
        return toText({{"kind", "APIVersions"}, {"versions", {"v1"}}});
    }
    if (path.size() == 1 && path[0] == "apis") {
        return groupList(oldClient);
    }
    if (path.size() == 2 && path[0] == "api") {
        return resourceList("", path[1], oldClient);
    }
    if (path.size() == 2 && path[0] == "apis" && groups().contains(path[1])) {
        return toText(groupEntry(path[1], oldClient));
    }
    if (path.size() == 3 && path[0] == "apis") {
        return resourceList(path[1], path[2], oldClient);
    }
    return std::nullopt;
}

} // namespace tidewright::demo
