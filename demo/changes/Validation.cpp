// SPDX-License-Identifier: GPL-3.0-or-later
#include "changes/Validation.h"

#include "schema/Schema.h"
#include "store/ApiError.h"

#include <algorithm>

namespace tidewright::demo {

namespace {

using Shape = FieldType::Shape;

// Each a list in words; empty when nothing was found.
struct Findings
{
    std::string unknown;
    std::string wrong;
    std::string missing;
};

void add(std::string &list, const std::string &finding)
{
    list += (list.empty() ? "" : ", ") + finding;
}

bool hasShape(const json &value, Shape shape)
{
    switch (shape) {
    case Shape::Text:
        return value.is_string();
    case Shape::Integer:
        return value.is_number_integer();
    case Shape::Flag:
        return value.is_boolean();
    case Shape::IntegerOrText:
        return value.is_string() || value.is_number();
    case Shape::List:
        return value.is_array();
    case Shape::Map:
    case Shape::Object:
        return value.is_object();
    case Shape::Anything:
        break;
    }
    return true;
}

void inspect(const json &value, const FieldType &type, const std::string &path, Findings &findings)
{
    if (value.is_null()) {
        return;
    }
    if (!hasShape(value, type.shape)) {
        add(findings.wrong,
            std::string("json: cannot unmarshal ") + value.type_name() + " into field " + path);
        return;
    }
    if (type.shape == Shape::List || type.shape == Shape::Map) {
        for (const auto &[key, item] : value.items()) {
            inspect(item, type.items.front(), path + '.' + key, findings);
        }
    }
    if (type.shape != Shape::Object) {
        return;
    }
    const std::string start = path.empty() ? path : path + '.';
    const SchemaType &schema = schemaTypes().at(type.name);
    for (const auto &[key, item] : value.items()) {
        if (const SchemaField *field = schema.find(key)) {
            inspect(item, field->type, start + key, findings);
        } else {
            add(findings.unknown, "unknown field \"" + start + key + '"');
        }
    }
    for (const SchemaField &field : schema.fields) {
        const json &present = at(value, '/' + field.name);
        if (field.required && (present.is_null() || (present.is_array() && present.empty()))) {
            add(findings.missing, start + field.name + ": Required value");
        }
    }
}

} // namespace

void checkObject(const ResourceType &type, const json &object, const std::string &level)
{
    if (type.isCustom) {
        return; // the schemas of definitions are taken for granted
    }
    Findings findings;
    inspect(object, {Shape::Object, type.kind, {}}, {}, findings);
    const std::string start
        = type.kind + " in version \"" + type.version + "\" cannot be handled as a " + type.kind + ": ";
    if (!findings.wrong.empty()) {
        throw ApiError::badRequest(start + findings.wrong);
    }
    if (level == "Strict" && !findings.unknown.empty()) {
        throw ApiError::badRequest(start + "strict decoding error: " + findings.unknown);
    }
    if (!findings.missing.empty()) {
        throw ApiError::invalid(type, textAt(object, "/metadata/name"), findings.missing);
    }
}

void checkName(const ResourceType &type, const json &object)
{
    const std::string name = textAt(object, "/metadata/name");
    if (name.empty()) {
        throw ApiError::invalid(
            type, name, "metadata.name: Required value: name or generateName is required");
    }
    // The names of roles are path segments.
    const bool isRole = type.group == "rbac.authorization.k8s.io";
    const bool isGood = name.size() <= 253 && name.front() != '-' && name.back() != '-'
        && std::all_of(name.begin(), name.end(), [isRole](char c) {
               return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.'
                   || (isRole && (c == ':' || c == '_' || (c >= 'A' && c <= 'Z')));
           });
    if (!isGood) {
        throw ApiError::invalid(type, name,
            "metadata.name: Invalid value: \"" + name
                + "\": a lowercase RFC 1123 subdomain must consist of lower case alphanumeric "
                  "characters, '-' or '.', and must start and end with an alphanumeric character");
    }
}

} // namespace tidewright::demo
