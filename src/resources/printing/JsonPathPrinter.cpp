// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/printing/JsonPathPrinter.h"

#include "resources/printing/GoText.h"

#include <simdjson.h>

#include <utility>

namespace tidewright {

namespace {

using simdjson::dom::element;
using Step = JsonPathPrinter::Step;

bool isNameCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-'
        || c == '/';
}

/// A number, or nothing written; false for anything else.
bool readBound(QByteArrayView text, std::optional<qint64> &bound)
{
    bool isNumber = text.isEmpty();
    if (!isNumber) {
        bound = text.toByteArray().toLongLong(&isNumber);
    }
    return isNumber;
}

/// What stands between brackets.
bool readSubscript(QByteArrayView text, Step &step)
{
    step.kind = Step::Kind::Slice;
    if (text == "*") {
        return true;
    }
    const qsizetype colon = text.indexOf(':');
    if (colon >= 0) {
        return readBound(text.first(colon), step.begin) && readBound(text.sliced(colon + 1), step.end);
    }
    if (text.isEmpty() || !readBound(text, step.begin)) {
        return false;
    }
    step.end = *step.begin + 1;
    if (*step.end == 0) {
        step.end.reset(); // the last one
    }
    return true;
}

bool readStep(QByteArrayView &text, std::vector<Step> &path)
{
    Step step;
    qsizetype length = 1;
    if (text.startsWith('[')) {
        const qsizetype close = text.indexOf(']');
        if (close < 0 || !readSubscript(text.sliced(1, close - 1), step)) {
            return false;
        }
        length = close + 1;
    } else if (text.startsWith(".*")) {
        step.kind = Step::Kind::Wildcard;
        length = 2;
    } else if (text.startsWith('.')) {
        while (length < text.size()) {
            const bool isEscape = text[length] == '\\' && length + 1 < text.size();
            length += isEscape ? 1 : 0;
            if (!isEscape && !isNameCharacter(text[length])) {
                break;
            }
            step.name += text[length++];
        }
        if (step.name.empty()) {
            return false;
        }
    } else {
        return false;
    }
    path.push_back(std::move(step));
    text = text.sliced(length);
    return true;
}

std::vector<Step> readPath(QByteArrayView text)
{
    std::vector<Step> path;
    while (!text.isEmpty()) {
        if (!readStep(text, path)) {
            return {};
        }
    }
    return path;
}

using Values = std::vector<element>;

void takeField(const Values &values, const std::string &name, Values &next)
{
    for (const element &value : values) {
        simdjson::dom::object object;
        element field;
        if (value.get(object) == simdjson::SUCCESS && object.at_key(name).get(field) == simdjson::SUCCESS) {
            next.push_back(field);
        }
    }
}

QString takeSlice(const Values &values, const Step &step, Values &next)
{
    for (const element &value : values) {
        if (value.is_null()) {
            continue;
        }
        simdjson::dom::array array;
        if (value.get(array) != simdjson::SUCCESS) {
            return QStringLiteral("A value is no list.");
        }
        const auto size = static_cast<qint64>(array.size());
        const auto position = [size](qint64 bound) { return bound < 0 ? bound + size : bound; };
        const qint64 begin = position(step.begin.value_or(0));
        const qint64 end = step.end ? position(*step.end) : size;
        if (begin == end) {
            continue;
        }
        if (begin < 0 || begin >= size || end < begin || end > size) {
            return QStringLiteral("A list of %1 has no element %2.").arg(size).arg(step.begin.value_or(0));
        }
        qint64 index = 0;
        for (const element item : array) {
            if (index >= begin && index < end) {
                next.push_back(item);
            }
            ++index;
        }
    }
    return {};
}

void takeAll(const Values &values, Values &next)
{
    for (const element &value : values) {
        if (simdjson::dom::object object; value.get(object) == simdjson::SUCCESS) {
            for (const auto &field : object) {
                next.push_back(field.value);
            }
        } else if (simdjson::dom::array array; value.get(array) == simdjson::SUCCESS) {
            for (const element item : array) {
                next.push_back(item);
            }
        }
    }
}

QString follow(const std::vector<Step> &path, Values &values, Values &next)
{
    for (const Step &step : path) {
        next.clear();
        QString problem;
        switch (step.kind) {
        case Step::Kind::Field:
            takeField(values, step.name, next);
            break;
        case Step::Kind::Slice:
            problem = takeSlice(values, step, next);
            break;
        case Step::Kind::Wildcard:
            takeAll(values, next);
            break;
        }
        if (!problem.isEmpty()) {
            return problem;
        }
        values.swap(next);
    }
    return {};
}

void appendValue(const element &value, QByteArray &line)
{
    if (value.is_object() || value.is_array()) {
        appendGoJson(value, line);
    } else if (value.is_null()) {
        line += "null";
    } else {
        appendGoText(value, line);
    }
}

} // namespace

std::shared_ptr<const ObjectPrinter> JsonPathPrinter::compile(QByteArrayView text, QString &problem)
{
    auto printer = std::make_shared<JsonPathPrinter>();
    while (!text.isEmpty()) {
        Piece piece;
        const qsizetype open = text.indexOf('{');
        piece.text = text.first(open < 0 ? text.size() : open).toByteArray();
        text = text.sliced(piece.text.size());
        if (open >= 0) {
            const qsizetype close = text.indexOf('}');
            const QByteArrayView expression = close < 0 ? text : text.sliced(1, close - 1);
            piece.path = readPath(expression);
            if (close < 0 || piece.path.empty()) {
                problem = QStringLiteral("The JSONPath expression “%1” is not known here.")
                              .arg(QString::fromUtf8(expression));
                return nullptr;
            }
            text = text.sliced(close + 1);
        }
        printer->m_pieces.push_back(std::move(piece));
    }
    return printer;
}

QString JsonPathPrinter::print(const element &object, QByteArray &line) const
{
    thread_local Values values;
    thread_local Values next;
    for (const Piece &piece : m_pieces) {
        line += piece.text;
        if (piece.path.empty()) {
            continue;
        }
        values.assign(1, object);
        if (QString problem = follow(piece.path, values, next); !problem.isEmpty()) {
            return problem;
        }
        bool isFirst = true;
        for (const element &value : values) {
            if (!std::exchange(isFirst, false)) {
                line += ' ';
            }
            appendValue(value, line);
        }
    }
    return {};
}

} // namespace tidewright
