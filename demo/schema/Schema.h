// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tidewright::demo {

/// What a field may hold, read from a short notation: "s" text, "i" integer, "b" flag, "q" integer or text
/// (quantities, ports), "any" anything, "[T]" list, "{T}" map from text, and otherwise the name of a type.
struct FieldType
{
    enum class Shape { Text, Integer, Flag, IntegerOrText, Anything, List, Map, Object };
    Shape shape = Shape::Anything;
    std::string name; ///< of an Object's type
    std::vector<FieldType> items; ///< one entry for List and Map
};

struct SchemaField
{
    std::string name;
    FieldType type;
    bool required = false;
};

struct SchemaType
{
    std::string name;
    std::vector<SchemaField> fields;

    const SchemaField *find(std::string_view field) const;
};

/// The types of all served kinds by name; a kind's own type has the kind's name. One table feeds the server's
/// validation and the schema documents from which clients validate.
const std::map<std::string, SchemaType> &schemaTypes();

} // namespace tidewright::demo
