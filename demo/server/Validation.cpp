// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/Validation.h"

#include "schema/Schema.h"
#include "store/ApiError.h"

#include <algorithm>

namespace tidewright::demo {

namespace {

using Shape = FieldType::Shape;

struct Findings
{
    std::vector<std::string> unknown;
    std::vector<std::string> wrong;
    std::vector<std::string> missing;
};

const char *wordOf(Shape shape)
{
    switch (shape) {
    case Shape::Text:
        return "string";
    case Shape::Integer:
        return "int";
    case Shape::Flag:
        return "bool";
    case Shape::IntegerOrText:
        return "int or string";
    case Shape::List:
        return "list";
    default:
        return "object";
    }
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

void inspectObject(const json &object, const SchemaType &type, const std::string &path, Findings &findings);

void inspectValue(const json &value, const FieldType &type, const std::string &path, Findings &findings)
{
    if (value.is_null()) {
        return;
    }
    if (!hasShape(value, type.shape)) {
        findings.wrong.push_back(std::string("json: cannot unmarshal ") + value.type_name() + " into field "
            + path + " of type " + wordOf(type.shape));
    } else if (type.shape == Shape::Object) {
        inspectObject(value, schemaTypes().at(type.name), path + '.', findings);
    } else if (type.shape == Shape::List) {
        for (size_t i = 0; i < value.size(); ++i) {
            inspectValue(value[i], type.items.front(), path + '[' + std::to_string(i) + ']', findings);
        }
    } else if (type.shape == Shape::Map) {
        for (auto entry = value.begin(); entry != value.end(); ++entry) {
            inspectValue(*entry, type.items.front(), path + '.' + entry.key(), findings);
        }
    }
}

void inspectObject(const json &object, const SchemaType &type, const std::string &path, Findings &findings)
{
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (const SchemaField *field = type.find(entry.key())) {
            inspectValue(*entry, field->type, path + entry.key(), findings);
        } else {
            findings.unknown.push_back("unknown field \"" + path + entry.key() + '"');
        }
    }
    for (const SchemaField &field : type.fields) {
        const json &value = at(object, '/' + field.name);
        if (field.required && (value.is_null() || (value.is_array() && value.empty()))) {
            findings.missing.push_back(path + field.name + ": Required value");
        }
    }
}

std::string joined(const std::vector<std::string> &pieces)
{
    std::string text;
    for (const std::string &piece : pieces) {
        text += (text.empty() ? "" : ", ") + piece;
    }
    return text;
}

bool isNameCharacter(char c, bool path)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.'
        || (path && (c == ':' || c == '_' || (c >= 'A' && c <= 'Z')));
}

bool hasSpec(const SchemaType &type)
{
    const SchemaField *spec = type.find("spec");
    return spec && spec->type.shape == Shape::Object;
}

} // namespace

void checkObject(const ResourceType &type, const json &object, const std::string &level)
{
    const SchemaType &schema = schemaTypes().at(type.kind);
    Findings findings;
    inspectObject(object, schema, {}, findings);
    if (hasSpec(schema) && type.kind != "Namespace" && at(object, "/spec").is_null()) {
        findings.missing.push_back("spec: Required value");
    }
    const std::string start
        = type.kind + " in version \"" + type.version + "\" cannot be handled as a " + type.kind;
    if (!findings.wrong.empty()) {
        throw ApiError::badRequest(start + ": " + joined(findings.wrong));
    }
    if (level == "Strict" && !findings.unknown.empty()) {
        throw ApiError::badRequest(start + ": strict decoding error: " + joined(findings.unknown));
    }
    if (!findings.missing.empty()) {
        throw ApiError::invalid(type, textAt(object, "/metadata/name"), joined(findings.missing));
    }
}

void checkName(const ResourceType &type, const json &object)
{
    const std::string name = textAt(object, "/metadata/name");
    if (name.empty()) {
        throw ApiError::invalid(
            type, name, "metadata.name: Required value: name or generateName is required");
    }
    const bool isRole = type.group == "rbac.authorization.k8s.io"; // role names are path segments
    const bool good = name.size() <= 253 && name.front() != '-' && name.back() != '-'
        && std::all_of(name.begin(), name.end(), [isRole](char c) { return isNameCharacter(c, isRole); });
    if (!good) {
        throw ApiError::invalid(type, name,
            "metadata.name: Invalid value: \"" + name
                + "\": a lowercase RFC 1123 subdomain must consist of lower case alphanumeric "
                  "characters, '-' or '.', and must start and end with an alphanumeric character");
    }
}

} // namespace tidewright::demo
