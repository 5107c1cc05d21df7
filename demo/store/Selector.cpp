// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/Selector.h"

#include "store/ApiError.h"

#include <algorithm>
#include <map>

namespace tidewright::demo {

namespace {

std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(" \t");
    return first == text.npos ? std::string() : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Commas inside "in (a, b)" do not separate requirements.
std::vector<std::string> splitOutsideBrackets(const std::string &text)
{
    std::vector<std::string> pieces;
    std::string piece;
    int depth = 0;
    for (const char c : text) {
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (c == ',' && depth == 0) {
            pieces.push_back(trimmed(piece));
            piece.clear();
        } else {
            piece += c;
        }
    }
    pieces.push_back(trimmed(piece));
    std::erase(pieces, std::string());
    return pieces;
}

[[noreturn]] void refuse(const std::string &text)
{
    throw ApiError::badRequest("unable to parse requirement: \"" + text + "\" is not a selector");
}

const std::string *labelValue(const StoredObject &object, const std::string &key)
{
    for (const auto &[name, value] : object.labels) {
        if (name == key) {
            return &value;
        }
    }
    return nullptr;
}

bool isSelectable(const ResourceType &type, const std::string &field)
{
    static const std::map<std::string, std::vector<std::string>> fields{
        {"Pod",
            {"spec.nodeName", "spec.restartPolicy", "spec.schedulerName", "spec.serviceAccountName",
                "status.phase", "status.podIP", "status.nominatedNodeName"}},
        {"Event",
            {"involvedObject.kind", "involvedObject.namespace", "involvedObject.name", "involvedObject.uid",
                "involvedObject.apiVersion", "involvedObject.resourceVersion", "involvedObject.fieldPath",
                "reason", "reportingComponent", "source", "type"}},
        {"Secret", {"type"}},
        {"Namespace", {"status.phase"}},
        {"Node", {"spec.unschedulable"}},
        {"ReplicaSet", {"status.replicas"}},
        {"Job", {"status.successful"}},
    };
    const auto found = fields.find(type.kind);
    return field == "metadata.name" || (field == "metadata.namespace" && type.namespaced)
        || (found != fields.end()
            && std::find(found->second.begin(), found->second.end(), field) != found->second.end());
}

std::string pointerOf(const std::string &fieldPath)
{
    std::string pointer = '/' + fieldPath;
    std::replace(pointer.begin(), pointer.end(), '.', '/');
    return pointer;
}

} // namespace

Selector::Requirement Selector::parseRequirement(const std::string &text)
{
    if (const size_t open = text.find('('); open != text.npos) {
        const size_t close = text.find(')', open);
        const std::string head = trimmed(text.substr(0, open));
        const size_t blank = head.find(' ');
        if (close == text.npos || blank == head.npos) {
            refuse(text);
        }
        const std::string word = trimmed(head.substr(blank));
        if (word != "in" && word != "notin") {
            refuse(text);
        }
        return {head.substr(0, blank), word == "in" ? Operator::In : Operator::NotIn,
            splitOutsideBrackets(text.substr(open + 1, close - open - 1))};
    }
    if (const size_t sign = text.find('='); sign != text.npos) {
        const bool negated = sign > 0 && text[sign - 1] == '!';
        const size_t valueStart = text.find_first_not_of('=', sign);
        const std::string key = trimmed(text.substr(0, negated ? sign - 1 : sign));
        if (key.empty()) {
            refuse(text);
        }
        return {key, negated ? Operator::NotEquals : Operator::Equals,
            {valueStart == text.npos ? std::string() : trimmed(text.substr(valueStart))}};
    }
    if (text.find(' ') != text.npos) {
        refuse(text);
    }
    if (text[0] == '!') {
        return {text.substr(1), Operator::Missing, {}};
    }
    return {text, Operator::Exists, {}};
}

Selector Selector::ofLabels(const std::string &text)
{
    Selector selector;
    for (const std::string &piece : splitOutsideBrackets(text)) {
        selector.m_requirements.push_back(parseRequirement(piece));
    }
    return selector;
}

Selector Selector::ofFields(const ResourceType &type, const std::string &text)
{
    Selector selector = ofLabels(text);
    selector.m_onFields = true;
    for (const Requirement &requirement : selector.m_requirements) {
        if (requirement.op != Operator::Equals && requirement.op != Operator::NotEquals) {
            refuse(text);
        }
        if (!isSelectable(type, requirement.key)) {
            throw ApiError::badRequest("\"" + requirement.key
                + "\" is not a known field selector: "
                  "only \"metadata.name\", \"metadata.namespace\" and a few fields of some kinds");
        }
    }
    return selector;
}

bool Selector::holds(const Requirement &requirement, const StoredObject &object, json &parsed) const
{
    std::string fieldText;
    const std::string *value = nullptr;
    if (!m_onFields) {
        value = labelValue(object, requirement.key);
    } else if (requirement.key == "metadata.name") {
        value = &object.name;
    } else if (requirement.key == "metadata.namespace") {
        value = &object.ns;
    } else {
        if (parsed.is_null()) {
            parsed = object.parsed();
        }
        const json &field = at(parsed, pointerOf(requirement.key));
        fieldText = field.is_string() ? field.get<std::string>() : field.is_null() ? "" : toText(field);
        value = &fieldText;
    }
    const auto isListed = [&] {
        return value
            && std::find(requirement.values.begin(), requirement.values.end(), *value)
            != requirement.values.end();
    };
    switch (requirement.op) {
    case Operator::Equals:
    case Operator::In:
        return isListed();
    case Operator::NotEquals:
    case Operator::NotIn:
        return !isListed();
    case Operator::Exists:
        return value != nullptr;
    case Operator::Missing:
        return value == nullptr;
    }
    return false;
}

bool Selector::matches(const StoredObject &object) const
{
    json parsed;
    return std::all_of(m_requirements.begin(), m_requirements.end(),
        [&](const Requirement &requirement) { return holds(requirement, object, parsed); });
}

bool Selector::mapMatches(const json &wanted, const StoredObject &object)
{
    if (!wanted.is_object() || wanted.empty()) {
        return false;
    }
    for (auto pair = wanted.begin(); pair != wanted.end(); ++pair) {
        const std::string *value = labelValue(object, pair.key());
        if (!value || !pair->is_string() || *value != pair->get_ref<const std::string &>()) {
            return false;
        }
    }
    return true;
}

} // namespace tidewright::demo
