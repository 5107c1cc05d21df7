// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/Reads.h"

#include "server/TablePrinter.h"
#include "store/ApiError.h"
#include "store/Selector.h"

#include <charconv>

namespace tidewright::demo {

namespace {

bool wantsTable(const ApiCall &call)
{
    return call.request.get_header_value("Accept").find("as=Table") != std::string::npos;
}

size_t limitOf(const ApiCall &call)
{
    const std::string text = call.parameter("limit");
    size_t limit = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), limit);
    if (!text.empty() && (error != std::errc() || *end != '\0'))
        throw ApiError::badRequest("limit must be a number, not \"" + text + "\"");
    return limit;
}

// The continue token is the key of the next object in hexadecimal, so that nobody is tempted to build one.
std::string encodeToken(const std::string &key)
{
    static const char digits[] = "0123456789abcdef";
    std::string token;
    for (const unsigned char c : key) {
        token += digits[c >> 4];
        token += digits[c & 15];
    }
    return token;
}

std::string decodeToken(const std::string &token)
{
    std::string key;
    for (size_t i = 0; i + 1 < token.size(); i += 2) {
        unsigned value = 0;
        const auto [end, error] = std::from_chars(token.data() + i, token.data() + i + 2, value, 16);
        if (error != std::errc() || end != token.data() + i + 2)
            throw ApiError::badRequest("continue key is not valid");
        key += char(value);
    }
    return key;
}

json listMetadata(const ListPage &page)
{
    json metadata{{"resourceVersion", std::to_string(page.version)}};
    if (!page.next.empty())
        metadata["continue"] = encodeToken(page.next);
    return metadata;
}

std::string joinedList(const ApiCall &call, const ListPage &page)
{
    std::string apiVersion = call.type().apiVersion();
    if (call.path.version != call.type().version)
        apiVersion = call.type().group + '/' + call.path.version;
    std::string text = "{\"kind\":\"" + call.type().kind + "List\",\"apiVersion\":\"" + apiVersion
        + "\",\"metadata\":" + toText(listMetadata(page)) + ",\"items\":[";
    size_t size = text.size() + 2;
    for (const ObjectPtr &object : page.objects)
        size += object->text.size() + 16;
    text.reserve(size);
    const char *separator = "";
    for (const ObjectPtr &object : page.objects) {
        text += separator;
        text += textFor(call.path, *object);
        separator = ",";
    }
    return text += "]}";
}

} // namespace

ObjectStore::Filter filterOf(const ApiCall &call)
{
    const Selector labels = Selector::ofLabels(call.parameter("labelSelector"));
    const Selector fields = Selector::ofFields(call.parameter("fieldSelector"));
    const std::string name = call.path.name; // a watch of one object by its path
    if (labels.isEmpty() && fields.isEmpty() && name.empty())
        return {};
    return [labels, fields, name](const StoredObject &object) {
        return (name.empty() || object.name == name) && labels.matches(object) && fields.matches(object);
    };
}

json scaleOf(const StoredObject &object)
{
    const json parsed = object.parsed();
    std::string selector;
    const json &labels = at(parsed, "/spec/selector/matchLabels");
    for (auto label = labels.begin(); label != labels.end(); ++label)
        selector += (selector.empty() ? "" : ",") + label.key() + '=' + label->get<std::string>();
    return {{"kind", "Scale"}, {"apiVersion", "autoscaling/v1"},
        {"metadata",
            {{"name", object.name}, {"namespace", object.ns}, {"uid", object.uid},
                {"resourceVersion", std::to_string(object.version)},
                {"creationTimestamp", at(parsed, "/metadata/creationTimestamp")}}},
        {"spec", {{"replicas", numberAt(parsed, "/spec/replicas", 1)}}},
        {"status", {{"replicas", numberAt(parsed, "/status/replicas")}, {"selector", selector}}}};
}

void readObject(const ApiCall &call)
{
    const ObjectPtr object = requireObject(call);
    if (call.path.subresource == "scale")
        answer(call.response, toText(scaleOf(*object)));
    else if (wantsTable(call))
        answer(
            call.response, tableText(call.type(), {object}, json::object(), call.parameter("includeObject")));
    else
        answer(call.response, textFor(call.path, *object));
}

void readList(const ApiCall &call)
{
    const ListPage page = call.cluster.store.list(
        call.type(), call.path.ns, filterOf(call), limitOf(call), decodeToken(call.parameter("continue")));
    if (wantsTable(call))
        answer(call.response,
            tableText(call.type(), page.objects, listMetadata(page), call.parameter("includeObject")));
    else
        answer(call.response, joinedList(call, page));
}

} // namespace tidewright::demo
