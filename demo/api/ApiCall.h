// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Cluster.h"
#include "api/RequestPath.h"

#include <httplib.h>

#include <string>

namespace tidewright::demo {

/// One request to one cluster about one kind, as the handlers of reads, writes, watches and logs get it.
/// Lives as long as the request is handled.
struct ApiCall
{
    Cluster &cluster;
    const httplib::Request &request;
    httplib::Response &response;
    ResourcePath path;

    const ResourceType &type() const { return *path.type; }
    std::string parameter(const std::string &name) const { return request.get_param_value(name); }
    bool flag(const std::string &name) const;
};

/// The JSON of an answer. The content type is worded so that the HTTP library does not compress it: on
/// loopback that costs more than it saves.
void answer(httplib::Response &response, const std::string &text, int code = 200);

/// The stored text, with the version that the path asked for.
std::string textFor(const ResourcePath &path, const StoredObject &object);

bool wantsTable(const ApiCall &call);

/// Query parameters; 0 when they are missing. Throw ApiError, with the code that a real server answers with.
std::uint64_t numberParameter(const ApiCall &call, const char *name);
std::uint64_t versionParameter(const ApiCall &call);

/// The named object; throws ApiError 404.
ObjectPtr requireObject(const ApiCall &call);

} // namespace tidewright::demo
