// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/DisplayText.h"

#include <algorithm>

namespace tidewright::display_text {

namespace {

bool isKey(QChar character)
{
    return character.category() == QChar::Other_Control && character != QLatin1Char('\n')
        && character != QLatin1Char('\t');
}

bool movesText(QChar character)
{
    const char16_t unit = character.unicode();
    const bool isSeparatorOrEmbedding = unit >= 0x2028 && unit <= 0x202e;
    const bool isIsolate = unit >= 0x2066 && unit <= 0x2069;
    const bool isMark = unit == 0x061c || unit == 0x200e || unit == 0x200f;
    return isSeparatorOrEmbedding || isIsolate || isMark || isKey(character);
}

} // namespace

QString clean(const QString &text)
{
    if (std::none_of(text.cbegin(), text.cend(), movesText)) {
        return text;
    }
    QString cleaned = text;
    std::replace_if(cleaned.begin(), cleaned.end(), movesText, QChar(QChar::ReplacementCharacter));
    return cleaned;
}

QString name(const QString &text)
{
    constexpr qsizetype longest = 1000;
    return clean(shortened(text, longest));
}

QString withoutLineEnds(const QString &text)
{
    return QString(text)
        .replace(QLatin1Char('\r'), QLatin1String("\\r"))
        .replace(QLatin1Char('\n'), QLatin1String("\\n"));
}

bool actsWhenPasted(const QString &text)
{
    return std::any_of(text.cbegin(), text.cend(), isKey);
}

QString withoutMnemonics(const QString &text)
{
    return name(text).replace(QLatin1Char('&'), QLatin1String("&&"));
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
    const QString shown = clean(shortened(text, longest, mostLines));
    if (shown.size() <= fitsOneLine && !shown.contains(QLatin1Char('<'))) {
        return shown;
    }
    return QStringLiteral("<p style='white-space:pre-wrap'>%1</p>").arg(shown.toHtmlEscaped());
}

} // namespace tidewright::display_text
