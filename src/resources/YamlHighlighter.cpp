// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/YamlHighlighter.h"

#include "resources/NamedImages.h"

#include <QRegularExpression>

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

} // namespace

void YamlHighlighter::highlightBlock(const QString &line)
{
    if (line.size() > longestColouredLine) {
        return;
    }
    static const QRegularExpression key(QStringLiteral(R"(^[\s-]*([\w./"'-]+):(?=\s|$))"));
    static const QRegularExpression constant(QStringLiteral(R"(^(true|false|null|~|[+-]?\d+(\.\d+)?)$)"));
    qsizetype valueStart = 0;
    if (const auto match = key.match(line); match.hasMatch()) {
        setFormat(
            static_cast<int>(match.capturedStart(1)), static_cast<int>(match.capturedLength(1)), keyColour());
        valueStart = match.capturedEnd();
    }
    while (valueStart < line.size() && (line[valueStart].isSpace() || line[valueStart] == u'-')) {
        ++valueStart;
    }
    const QStringView value = QStringView(line).sliced(valueStart);
    const auto length = static_cast<int>(value.size());
    if (value.startsWith(u'#')) {
        setFormat(static_cast<int>(valueStart), length, Qt::gray);
    } else if (constant.match(value.toString()).hasMatch()) {
        setFormat(static_cast<int>(valueStart), length, constantColour());
    } else if (value.startsWith(u'"') || value.startsWith(u'\'')) {
        setFormat(static_cast<int>(valueStart), length, stringColour());
    }
}

} // namespace tidewright
