// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Reads.h"

#include "api/TablePrinter.h"
#include "store/ApiError.h"
#include "store/Selector.h"

#include <charconv>

namespace tidewright::demo {

namespace {

// Where a list goes on: the version it has, and the key of the next object. Version 0 stands for whatever is
// there now.
struct ContinueToken
{
    std::uint64_t version = 0;
    std::string key;
};

// In hexadecimal, so that nobody is tempted to build one.
std::string encoded(const ContinueToken &token)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (const unsigned char c : std::to_string(token.version) + ' ' + token.key) {
        text += digits[c >> 4];
        text += digits[c & 15];
    }
    return text;
}

ContinueToken decoded(const std::string &text)
{
    std::string plain;
    for (size_t i = 0; i + 1 < text.size(); i += 2) {
        unsigned value = 0;
        const auto [end, error] = std::from_chars(text.data() + i, text.data() + i + 2, value, 16);
        plain += error == std::errc() && end == text.data() + i + 2 ? char(value) : '?';
    }
    ContinueToken token;
    const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), token.version);
    if (error != std::errc() || *end != ' ') {
        throw ApiError::badRequest("invalid continue token: continue key is not valid");
    }
    token.key = end + 1;
    return token;
}

json listMetadata(const ListPage &page, bool isFiltered)
{
    json metadata{{"resourceVersion", std::to_string(page.version)}};
    if (!page.next.empty()) {
        metadata["continue"] = encoded({page.version, page.next});
        if (!isFiltered) {
            metadata["remainingItemCount"] = page.remaining;
        }
    }
    return metadata;
}

std::string joinedList(const ApiCall &call, const ListPage &page, const json &metadata)
{
    std::string text = "{\"kind\":\"" + call.type().kind + "List\",\"apiVersion\":\""
        + call.type().apiVersionAs(call.path.version) + "\",\"metadata\":" + toText(metadata)
        + ",\"items\":[";
    size_t size = text.size() + 2;
    for (const ObjectPtr &object : page.objects) {
        size += object->body.size() + 1;
    }
    text.reserve(size);
    const char *separator = "";
    for (const ObjectPtr &object : page.objects) {
        text += separator;
        text += object->body;
        separator = ",";
    }
    return text += "]}";
}

// The list at the version that its first page had.
ListPage continuedList(const ApiCall &call, ListQuery query)
{
    const ContinueToken token = decoded(call.parameter("continue"));
    query.from = token.key;
    if (token.version == 0) {
        return call.cluster.store.list(call.type(), query);
    }
    const auto page = call.cluster.store.listAt(token.version, call.type(), query);
    if (!page) {
        throw ApiError::expiredToken(encoded({0, token.key}));
    }
    return *page;
}

// A list of one moment: now, unless exactly another one is asked for.
ListPage firstList(const ApiCall &call, ListQuery query)
{
    const std::uint64_t version = versionParameter(call);
    const std::string match = call.parameter("resourceVersionMatch");
    if (!match.empty() && !call.request.has_param("resourceVersion")) {
        throw ApiError::invalidOption(
            "resourceVersionMatch", "resourceVersionMatch is forbidden unless resourceVersion is provided");
    }
    if (version > call.cluster.store.version()) {
        throw ApiError::tooLargeVersion(version, call.cluster.store.version());
    }
    if (match == "Exact") {
        const auto page = call.cluster.store.listAt(version, call.type(), query);
        if (!page) {
            throw ApiError(410, "Expired", "The resourceVersion for the provided list is too old.");
        }
        return *page;
    }
    // Any version will do: a server answers from its cache then, which knows no pages.
    if (call.parameter("resourceVersion") == "0") {
        query.limit = 0;
    }
    return call.cluster.store.list(call.type(), query);
}

} // namespace

ObjectStore::Filter filterOf(const ApiCall &call)
{
    const Selector labels = Selector::ofLabels(call.parameter("labelSelector"));
    const Selector fields = Selector::ofFields(call.type(), call.parameter("fieldSelector"));
    if (labels.isEmpty() && fields.isEmpty()) {
        return {};
    }
    return [labels, fields](
               const StoredObject &object) { return labels.matches(object) && fields.matches(object); };
}

json scaleOf(const StoredObject &object)
{
    const json parsed = object.parsed();
    std::string selector;
    const json &labels = at(parsed, "/spec/selector/matchLabels");
    for (auto label = labels.begin(); label != labels.end(); ++label) {
        selector += (selector.empty() ? "" : ",") + label.key() + '=' + label->get<std::string>();
    }
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
    if (call.path.subresource == "scale") {
        answer(call.response, toText(scaleOf(*object)));
    } else if (wantsTable(call)) {
        answer(call.response,
            tableText(call.cluster.store, call.type(), {object}, json::object(),
                {call.parameter("includeObject")}));
    } else {
        answer(call.response, textFor(call.path, *object));
    }
}

void readList(const ApiCall &call)
{
    const ListQuery query{call.path.ns, filterOf(call), numberParameter(call, "limit")};
    const ListPage page
        = call.parameter("continue").empty() ? firstList(call, query) : continuedList(call, query);
    const json metadata = listMetadata(page, query.filter != nullptr);
    if (wantsTable(call)) {
        answer(call.response,
            tableText(
                call.cluster.store, call.type(), page.objects, metadata, {call.parameter("includeObject")}));
    } else {
        answer(call.response, joinedList(call, page, metadata));
    }
}

} // namespace tidewright::demo
