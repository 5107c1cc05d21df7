// SPDX-License-Identifier: GPL-3.0-or-later
#include "movement/ReplicaSets.h"

#include "objects/Names.h"
#include "objects/Pods.h"
#include "objects/Refresh.h"

#include <algorithm>

namespace tidewright::demo {

namespace {

constexpr const char *hashLabel = "pod-template-hash";

json withoutHash(json podTemplate)
{
    if (at(podTemplate, "/metadata/labels").is_object()) {
        podTemplate["metadata"]["labels"].erase(hashLabel);
    }
    return podTemplate;
}

long long revisionNumber(const json &object)
{
    return std::strtoll(revisionOf(object).c_str(), nullptr, 10);
}

} // namespace

ObjectPtr replicaSetFor(ObjectStore &store, const StoredObject &deployment, const json &parsed)
{
    const ResourceType &type = typeOfKind("ReplicaSet");
    const json wanted = withoutHash(at(parsed, "/spec/template"));
    ObjectPtr found, current;
    long long newest = 0;
    for (const ObjectPtr &set : store.ownedBy(type, deployment.ns, deployment.uid)) {
        const json candidate = set->parsed();
        if (revisionOf(candidate) == revisionOf(parsed)) {
            current = set;
        }
        newest = std::max(newest, revisionNumber(candidate));
        if (withoutHash(at(candidate, "/spec/template")) == wanted) {
            found = set;
        }
    }
    if (current && flagAt(parsed, "/spec/paused")) {
        return current;
    }
    if (found && revisionOf(found->parsed()) == revisionOf(parsed)) {
        return found;
    }

    const std::string revision = std::to_string(newest + 1);
    const auto mark
        = [&revision](json &object) { object["metadata"]["annotations"][revisionAnnotation] = revision; };
    store.update(*deployment.type, deployment.ns, deployment.name, mark);
    if (found) {
        return store.update(type, found->ns, found->name, mark);
    }
    const std::string hash = nameSuffix(stableHash(toText(wanted)), 9);
    json set{{"metadata",
                 {{"name", deployment.name + '-' + hash}, {"namespace", deployment.ns},
                     {"labels", at(wanted, "/metadata/labels")},
                     {"ownerReferences", json::array({ownerReference(parsed)})}}},
        {"spec", {{"replicas", 0}, {"selector", at(parsed, "/spec/selector")}, {"template", wanted}}},
        {"status", {{"replicas", 0}}}};
    set["spec"]["template"]["metadata"]["labels"][hashLabel] = hash;
    set["spec"]["selector"]["matchLabels"][hashLabel] = hash;
    set["metadata"]["labels"][hashLabel] = hash;
    mark(set);
    const ObjectPtr created = store.create(type, set);
    return created ? created : store.get(type, deployment.ns, deployment.name + '-' + hash);
}

} // namespace tidewright::demo
