// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/printing/GoTemplatePrinter.h"

#include "resources/printing/GoText.h"

#include <simdjson.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>

namespace tidewright {

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;
using Node = GoTemplatePrinter::Node;
using Nodes = std::vector<Node>;

QString unknown(QByteArrayView expression)
{
    return QStringLiteral("The Go template expression “%1” is not known here.")
        .arg(QString::fromUtf8(expression));
}

/// ".a.b" or "."
bool readPath(QByteArrayView text, std::vector<std::string> &path)
{
    if (!text.startsWith('.')) {
        return false;
    }
    if (text.size() == 1) {
        return true;
    }
    for (const QByteArray &name : text.sliced(1).toByteArray().split('.')) {
        const bool isName = !name.isEmpty() && std::all_of(name.cbegin(), name.cend(), [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        });
        if (!isName) {
            return false;
        }
        path.push_back(name.toStdString());
    }
    return true;
}

/// A keyword and what stands behind it, whose blank may be missing before a dot.
bool takeKeyword(QByteArrayView &action, QByteArrayView keyword)
{
    if (!action.startsWith(keyword) || action.size() == keyword.size()
        || (action[keyword.size()] != ' ' && action[keyword.size()] != '.')) {
        return false;
    }
    action = action.sliced(keyword.size()).trimmed();
    return true;
}

bool readAction(QByteArrayView action, Node &node)
{
    if (takeKeyword(action, "if")) {
        node.kind = Node::Kind::If;
    } else if (takeKeyword(action, "range")) {
        node.kind = Node::Kind::Range;
    } else if (const qsizetype bar = action.indexOf('|'); bar >= 0) {
        if (action.sliced(bar + 1).trimmed() != "len") {
            return false;
        }
        node.kind = Node::Kind::Length;
        action = action.first(bar).trimmed();
    } else {
        node.kind = Node::Kind::Value;
    }
    return readPath(action, node.path);
}

/// Reads up to the end of the text, or of the block that is open.
QString readNodes(QByteArrayView &text, bool inBlock, Nodes &nodes)
{
    while (!text.isEmpty()) {
        const qsizetype open = text.indexOf("{{");
        const qsizetype length = open < 0 ? text.size() : open;
        if (length > 0) {
            nodes.push_back({Node::Kind::Text, text.first(length).toByteArray()});
        }
        text = text.sliced(length);
        if (open < 0) {
            break;
        }
        const qsizetype close = text.indexOf("}}");
        if (close < 0) {
            return unknown(text);
        }
        const QByteArrayView action = text.sliced(2, close - 2).trimmed();
        text = text.sliced(close + 2);
        if (action == "end") {
            return inBlock ? QString() : unknown(action);
        }
        Node node;
        if (!readAction(action, node)) {
            return unknown(action);
        }
        const bool isBlock = node.kind == Node::Kind::If || node.kind == Node::Kind::Range;
        if (QString problem = isBlock ? readNodes(text, true, node.body) : QString(); !problem.isEmpty()) {
            return problem;
        }
        nodes.push_back(std::move(node));
    }
    return inBlock ? QStringLiteral("A block of the Go template has no end.") : QString();
}

/// Nothing for what is not there. `problem` is set where Go fails.
std::optional<element> valueAt(const element &dot, const std::vector<std::string> &path, QString &problem)
{
    element value = dot;
    for (const std::string &name : path) {
        simdjson::dom::object object;
        if (value.get(object) != simdjson::SUCCESS) {
            problem = (value.is_null() ? QStringLiteral("nil pointer evaluating interface {}.%1")
                                       : QStringLiteral("can't evaluate field %1 in type interface {}"))
                          .arg(QString::fromStdString(name));
            return std::nullopt;
        }
        element field;
        if (object.at_key(name).get(field) != simdjson::SUCCESS) {
            return std::nullopt;
        }
        value = field;
    }
    return value;
}

bool isTrue(const element &value)
{
    switch (value.type()) {
    case element_type::STRING:
        return !value.get_string().value_unsafe().empty();
    case element_type::ARRAY:
        return value.get_array().value_unsafe().size() > 0;
    case element_type::OBJECT:
        return value.get_object().value_unsafe().size() > 0;
    case element_type::NULL_VALUE:
        return false;
    case element_type::BOOL:
        return value.get_bool().value_unsafe();
    default:
        return value.get_double().value_unsafe() != 0;
    }
}

QString appendLength(const std::optional<element> &value, QByteArray &line)
{
    std::size_t length = 0;
    if (value && value->is_string()) {
        length = value->get_string().value_unsafe().size();
    } else if (value && value->is_array()) {
        length = value->get_array().value_unsafe().size();
    } else if (value && value->is_object()) {
        length = value->get_object().value_unsafe().size();
    } else {
        return value && !value->is_null() ? QStringLiteral("error calling len: len of a value that has none")
                                          : QStringLiteral("error calling len: len of nil pointer");
    }
    line += QByteArray::number(static_cast<qulonglong>(length));
    return {};
}

QString printNodes(const Nodes &nodes, const element &dot, QByteArray &line);

QString printRange(const Node &node, const element &value, QByteArray &line)
{
    std::vector<element> items;
    if (simdjson::dom::array array; value.get(array) == simdjson::SUCCESS) {
        items.assign(array.begin(), array.end());
    } else if (simdjson::dom::object object; value.get(object) == simdjson::SUCCESS) {
        std::map<std::string_view, element> sorted;
        for (const auto &field : object) {
            sorted.emplace(field.key, field.value);
        }
        for (const auto &[key, item] : sorted) {
            items.push_back(item);
        }
    } else if (!value.is_null()) {
        return QStringLiteral("range can't iterate over a single value");
    }
    for (const element &item : items) {
        if (QString problem = printNodes(node.body, item, line); !problem.isEmpty()) {
            return problem;
        }
    }
    return {};
}

QString printNode(const Node &node, const element &dot, QByteArray &line)
{
    if (node.kind == Node::Kind::Text) {
        line += node.text;
        return {};
    }
    QString problem;
    const auto value = valueAt(dot, node.path, problem);
    if (!problem.isEmpty()) {
        return problem;
    }
    switch (node.kind) {
    case Node::Kind::Length:
        return appendLength(value, line);
    case Node::Kind::If:
        return value && isTrue(*value) ? printNodes(node.body, dot, line) : QString();
    case Node::Kind::Range:
        return value ? printRange(node, *value, line) : QString();
    default:
        break;
    }
    if (!value || value->is_null()) {
        line += "<no value>";
    } else {
        appendReadAgainGoText(*value, line);
    }
    return {};
}

QString printNodes(const Nodes &nodes, const element &dot, QByteArray &line)
{
    for (const Node &node : nodes) {
        if (QString problem = printNode(node, dot, line); !problem.isEmpty()) {
            return problem;
        }
    }
    return {};
}

} // namespace

std::shared_ptr<const ObjectPrinter> GoTemplatePrinter::compile(QByteArrayView text, QString &problem)
{
    auto printer = std::make_shared<GoTemplatePrinter>();
    problem = readNodes(text, false, printer->m_nodes);
    return problem.isEmpty() ? printer : nullptr;
}

QString GoTemplatePrinter::print(const element &object, QByteArray &line) const
{
    return printNodes(m_nodes, object, line);
}

} // namespace tidewright
