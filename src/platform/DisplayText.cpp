// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DisplayText.h"

namespace tidewright::display_text {

QString withoutMnemonics(QString text)
{
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

QString shortened(const QString &text, qsizetype characters, int lines)
{
    qsizetype end = 0;
    for (qsizetype seen = 0; end < text.size(); ++seen) {
        const bool lineEnds = text.at(end) == QLatin1Char('\n') && --lines == 0;
        if (seen == characters || (lineEnds && end + 1 < text.size())) {
            return text.left(end) + QChar(0x2026);
        }
        const bool pair
            = text.at(end).isHighSurrogate() && end + 1 < text.size() && text.at(end + 1).isLowSurrogate();
        end += pair ? 2 : 1;
    }
    return text;
}

QString toolTip(const QString &text)
{
    constexpr qsizetype longest = 4000;
    constexpr int mostLines = 60;
    constexpr qsizetype fitsOneLine = 100;
    if (text.size() <= fitsOneLine && !text.contains(QLatin1Char('<'))) {
        return text;
    }
    return QStringLiteral("<p style='white-space:pre-wrap'>%1</p>")
        .arg(shortened(text, longest, mostLines).toHtmlEscaped());
}

} // namespace tidewright::display_text
