// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/ApiCall.h"

#include "store/ApiError.h"

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
    if (path.version == object.type->version)
        return object.text;
    // Keys are sorted, so every text starts with its apiVersion.
    const std::string start = "{\"apiVersion\":\"" + object.type->apiVersion() + '"';
    return "{\"apiVersion\":\"" + object.type->group + '/' + path.version + '"'
        + object.text.substr(start.size());
}

ObjectPtr requireObject(const ApiCall &call)
{
    const ObjectPtr object = call.cluster.store.get(call.type(), call.path.ns, call.path.name);
    if (!object)
        throw ApiError::notFound(call.type(), call.path.name);
    return object;
}

} // namespace tidewright::demo
