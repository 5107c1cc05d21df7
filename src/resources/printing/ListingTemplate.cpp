// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/printing/ListingTemplate.h"

#include <array>

namespace tidewright {

namespace {

struct Frame
{
    ListingTemplate::Language language;
    QByteArrayView argument;
    QByteArrayView begin;
    QByteArrayView end; ///< may be missing in JSONPath
};

constexpr std::array<Frame, 3> frames{{
    {ListingTemplate::Language::JsonPath, "-o=jsonpath=", "{range .items[*]}", "{end}"},
    {ListingTemplate::Language::GoTemplate, "--template=", "{{range .items}}", "{{end}}"},
    {ListingTemplate::Language::GoTemplate, "--template=", "{{range.items}}", "{{end}}"},
}};

} // namespace

std::optional<ListingTemplate> ListingTemplate::of(const QStringList &outputArguments)
{
    const QByteArray argument = outputArguments.isEmpty() ? QByteArray() : outputArguments.last().toUtf8();
    for (const Frame &frame : frames) {
        const QByteArray begin = frame.argument.toByteArray() + frame.begin;
        if (!argument.startsWith(begin)) {
            continue;
        }
        QByteArrayView item = QByteArrayView(argument).sliced(begin.size());
        if (item.endsWith(frame.end)) {
            item.chop(frame.end.size());
        } else if (frame.language == Language::GoTemplate) {
            return std::nullopt;
        }
        if (!item.endsWith('\n')) {
            return std::nullopt;
        }
        return ListingTemplate{frame.language, item.chopped(1).toByteArray()};
    }
    return std::nullopt;
}

} // namespace tidewright
