// SPDX-License-Identifier: GPL-3.0-or-later
#include "schema/OpenApi.h"

#include "schema/Schema.h"

namespace tidewright::demo {

namespace {

using Shape = FieldType::Shape;

// Field numbers of the openapi.v2 messages.
enum : unsigned {
    documentSwagger = 1,
    documentInfo = 2,
    documentPaths = 8,
    documentDefinitions = 9,
    infoTitle = 1,
    infoVersion = 2,
    entryName = 1,
    entryValue = 2, // NamedSchema, NamedAny
    mapEntries = 1, // Definitions, Properties
    schemaRef = 1,
    schemaFormat = 2,
    schemaRequired = 19,
    schemaAdditional = 21,
    schemaType = 22,
    schemaItems = 23,
    schemaProperties = 25,
    schemaExtension = 31,
    wrapped = 1, // AdditionalPropertiesItem.schema, ItemsItem.schema, TypeItem.value
    anyYaml = 2,
};

std::string varint(std::uint64_t value)
{
    std::string bytes;
    for (; value >= 128; value >>= 7) {
        bytes += char(value | 128);
    }
    return bytes += char(value);
}

// A length-delimited field: text, bytes or a message.
std::string field(unsigned number, const std::string &content)
{
    return varint(number << 3 | 2) + varint(content.size()) + content;
}

std::string typed(const char *type, const char *format = "")
{
    std::string schema = field(schemaType, field(wrapped, type));
    if (*format) {
        schema += field(schemaFormat, format);
    }
    return schema;
}

std::string encodedSchemaOf(const FieldType &type)
{
    switch (type.shape) {
    case Shape::Text:
        return typed("string");
    case Shape::Integer:
        return typed("integer", "int64");
    case Shape::Flag:
        return typed("boolean");
    case Shape::IntegerOrText:
        return typed("string", "int-or-string");
    case Shape::List:
        return typed("array") + field(schemaItems, field(wrapped, encodedSchemaOf(type.items.front())));
    case Shape::Map:
        return typed("object") + field(schemaAdditional, field(wrapped, encodedSchemaOf(type.items.front())));
    case Shape::Object:
        return field(schemaRef, "#/definitions/demo." + type.name);
    case Shape::Anything:
        break;
    }
    return {};
}

std::string kindExtension(const std::string &kind)
{
    for (const ResourceType &type : resourceTypes()) {
        if (type.kind != kind) {
            continue;
        }
        std::string yaml
            = "- group: \"" + type.group + "\"\n  kind: " + kind + "\n  version: " + type.version + '\n';
        if (!type.olderVersion.empty()) {
            yaml += "- group: \"" + type.group + "\"\n  kind: " + kind + "\n  version: " + type.olderVersion
                + '\n';
        }
        return field(schemaExtension,
            field(entryName, "x-kubernetes-group-version-kind") + field(entryValue, field(anyYaml, yaml)));
    }
    return {};
}

std::string definitionOf(const SchemaType &type)
{
    std::string properties, required;
    for (const SchemaField &entry : type.fields) {
        properties += field(
            mapEntries, field(entryName, entry.name) + field(entryValue, encodedSchemaOf(entry.type)));
        if (entry.required) {
            required += field(schemaRequired, entry.name);
        }
    }
    return required + typed("object") + field(schemaProperties, properties) + kindExtension(type.name);
}

std::string buildDocument()
{
    std::string definitions;
    for (const auto &[name, type] : schemaTypes()) {
        definitions
            += field(mapEntries, field(entryName, "demo." + name) + field(entryValue, definitionOf(type)));
    }
    return field(documentSwagger, "2.0")
        + field(documentInfo, field(infoTitle, "Demo cluster") + field(infoVersion, "v1.30.0-demo"))
        + field(documentPaths, "") + field(documentDefinitions, definitions);
}

} // namespace

const std::string &openApiV2Protobuf()
{
    static const std::string document = buildDocument();
    return document;
}

} // namespace tidewright::demo
