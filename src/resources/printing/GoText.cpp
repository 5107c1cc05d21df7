// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/printing/GoText.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

namespace tidewright {

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;
using Member = std::pair<std::string_view, element>;

constexpr int textExponent = 6; // from a million on
/// Beyond this a double has digits that are not needed to tell it from others; Go prints zeros for them.
constexpr int largestExactExponent = 15;

template <typename Number> void appendInteger(Number number, QByteArray &out)
{
    std::array<char, 24> digits;
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    out.append(digits.data(), end - digits.data());
}

/// The shortest digits that read back as the number, with an exponent from 10^`firstExponent` on and below
/// 10^`lastExponent`.
QByteArray shortest(double number, int firstExponent, int lastExponent)
{
    std::array<char, 512> digits;
    const auto written = [&](std::chars_format format) {
        return std::to_chars(digits.data(), digits.data() + digits.size(), number, format).ptr
            - digits.data();
    };
    const qsizetype size = written(std::chars_format::scientific);
    const char *const mark = std::find(digits.data(), digits.data() + size, 'e');
    const bool isNegative = mark[1] == '-';
    int exponent = 0;
    std::from_chars(mark + 2, digits.data() + size, exponent);
    exponent = isNegative ? -exponent : exponent;
    if (exponent >= firstExponent || exponent < lastExponent) {
        return {digits.data(), size};
    }
    if (exponent < largestExactExponent) {
        return {digits.data(), written(std::chars_format::fixed)};
    }
    QByteArray whole(digits.data(), mark - digits.data());
    whole.replace(".", "");
    const qsizetype length = exponent + (whole.startsWith('-') ? 2 : 1);
    return whole.leftJustified(length, '0');
}

void appendDouble(double number, QByteArray &out)
{
    out += shortest(number, textExponent, -4);
}

void appendJsonDouble(double number, QByteArray &out)
{
    QByteArray text = shortest(number, 21, -6);
    // One digit is enough for a small negative exponent: 1e-07 is 1e-7.
    const qsizetype size = text.size();
    if (size >= 4 && text[size - 4] == 'e' && text[size - 3] == '-' && text[size - 2] == '0') {
        text.remove(size - 2, 1);
    }
    out += text;
}

bool isWhole(double number)
{
    return std::trunc(number) == number && std::abs(number) < 9.2e18;
}

std::vector<Member> sortedMembers(const element &value)
{
    std::vector<Member> members;
    const simdjson::dom::object object = value.get_object().value_unsafe();
    for (const auto &field : object) {
        members.emplace_back(field.key, field.value);
    }
    std::stable_sort(
        members.begin(), members.end(), [](const Member &a, const Member &b) { return a.first < b.first; });
    return members;
}

void appendBytes(std::string_view bytes, QByteArray &out)
{
    out.append(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

/// The short escape of a character, or 0.
char shortEscape(unsigned char character)
{
    switch (character) {
    case '"':
    case '\\':
        return static_cast<char>(character);
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return 0;
    }
}

void appendJsonText(std::string_view text, QByteArray &out)
{
    static constexpr char hex[] = "0123456789abcdef";
    out += '"';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto character = static_cast<unsigned char>(text[i]);
        if (const char escape = shortEscape(character)) {
            out += '\\';
            out += escape;
        } else if (character < 0x20 || character == '<' || character == '>' || character == '&') {
            out += "\\u00";
            out += hex[character >> 4];
            out += hex[character & 0xf];
        } else if (text.substr(i, 3) == "\u2028" || text.substr(i, 3) == "\u2029") {
            out += text[i + 2] == '\xa8' ? "\\u2028" : "\\u2029";
            i += 2;
        } else {
            out += text[i];
        }
    }
    out += '"';
}

void appendText(const element &value, bool isReadAgain, QByteArray &out)
{
    switch (value.type()) {
    case element_type::STRING:
        appendBytes(value.get_string().value_unsafe(), out);
        break;
    case element_type::INT64:
        appendInteger(value.get_int64().value_unsafe(), out);
        break;
    case element_type::UINT64:
        appendDouble(static_cast<double>(value.get_uint64().value_unsafe()), out);
        break;
    case element_type::DOUBLE:
        if (const double number = value.get_double().value_unsafe(); isReadAgain && isWhole(number)) {
            appendInteger(static_cast<qint64>(number), out);
        } else {
            appendDouble(number, out);
        }
        break;
    case element_type::BOOL:
        out += value.get_bool().value_unsafe() ? "true" : "false";
        break;
    case element_type::NULL_VALUE:
        out += "<nil>";
        break;
    case element_type::ARRAY: {
        char before = '[';
        const simdjson::dom::array array = value.get_array().value_unsafe();
        for (const element item : array) {
            out += std::exchange(before, ' ');
            appendText(item, isReadAgain, out);
        }
        out += before == '[' ? "[]" : "]";
        break;
    }
    case element_type::OBJECT: {
        out += "map";
        char before = '[';
        for (const Member &member : sortedMembers(value)) {
            out += std::exchange(before, ' ');
            appendBytes(member.first, out);
            out += ':';
            appendText(member.second, isReadAgain, out);
        }
        out += before == '[' ? "[]" : "]";
        break;
    }
    }
}

} // namespace

void appendGoText(const element &value, QByteArray &out)
{
    appendText(value, false, out);
}

void appendReadAgainGoText(const element &value, QByteArray &out)
{
    appendText(value, true, out);
}

void appendGoJson(const element &value, QByteArray &out)
{
    switch (value.type()) {
    case element_type::STRING:
        appendJsonText(value.get_string().value_unsafe(), out);
        break;
    case element_type::UINT64:
        appendJsonDouble(static_cast<double>(value.get_uint64().value_unsafe()), out);
        break;
    case element_type::DOUBLE:
        appendJsonDouble(value.get_double().value_unsafe(), out);
        break;
    case element_type::NULL_VALUE:
        out += "null";
        break;
    case element_type::ARRAY: {
        char before = '[';
        const simdjson::dom::array array = value.get_array().value_unsafe();
        for (const element item : array) {
            out += std::exchange(before, ',');
            appendGoJson(item, out);
        }
        out += before == '[' ? "[]" : "]";
        break;
    }
    case element_type::OBJECT: {
        char before = '{';
        for (const Member &member : sortedMembers(value)) {
            out += std::exchange(before, ',');
            appendJsonText(member.first, out);
            out += ':';
            appendGoJson(member.second, out);
        }
        out += before == '{' ? "{}" : "}";
        break;
    }
    default:
        appendText(value, false, out);
    }
}

} // namespace tidewright
