// SPDX-License-Identifier: GPL-3.0-or-later
#include "movement/Movement.h"

#include "base/Base64.h"
#include "base/Time.h"
#include "movement/CrashLoops.h"
#include "objects/Definitions.h"
#include "objects/Names.h"

namespace tidewright::demo {

namespace {

using namespace std::chrono_literals;

void prepareService(json &object, std::uint64_t hash)
{
    json &spec = object["spec"];
    if (!spec.is_object()) {
        return;
    }
    if (!spec.contains("type")) {
        spec["type"] = "ClusterIP";
    }
    if (!spec.contains("clusterIP") && spec["type"] != "ExternalName") {
        spec["clusterIP"]
            = "10.96." + std::to_string(hash / 250 % 250) + '.' + std::to_string(1 + hash % 250);
    }
    const bool onNodes = spec["type"] == "NodePort" || spec["type"] == "LoadBalancer";
    for (json &port : spec["ports"]) {
        if (!port.contains("protocol")) {
            port["protocol"] = "TCP";
        }
        if (!port.contains("targetPort")) {
            port["targetPort"] = port["port"];
        }
        if (onNodes && !port.contains("nodePort")) {
            port["nodePort"] = 30000 + hash++ % 2768;
        }
    }
    object["status"] = {{"loadBalancer", json::object()}};
}

// A secret's stringData is write-only: it lands in data.
void prepareSecret(json &object)
{
    if (!object.contains("type")) {
        object["type"] = "Opaque";
    }
    const json plain = at(object, "/stringData");
    for (auto entry = plain.begin(); entry != plain.end(); ++entry) {
        object["data"][entry.key()] = base64(entry->get<std::string>());
    }
    object.erase("stringData");
}

void setUnlessThere(json &object, const char *field, const char *value)
{
    if (!object.contains(field)) {
        object[field] = value;
    }
}

} // namespace

Movement::Movement(ObjectStore &store, bool still)
    : m_store(store)
    , m_schedule(still)
    , m_controllers(store, m_schedule, [this](const ObjectPtr &pod) { beginRemoval(pod, {}); })
{
}

void Movement::start()
{
    if (!m_schedule.isStill()) {
        beginCrashLoops(m_store, m_schedule);
    }
    m_schedule.start();
}

std::string Movement::randomSuffix()
{
    return nameSuffix(stableHash(m_store.newUid() + std::to_string(m_names++)));
}

void Movement::prepare(const ResourceType &type, json &object)
{
    const std::uint64_t hash
        = stableHash(textAt(object, "/metadata/namespace") + textAt(object, "/metadata/name"));
    if (type.kind == "Service") {
        prepareService(object, hash);
    } else if (type.kind == "Secret") {
        prepareSecret(object);
    } else if (type.kind == "Namespace") {
        object["status"] = {{"phase", "Active"}};
    } else if (type.kind == "PersistentVolume") {
        object["status"] = {{"phase", "Available"}};
    } else if (type.kind == "PersistentVolumeClaim") {
        object["status"] = {{"phase", "Pending"}};
    } else if (type.kind == "Ingress") {
        object["status"] = {{"loadBalancer", json::object()}};
    } else if (type.kind == "StorageClass") {
        setUnlessThere(object, "reclaimPolicy", "Delete");
        setUnlessThere(object, "volumeBindingMode", "Immediate");
    } else if (type.group == "apps" || type.group == "batch" || type.kind == "Pod") {
        m_controllers.prepare(type, object);
    }
}

void Movement::created(const ObjectPtr &object)
{
    const std::string &kind = object->type->kind;
    if (kind == "CustomResourceDefinition") {
        serveDefined(m_store, *object);
    }
    if (kind == "Namespace") {
        m_store.create(typeOfKind("ServiceAccount"),
            {{"metadata", {{"name", "default"}, {"namespace", object->name}}}, {"secrets", json::array()}});
    }
    m_controllers.changed(object);
    m_schedule.settle();
}

void Movement::modified(const ObjectPtr &object)
{
    m_controllers.changed(object);
    m_schedule.settle();
}

ObjectPtr Movement::remove(const ObjectPtr &object, const Removal &removal)
{
    const ObjectPtr terminating = beginRemoval(object, removal);
    m_schedule.settle();
    return terminating;
}

ObjectPtr Movement::beginRemoval(const ObjectPtr &object, const Removal &removal)
{
    const std::string kind = object->type->kind;
    const bool lingers
        = !m_schedule.isStill() && !removal.immediate && (kind == "Pod" || kind == "Namespace");
    if (!lingers) {
        removeNow(object, removal);
        return nullptr;
    }
    const ObjectPtr terminating = m_store.update(*object->type, object->ns, object->name, [&](json &going) {
        if (at(going, "/metadata/deletionTimestamp").is_null()) {
            going["metadata"]["deletionTimestamp"] = timestamp(now() + (kind == "Pod" ? 30 : 0));
        }
        if (kind == "Namespace") {
            going["status"]["phase"] = "Terminating";
        } else {
            going["metadata"]["deletionGracePeriodSeconds"] = 30;
        }
    });
    if (!terminating) {
        return nullptr;
    }
    m_controllers.changed(terminating);
    m_schedule.after(1500ms, [this, object, removal] {
        const ObjectPtr newest = m_store.get(*object->type, object->ns, object->name);
        if (newest && newest->uid == object->uid) {
            removeNow(newest, removal);
        }
    });
    return terminating;
}

void Movement::removeNow(const ObjectPtr &object, const Removal &removal)
{
    const ObjectPtr removed = m_store.remove(*object->type, object->ns, object->name);
    if (!removed) {
        return;
    }
    const std::string &kind = object->type->kind;
    if (!removal.orphan) {
        removeOwned(*removed);
    }
    if (kind == "Namespace") {
        removeContents(object->name);
    }
    if (kind == "CustomResourceDefinition") {
        stopServingDefined(m_store, *removed);
    }
    if (kind == "Service") {
        m_store.remove(typeOfKind("Endpoints"), object->ns, object->name);
    }
    m_controllers.removed(removed);
}

void Movement::removeOwned(const StoredObject &owner)
{
    for (const char *kind : {"ReplicaSet", "Job", "Pod", "ControllerRevision"}) {
        for (const ObjectPtr &owned : m_store.ownedBy(typeOfKind(kind), owner.ns, owner.uid)) {
            beginRemoval(owned, {});
        }
    }
}

void Movement::removeContents(const std::string &ns)
{
    for (const ResourceType *type : m_store.types()) {
        if (!type->namespaced) {
            continue;
        }
        for (const ObjectPtr &object : m_store.all(*type, ns)) {
            m_store.remove(*type, ns, object->name);
        }
    }
}

} // namespace tidewright::demo
