// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/YamlHighlighter.h"

#include "platform/text/RegularExpression.h"
#include "resources/widgets/NamedImages.h"

namespace tidewright {

namespace {

constexpr qsizetype longestColouredLine = 4000; // a certificate in one line stays plain

QColor keyColour()
{
    return isDarkPalette() ? QColor(0x79, 0xB8, 0xFF) : QColor(0x00, 0x5C, 0xA8);
}

QColor stringColour()
{
    return isDarkPalette() ? QColor(0x9E, 0xD0, 0x72) : QColor(0x3D, 0x6E, 0x00);
}

QColor constantColour()
{
    return isDarkPalette() ? QColor(0xE5, 0xB5, 0x67) : QColor(0x9A, 0x4F, 0x00);
}

qsizetype behindIndent(const QString &line, qsizetype from)
{
    while (from < line.size() && (line[from].isSpace() || line[from] == u'-')) {
        ++from;
    }
    return from;
}

} // namespace

void YamlHighlighter::highlightBlock(const QString &line)
{
    if (line.size() > longestColouredLine) {
        return;
    }
    static const RegularExpression key(QStringLiteral(R"(^[\w./"'-]+(?=:(?:\s|$)))"));
    static const RegularExpression constant(QStringLiteral(R"(^(true|false|null|~|[+-]?\d+(\.\d+)?)$)"));
    qsizetype valueStart = behindIndent(line, 0);
    if (const auto match = key.firstMatch(QStringView(line).sliced(valueStart))) {
        setFormat(static_cast<int>(valueStart), static_cast<int>(match->length), keyColour());
        valueStart = behindIndent(line, valueStart + match->length + 1);
    }
    const QStringView value = QStringView(line).sliced(valueStart);
    const auto length = static_cast<int>(value.size());
    if (value.startsWith(u'#')) {
        setFormat(static_cast<int>(valueStart), length, Qt::gray);
    } else if (constant.firstMatch(value)) {
        setFormat(static_cast<int>(valueStart), length, constantColour());
    } else if (value.startsWith(u'"') || value.startsWith(u'\'')) {
        setFormat(static_cast<int>(valueStart), length, stringColour());
    }
}

} // namespace tidewright
