// SPDX-License-Identifier: GPL-3.0-or-later
#include "schema/OpenApi.h"

#include "base/Json.h"
#include "schema/Schema.h"

#include <set>

namespace tidewright::demo {

namespace {

using Shape = FieldType::Shape;

json schemaOf(const FieldType &type)
{
    switch (type.shape) {
    case Shape::Text:
        return {{"type", "string"}};
    case Shape::Integer:
        return {{"type", "integer"}, {"format", "int64"}};
    case Shape::Flag:
        return {{"type", "boolean"}};
    case Shape::IntegerOrText:
        return {{"format", "int-or-string"}};
    case Shape::List:
        return {{"type", "array"}, {"items", schemaOf(type.items.front())}};
    case Shape::Map:
        return {{"type", "object"}, {"additionalProperties", schemaOf(type.items.front())}};
    case Shape::Object:
        return {{"$ref", "#/components/schemas/demo." + type.name}};
    case Shape::Anything:
        break;
    }
    return {{"type", "object"}};
}

json groupVersionKind(const ResourceType &type, const std::string &version)
{
    return {{"group", type.group}, {"kind", type.kind}, {"version", version}};
}

json componentOf(const SchemaType &type)
{
    json component{{"type", "object"}, {"properties", json::object()}};
    for (const SchemaField &field : type.fields) {
        component["properties"][field.name] = schemaOf(field.type);
        if (field.required) {
            component["required"].push_back(field.name);
        }
    }
    return component;
}

std::string pathOf(const ResourceType &type, const std::string &version)
{
    return type.group.empty() ? "api/" + version : "apis/" + type.group + '/' + version;
}

json patchOperation(const ResourceType &type, const std::string &version)
{
    const json parameter{{"name", "fieldValidation"}, {"in", "query"}, {"schema", {{"type", "string"}}}};
    return {{"patch",
        {{"parameters", json::array({parameter})}, {"responses", {{"200", {{"description", "OK"}}}}},
            {"x-kubernetes-action", "patch"},
            {"x-kubernetes-group-version-kind", groupVersionKind(type, version)}}}};
}

} // namespace

std::string openApiV3Index(const std::string &prefix)
{
    json paths = json::object();
    for (const ResourceType &type : resourceTypes()) {
        for (const std::string &version : {type.version, type.olderVersion}) {
            if (!version.empty()) {
                paths[pathOf(type, version)]
                    = {{"serverRelativeURL", prefix + "/openapi/v3/" + pathOf(type, version)}};
            }
        }
    }
    return toText({{"paths", paths}});
}

std::optional<std::string> openApiV3Document(const std::string &groupVersionPath)
{
    json paths = json::object(), schemas = json::object();
    for (const auto &[name, type] : schemaTypes()) {
        schemas["demo." + name] = componentOf(type);
    }
    for (const ResourceType &type : resourceTypes()) {
        for (const std::string &version : {type.version, type.olderVersion}) {
            if (version.empty() || pathOf(type, version) != groupVersionPath) {
                continue;
            }
            const std::string scope = type.namespaced ? "/namespaces/{namespace}/" : "/";
            paths['/' + groupVersionPath + scope + type.plural + "/{name}"] = patchOperation(type, version);
            schemas["demo." + type.kind]["x-kubernetes-group-version-kind"].push_back(
                groupVersionKind(type, version));
        }
    }
    if (paths.empty()) {
        return std::nullopt;
    }
    return toText({{"openapi", "3.0.0"}, {"info", {{"title", "Demo cluster"}, {"version", "v1.30.0-demo"}}},
        {"paths", paths}, {"components", {{"schemas", schemas}}}});
}

} // namespace tidewright::demo
