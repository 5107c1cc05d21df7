// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Revisions.h"

#include "objects/Names.h"
#include "objects/Pods.h"

#include <algorithm>

namespace tidewright::demo {

bool hasRevisions(const std::string &kind)
{
    return kind == "StatefulSet" || kind == "DaemonSet";
}

std::string revisionName(const StoredObject &set, const json &parsed)
{
    return set.name + '-' + nameSuffix(stableHash(toText(at(parsed, "/spec/template"))), 9);
}

bool isOfRevision(const StoredObject &pod, const std::string &revision)
{
    return std::find(pod.labels.begin(), pod.labels.end(), std::pair(std::string(revisionLabel), revision))
        != pod.labels.end();
}

void keepRevision(ObjectStore &store, const std::string &kind, const std::string &ns, const std::string &name)
{
    const ObjectPtr set = store.get(typeOfKind(kind), ns, name);
    if (!set) {
        return;
    }
    const json parsed = set->parsed();
    const std::string wanted = revisionName(*set, parsed);
    const ResourceType &type = typeOfKind("ControllerRevision");
    long long newest = 0, found = 0;
    for (const ObjectPtr &revision : store.ownedBy(type, ns, set->uid)) {
        const long long number = numberAt(revision->parsed(), "/revision");
        newest = std::max(newest, number);
        found = revision->name == wanted ? number : found;
    }
    if (found == 0) {
        json labels = at(parsed, "/spec/template/metadata/labels");
        labels[revisionLabel] = wanted.substr(set->name.size() + 1);
        json podTemplate = at(parsed, "/spec/template");
        podTemplate["$patch"] = "replace";
        store.create(type,
            {{"metadata",
                 {{"name", wanted}, {"namespace", ns}, {"labels", labels},
                     {"creationTimestamp",
                         newest == 0 ? at(parsed, "/metadata/creationTimestamp") : json(nullptr)},
                     {"ownerReferences", json::array({ownerReference(parsed)})}}},
                {"data", {{"spec", {{"template", podTemplate}}}}}, {"revision", newest + 1}});
    } else if (found < newest) {
        store.update(type, ns, wanted, [newest](json &revision) { revision["revision"] = newest + 1; });
    }
}

} // namespace tidewright::demo
