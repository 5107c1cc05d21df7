// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Events.h"

namespace tidewright::demo {

std::string recordEvent(
    ObjectStore &store, const StoredObject &about, const EventText &text, Seconds time, int count)
{
    const std::string ns = about.ns.empty() ? "default" : about.ns;
    const std::string name = about.name + '.' + store.newUid().substr(24);
    json event{{"metadata", {{"name", name}, {"namespace", ns}, {"creationTimestamp", timestamp(time)}}},
        {"involvedObject",
            {{"kind", about.type->kind}, {"apiVersion", about.type->apiVersion()}, {"name", about.name},
                {"uid", about.uid}, {"resourceVersion", std::to_string(about.version)}}},
        {"type", text.type}, {"reason", text.reason}, {"message", text.message},
        {"source", {{"component", text.component}}}, {"reportingComponent", ""}, {"reportingInstance", ""},
        {"count", count}, {"firstTimestamp", timestamp(time - 60 * (count - 1))},
        {"lastTimestamp", timestamp(time)}, {"eventTime", nullptr}};
    if (!about.ns.empty()) {
        event["involvedObject"]["namespace"] = about.ns;
    }
    store.create(typeOfKind("Event"), std::move(event));
    return name;
}

} // namespace tidewright::demo
