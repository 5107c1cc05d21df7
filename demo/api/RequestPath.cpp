// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/RequestPath.h"

#include <sstream>

namespace tidewright::demo {

std::vector<std::string> splitPath(const std::string &path)
{
    std::vector<std::string> parts;
    std::istringstream stream(path);
    for (std::string part; std::getline(stream, part, '/');) {
        if (!part.empty()) {
            parts.push_back(part);
        }
    }
    return parts;
}

std::optional<ResourcePath> parseResourcePath(const std::vector<std::string> &parts, const ObjectStore &store)
{
    if (parts.empty()) {
        return std::nullopt;
    }
    const bool isCore = parts[0] == "api";
    size_t next = isCore ? 2 : 3;
    if ((!isCore && parts[0] != "apis") || parts.size() <= next) {
        return std::nullopt;
    }
    const std::string group = isCore ? std::string() : parts[1];
    ResourcePath path;
    path.version = parts[next - 1];

    // ".../namespaces/NS/PLURAL" is a namespaced kind, ".../namespaces/NS" and ".../namespaces/NS/status" the
    // namespace itself.
    if (parts[next] == "namespaces" && parts.size() > next + 2
        && (path.type = store.findType(group, path.version, parts[next + 2])) && path.type->namespaced) {
        path.ns = parts[next + 1];
        next += 3;
    } else {
        path.type = store.findType(group, path.version, parts[next]);
        ++next;
    }
    if (!path.type || parts.size() > next + 2) {
        return std::nullopt;
    }
    if (parts.size() > next) {
        path.name = parts[next];
    }
    if (parts.size() > next + 1) {
        path.subresource = parts[next + 1];
    }
    return path;
}

} // namespace tidewright::demo
