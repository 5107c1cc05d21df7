// SPDX-License-Identifier: GPL-3.0-or-later
#include "changes/Writes.h"

#include "api/Reads.h"
#include "changes/Patch.h"
#include "changes/ProtobufBody.h"
#include "changes/Validation.h"
#include "store/ApiError.h"

namespace tidewright::demo {

namespace {

json parsedBody(const ApiCall &call)
{
    json body = json::parse(call.request.body, nullptr, false);
    if (body.is_discarded()) {
        throw ApiError::badRequest("the body of the request is not JSON");
    }
    return body;
}

json objectBody(const ApiCall &call)
{
    if (call.request.get_header_value("Content-Type").starts_with("application/vnd.kubernetes.protobuf")) {
        return objectFromProtobuf(call.request.body);
    }
    json body = parsedBody(call);
    if (!body.is_object()) {
        throw ApiError::badRequest("the body of the request must be an object");
    }
    return body;
}

// Namespace and kind of the body must be those of the path.
void adoptPath(const ApiCall &call, json &object)
{
    json &metadata = object["metadata"];
    if (!metadata.is_object() && !metadata.is_null()) {
        throw ApiError::badRequest("metadata must be an object");
    }
    const std::string kind = textAt(object, "/kind", call.type().kind);
    if (kind != call.type().kind) {
        throw ApiError::badRequest("the object provided is a " + kind + ", not a " + call.type().kind);
    }
    if (!call.type().namespaced) {
        return;
    }
    if (textAt(metadata, "/namespace", call.path.ns) != call.path.ns) {
        throw ApiError::badRequest(
            "the namespace of the provided object does not match the namespace sent on the "
            "request");
    }
    metadata["namespace"] = call.path.ns;
}

void requireLivingNamespace(const ApiCall &call)
{
    if (call.type().namespaced && !call.cluster.store.get(typeOfKind("Namespace"), "", call.path.ns)) {
        throw ApiError::notFound(typeOfKind("Namespace"), call.path.ns);
    }
}

void nameFromPrefix(const ApiCall &call, json &object)
{
    json &metadata = object["metadata"];
    const std::string prefix = textAt(metadata, "/generateName");
    if (textAt(metadata, "/name").empty() && !prefix.empty()) {
        metadata["name"] = prefix + call.cluster.movement.randomSuffix();
    }
}

// What only the server sets cannot be changed from outside.
void keepServerFields(const json &before, json &after)
{
    for (const char *field : {"uid", "creationTimestamp", "deletionTimestamp", "namespace", "name"}) {
        const json &value = at(before, std::string("/metadata/") + field);
        if (value.is_null()) {
            after["metadata"].erase(field);
        } else {
            after["metadata"][field] = value;
        }
    }
    after["apiVersion"] = before["apiVersion"];
    after["kind"] = before["kind"];
}

void checkVersion(const ApiCall &call, const json &before, const json &after)
{
    const std::string wanted = textAt(after, "/metadata/resourceVersion");
    if (!wanted.empty() && wanted != textAt(before, "/metadata/resourceVersion")) {
        throw ApiError::conflict(call.type(), call.path.name);
    }
}

// A write to the status leaves the rest alone, and the other way round.
void keepOtherHalf(const ApiCall &call, const json &before, json &after)
{
    if (call.path.subresource == "status") {
        const json status = at(after, "/status");
        after = before;
        after["status"] = status;
    } else if (before.contains("status")) {
        after["status"] = before["status"];
    }
}

using Change = std::function<json(const json &before)>;

bool isDryRun(const ApiCall &call)
{
    return call.request.has_param("dryRun");
}

ObjectPtr applyChange(const ApiCall &call, const Change &change)
{
    const auto edit = [&](json &object) {
        json after = change(object);
        if (!after.is_object() || !after["metadata"].is_object()) {
            throw ApiError::invalid(call.type(), call.path.name, "the result is not an object with metadata");
        }
        checkVersion(call, object, after);
        if (textAt(after, "/metadata/name", call.path.name) != call.path.name) {
            throw ApiError::badRequest("the name of the object (" + textAt(after, "/metadata/name")
                + ") does not match the name on the URL (" + call.path.name + ")");
        }
        checkObject(call.type(), after, call.parameter("fieldValidation"));
        keepOtherHalf(call, object, after);
        keepServerFields(object, after);
        after["metadata"]["resourceVersion"] = object["metadata"]["resourceVersion"];
        if (call.path.subresource.empty() && at(after, "/spec") != at(object, "/spec")
            && at(object, "/metadata/generation").is_number()) {
            after["metadata"]["generation"] = numberAt(object, "/metadata/generation") + 1;
        }
        object = std::move(after);
    };
    if (isDryRun(call)) {
        return requireObject(call)->edited(edit);
    }
    const ObjectPtr stored = call.cluster.store.update(call.type(), call.path.ns, call.path.name, edit);
    if (!stored) {
        throw ApiError::notFound(call.type(), call.path.name);
    }
    call.cluster.movement.modified(stored);
    return stored;
}

ObjectPtr setReplicas(const ApiCall &call, const json &scale)
{
    const json &replicas = at(scale, "/spec/replicas");
    if (!replicas.is_number_integer() || replicas.get<long long>() < 0
        || replicas.get<long long>() > 100000) {
        throw ApiError::invalid(call.type(), call.path.name,
            "spec.replicas: Invalid value: " + toText(replicas) + ": must be an integer from 0 to 100000");
    }
    return applyChange(call, [&](const json &before) {
        json after = before;
        after["spec"]["replicas"] = replicas;
        return after;
    });
}

std::string successText(const StoredObject &object)
{
    return toText(
        {{"kind", "Status"}, {"apiVersion", "v1"}, {"metadata", json::object()}, {"status", "Success"},
            {"details", {{"name", object.name}, {"kind", object.type->plural}, {"uid", object.uid}}}});
}

Removal removalOf(const ApiCall &call)
{
    const bool isJson = call.request.get_header_value("Content-Type").starts_with("application/json");
    const json options = isJson && !call.request.body.empty() ? parsedBody(call) : json::object();
    Removal removal;
    const std::string policy = textAt(options, "/propagationPolicy", call.parameter("propagationPolicy"));
    removal.orphan = policy == "Orphan" || flagAt(options, "/orphanDependents");
    removal.immediate = numberAt(options, "/gracePeriodSeconds", 30) == 0;
    return removal;
}

} // namespace

void createObject(const ApiCall &call)
{
    if (!call.path.name.empty()) {
        throw ApiError(
            405, "MethodNotAllowed", "POST is for collections and subresources that are not served here");
    }
    json object = objectBody(call);
    adoptPath(call, object);
    requireLivingNamespace(call);
    checkObject(call.type(), object, call.parameter("fieldValidation"));
    nameFromPrefix(call, object);
    checkName(call.type(), object);
    for (const char *field : {"uid", "creationTimestamp", "deletionTimestamp", "resourceVersion"}) {
        object["metadata"].erase(field);
    }
    call.cluster.movement.prepare(call.type(), object);
    if (isDryRun(call)) {
        answer(call.response, toText(object), 201);
        return;
    }
    const ObjectPtr stored = call.cluster.store.create(call.type(), object);
    if (!stored) {
        throw ApiError::alreadyExists(call.type(), textAt(object, "/metadata/name"));
    }
    call.cluster.movement.created(stored);
    answer(call.response, textFor(call.path, *stored), 201);
}

void replaceObject(const ApiCall &call)
{
    json body = objectBody(call);
    if (call.path.subresource == "scale") {
        answer(call.response, toText(scaleOf(*setReplicas(call, body))));
        return;
    }
    adoptPath(call, body);
    answer(call.response, textFor(call.path, *applyChange(call, [&](const json &) { return body; })));
}

void patchObject(const ApiCall &call)
{
    const std::string form = call.request.get_header_value("Content-Type");
    const json patch = parsedBody(call);
    if (call.path.subresource == "scale") {
        const json patched = applyPatch(form, scaleOf(*requireObject(call)), patch);
        answer(call.response, toText(scaleOf(*setReplicas(call, patched))));
        return;
    }
    if (call.type().isCustom && form.starts_with("application/strategic-merge-patch+json")) {
        throw ApiError(415, "UnsupportedMediaType",
            "the body of the request was in an unknown format - accepted media types include: "
            "application/json-patch+json, application/merge-patch+json, application/apply-patch+yaml");
    }
    const auto stored
        = applyChange(call, [&](const json &before) { return applyPatch(form, before, patch); });
    answer(call.response, textFor(call.path, *stored));
}

void deleteObject(const ApiCall &call)
{
    const ObjectPtr object = requireObject(call);
    const Removal removal = removalOf(call);
    const ObjectPtr terminating = isDryRun(call) ? nullptr : call.cluster.movement.remove(object, removal);
    answer(call.response, terminating ? textFor(call.path, *terminating) : successText(*object));
}

void deleteCollection(const ApiCall &call)
{
    const ListPage page = call.cluster.store.list(call.type(), {call.path.ns, filterOf(call)});
    const Removal removal = removalOf(call);
    for (const ObjectPtr &object : page.objects) {
        if (!isDryRun(call)) {
            call.cluster.movement.remove(object, removal);
        }
    }
    answer(call.response,
        toText({{"kind", "Status"}, {"apiVersion", "v1"}, {"metadata", json::object()}, {"status", "Success"},
            {"details", {{"kind", call.type().plural}}}}));
}

} // namespace tidewright::demo
