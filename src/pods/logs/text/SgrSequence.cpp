// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/SgrSequence.h"

#include <array>
#include <vector>

namespace tidewright {

namespace {

// The solarized accents, and lighter ones of the same hue; black would not be seen on the background.
constexpr std::array<QRgb, 16> colours{0xFF586E75, 0xFFDC322F, 0xFF859900, 0xFFB58900, 0xFF268BD2, 0xFFD33682,
    0xFF2AA198, 0xFFEEE8D5, 0xFF839496, 0xFFFF6B64, 0xFFB4CB2E, 0xFFE6B93C, 0xFF62B4F0, 0xFFF078B0,
    0xFF5CD0C6, 0xFFFDF6E3};

QRgb indexedColour(int index)
{
    if (index < 16) {
        return colours[static_cast<std::size_t>(index)];
    }
    if (index >= 232) {
        const int grey = 8 + (index - 232) * 10;
        return qRgb(grey, grey, grey);
    }
    const auto level = [](int step) { return step == 0 ? 0 : 55 + step * 40; };
    index -= 16;
    return qRgb(level(index / 36), level(index / 6 % 6), level(index % 6));
}

/// Numbers of a sequence; one that is left out is 0, one behind a colon is marked.
struct Parameter
{
    int value = 0;
    bool isPart = false;
};

std::vector<Parameter> parametersOf(QStringView sequence)
{
    std::vector<Parameter> parameters(1);
    for (const QChar c : sequence) {
        if (c >= u'0' && c <= u'9') {
            parameters.back().value = qMin(parameters.back().value * 10 + c.unicode() - u'0', 65535);
        } else if (c == u';' || c == u':') {
            parameters.push_back({0, c == u':'});
        }
    }
    return parameters;
}

/// The colour behind a 38 or 48 at `at`, which moves to the last parameter that belongs to it.
std::optional<QRgb> extendedColour(const std::vector<Parameter> &parameters, std::size_t &at)
{
    std::vector<int> values;
    std::size_t next = at + 1;
    const bool inParts = next < parameters.size() && parameters[next].isPart;
    const std::size_t wanted = next < parameters.size() && parameters[next].value == 2 ? 4 : 2;
    while (next < parameters.size() && parameters[next].isPart == inParts
        && (inParts || values.size() < wanted)) {
        values.push_back(parameters[next++].value);
    }
    at = next - 1;
    if (values.size() >= 2 && values[0] == 5) {
        return indexedColour(values[1] & 0xFF);
    }
    if (values.size() >= 4 && values[0] == 2) {
        // With colons, a colour space may stand before the three.
        const std::size_t first = inParts && values.size() >= 5 ? 2 : 1;
        return qRgb(values[first] & 0xFF, values[first + 1] & 0xFF, values[first + 2] & 0xFF);
    }
    return std::nullopt;
}

void applyColour(int value, const std::vector<Parameter> &parameters, std::size_t &at, LogLook &look)
{
    if (value == 38 || value == 48) {
        if (const auto colour = extendedColour(parameters, at)) {
            (value == 38 ? look.foreground : look.background) = *colour;
        }
    } else if (value == 39 || value == 49) {
        (value == 39 ? look.foreground : look.background).reset();
    } else if (value >= 30 && value <= 37) {
        look.foreground = indexedColour(value - 30);
    } else if (value >= 40 && value <= 47) {
        look.background = indexedColour(value - 40);
    } else if (value >= 90 && value <= 97) {
        look.foreground = indexedColour(value - 82);
    } else if (value >= 100 && value <= 107) {
        look.background = indexedColour(value - 92);
    }
}

bool applyFlag(int value, LogLook &look)
{
    switch (value) {
    case 0:
        look = LogLook{.source = look.source};
        return true;
    case 1:
    case 22:
        look.bold = value == 1;
        return true;
    case 3:
    case 23:
        look.italic = value == 3;
        return true;
    case 4:
    case 24:
        look.underlined = value == 4;
        return true;
    case 7:
    case 27:
        look.inverse = value == 7;
        return true;
    case 9:
    case 29:
        look.struckOut = value == 9;
        return true;
    default:
        return false;
    }
}

} // namespace

void applySgr(QStringView sequence, LogLook &look)
{
    const qsizetype first = sequence.startsWith(QChar(0x9B)) ? 1 : 2;
    if (sequence.size() <= first || sequence.back() != u'm' || (first == 2 && sequence[1] != u'[')) {
        return;
    }
    const QStringView inner = sequence.sliced(first).chopped(1);
    if (!inner.isEmpty() && inner.front() >= u'<' && inner.front() <= u'?') {
        return; // another function that ends with the same letter
    }
    const std::vector<Parameter> parameters = parametersOf(inner);
    for (std::size_t at = 0; at < parameters.size(); ++at) {
        const bool isPart = parameters[at].isPart; // of a parameter whose kind is not shown, such as 4:3
        if (!isPart && !applyFlag(parameters[at].value, look)) {
            applyColour(parameters[at].value, parameters, at, look);
        }
    }
}

} // namespace tidewright
