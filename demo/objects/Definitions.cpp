// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Definitions.h"

#include "base/Time.h"

namespace tidewright::demo {

const ResourceType &serveDefined(ObjectStore &store, const StoredObject &definition)
{
    const json parsed = definition.parsed();
    ResourceType type;
    type.isCustom = true;
    type.group = textAt(parsed, "/spec/group");
    type.version = textAt(parsed, "/spec/versions/0/name");
    type.olderVersion = textAt(parsed, "/spec/versions/1/name");
    type.plural = textAt(parsed, "/spec/names/plural");
    type.kind = textAt(parsed, "/spec/names/kind");
    type.singular = textAt(parsed, "/spec/names/singular");
    type.namespaced = textAt(parsed, "/spec/scope") != "Cluster";
    for (const json &name : at(parsed, "/spec/names/shortNames")) {
        type.shortNames.push_back(name.get<std::string>());
    }
    if (at(parsed, "/spec/versions/0/subresources/status").is_object()) {
        type.subresources.push_back("status");
    }
    store.update(*definition.type, {}, definition.name, [&](json &object) {
        const auto condition = [](const char *name, const char *reason) {
            return json{{"type", name}, {"status", "True"}, {"reason", reason},
                {"lastTransitionTime", timestamp(now())}};
        };
        object["status"]
            = {{"acceptedNames", at(object, "/spec/names")}, {"storedVersions", json::array({type.version})},
                {"conditions",
                    json::array({condition("NamesAccepted", "NoConflicts"),
                        condition("Established", "InitialNamesAccepted")})}};
    });
    return store.serve(std::move(type));
}

void stopServingDefined(ObjectStore &store, const StoredObject &definition)
{
    const json parsed = definition.parsed();
    const std::string group = textAt(parsed, "/spec/group"), plural = textAt(parsed, "/spec/names/plural");
    if (const ResourceType *type = store.findType(group, textAt(parsed, "/spec/versions/0/name"), plural)) {
        for (const ObjectPtr &object : store.all(*type)) {
            store.remove(*type, object->ns, object->name);
        }
        store.stopServing(group, plural);
    }
}

} // namespace tidewright::demo
