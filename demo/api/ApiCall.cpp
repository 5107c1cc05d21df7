// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/ApiCall.h"

#include "store/ApiError.h"

#include <algorithm>
#include <charconv>

namespace tidewright::demo {

bool ApiCall::flag(const std::string &name) const
{
    const std::string value = parameter(name);
    return value == "true" || value == "1";
}

void answer(httplib::Response &response, const std::string &text, int code)
{
    response.status = code;
    response.set_content(text, "application/json;charset=utf-8");
}

std::string textFor(const ResourcePath &path, const StoredObject &object)
{
    return object.textAs(path.version);
}

bool wantsTable(const ApiCall &call)
{
    return call.request.get_header_value("Accept").find("as=Table") != std::string::npos;
}

std::uint64_t numberParameter(const ApiCall &call, const char *name)
{
    const std::string text = call.parameter(name);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (!text.empty() && (error != std::errc() || *end != '\0')) {
        throw ApiError::badRequest("strconv.ParseInt: parsing \"" + text + "\": invalid syntax");
    }
    return std::uint64_t(std::max<std::int64_t>(number, 0));
}

std::uint64_t versionParameter(const ApiCall &call)
{
    const std::string text = call.parameter("resourceVersion");
    std::uint64_t version = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), version);
    if (!text.empty() && (error != std::errc() || *end != '\0')) {
        throw ApiError(500, "",
            "resourceVersion: Invalid value: \"" + text + "\": strconv.ParseUint: parsing \"" + text
                + "\": invalid syntax");
    }
    return version;
}

ObjectPtr requireObject(const ApiCall &call)
{
    const ObjectPtr object = call.cluster.store.get(call.type(), call.path.ns, call.path.name);
    if (!object) {
        throw ApiError::notFound(call.type(), call.path.name);
    }
    return object;
}

} // namespace tidewright::demo
