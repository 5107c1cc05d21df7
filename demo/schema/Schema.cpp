// SPDX-License-Identifier: GPL-3.0-or-later
#include "schema/Schema.h"

#include "schema/SchemaTable.h"

#include <sstream>

namespace tidewright::demo {

namespace {

using Shape = FieldType::Shape;

FieldType parseType(const std::string &text)
{
    static const std::map<std::string, Shape> simple{
        {"s", Shape::Text},
        {"i", Shape::Integer},
        {"b", Shape::Flag},
        {"q", Shape::IntegerOrText},
        {"any", Shape::Anything},
    };
    if (const auto found = simple.find(text); found != simple.end()) {
        return {found->second, {}, {}};
    }
    if (text.front() == '[' || text.front() == '{') {
        return {
            text.front() == '[' ? Shape::List : Shape::Map, {}, {parseType(text.substr(1, text.size() - 2))}};
    }
    return {Shape::Object, text, {}};
}

SchemaField parseField(const std::string &text)
{
    const size_t colon = text.find(':');
    const bool required = text.back() == '!';
    return {text.substr(0, colon), parseType(text.substr(colon + 1, text.size() - colon - 1 - required)),
        required};
}

std::map<std::string, SchemaType> parseTable()
{
    std::map<std::string, SchemaType> types;
    std::istringstream words{std::string(schemaTable)};
    SchemaType *type = nullptr;
    for (std::string word; words >> word;) {
        if (word.back() == '=') {
            const std::string name = word.substr(0, word.size() - 1);
            type = &types[name];
            type->name = name;
        } else {
            type->fields.push_back(parseField(word));
        }
    }
    return types;
}

} // namespace

const SchemaField *SchemaType::find(std::string_view field) const
{
    for (const SchemaField &candidate : fields) {
        if (candidate.name == field) {
            return &candidate;
        }
    }
    return nullptr;
}

const std::map<std::string, SchemaType> &schemaTypes()
{
    static const std::map<std::string, SchemaType> types = parseTable();
    return types;
}

} // namespace tidewright::demo
