// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/Watch.h"

#include "server/Reads.h"
#include "server/TablePrinter.h"
#include "store/ApiError.h"

#include <chrono>
#include <memory>

namespace tidewright::demo {

namespace {

using Clock = std::chrono::steady_clock;

// How long a departed client may go unnoticed.
constexpr std::chrono::milliseconds pollInterval{500};

struct WatchState
{
    ObjectStore &store;
    ResourcePath path;
    ObjectStore::Filter filter;
    std::uint64_t version;
    Clock::time_point end;
    bool asTable;
    std::string includeObject;
    std::string firstEvents;
};

std::string eventLine(const WatchState &state, const char *kind, const ObjectPtr &object)
{
    const std::string text = state.asTable
        ? tableText(*object->type, {object}, json::object(), state.includeObject)
        : textFor(state.path, *object);
    return std::string("{\"type\":\"") + kind + "\",\"object\":" + text + "}\n";
}

const char *wordOf(Change::Kind kind)
{
    switch (kind) {
    case Change::Kind::Added:
        return "ADDED";
    case Change::Kind::Modified:
        return "MODIFIED";
    case Change::Kind::Deleted:
        return "DELETED";
    }
    return "";
}

bool send(httplib::DataSink &sink, const std::string &text)
{
    return text.empty() || sink.write(text.data(), text.size());
}

bool sendChanges(WatchState &state, httplib::DataSink &sink)
{
    const auto changes = state.store.changesAfter(state.version, pollInterval);
    if (!changes) {
        const ApiError gone(410, "Expired", "too old resource version: " + std::to_string(state.version));
        send(sink, "{\"type\":\"ERROR\",\"object\":" + gone.statusText() + "}\n");
        sink.done();
        return true;
    }
    std::string lines;
    for (const Change &change : *changes) {
        state.version = change.object->version;
        const bool inScope = change.object->type == state.path.type
            && (state.path.ns.empty() || change.object->ns == state.path.ns);
        if (inScope && (!state.filter || state.filter(*change.object)))
            lines += eventLine(state, wordOf(change.kind), change.object);
    }
    if (!send(sink, lines) || !sink.is_writable())
        return false;
    if (Clock::now() >= state.end)
        sink.done();
    return true;
}

std::uint64_t numberOf(const std::string &text)
{
    return std::strtoull(text.c_str(), nullptr, 10);
}

} // namespace

void watchList(const ApiCall &call)
{
    if (call.flag("sendInitialEvents"))
        throw ApiError(422, "Invalid", "sendInitialEvents is not served by the demo cluster");
    const std::uint64_t timeout = numberOf(call.parameter("timeoutSeconds"));
    auto state = std::make_shared<WatchState>(WatchState{call.cluster.store, call.path, filterOf(call),
        numberOf(call.parameter("resourceVersion")),
        Clock::now() + std::chrono::seconds(timeout == 0 ? 1800 : std::min<std::uint64_t>(timeout, 86400)),
        call.request.get_header_value("Accept").find("as=Table") != std::string::npos,
        call.parameter("includeObject"), {}});
    if (state->version == 0) {
        const ListPage present = state->store.list(call.type(), call.path.ns, state->filter);
        state->version = present.version;
        for (const ObjectPtr &object : present.objects)
            state->firstEvents += eventLine(*state, "ADDED", object);
    }
    call.response.status = 200;
    call.response.set_chunked_content_provider(
        "application/json;stream=watch", [state](size_t, httplib::DataSink &sink) {
            if (!send(sink, state->firstEvents))
                return false;
            state->firstEvents.clear();
            return sendChanges(*state, sink);
        });
}

} // namespace tidewright::demo
