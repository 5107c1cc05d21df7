// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/TerminalText.h"

namespace tidewright::terminal_text {

namespace {

constexpr char16_t escape = 0x1B;
constexpr char16_t bell = 0x07;
constexpr char16_t stringTerminator = 0x9C;

/// Where a control sequence ends whose parameters begin at `at`.
qsizetype endOfSequence(QStringView text, qsizetype at)
{
    while (at < text.size() && isBetween(text[at].unicode(), 0x20, 0x3F)) {
        ++at;
    }
    return at < text.size() && isBetween(text[at].unicode(), 0x40, 0x7E) ? at + 1 : at;
}

/// Where a control string ends that begins at `at`. One without an end hides nothing of what follows.
qsizetype endOfString(QStringView text, qsizetype at)
{
    for (qsizetype i = at; i < text.size() && text[i] != QLatin1Char('\n'); ++i) {
        const char16_t unit = text[i].unicode();
        if (unit == bell || unit == stringTerminator) {
            return i + 1;
        }
        if (unit == escape && i + 1 < text.size() && text[i + 1] == QLatin1Char('\\')) {
            return i + 2;
        }
    }
    return at;
}

/// The control function of a C1 character, as one byte between '@' and '_'.
qsizetype endOfFunction(QStringView text, qsizetype at, char16_t function)
{
    switch (function) {
    case u'[':
        return endOfSequence(text, at);
    case u']':
    case u'P':
    case u'X':
    case u'^':
    case u'_':
        return endOfString(text, at);
    default:
        return at;
    }
}

bool isLineEnd(char16_t unit)
{
    return isBetween(unit, u'\n', u'\r') || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

/// Takes back the last character of the line, as a backspace followed by another character does on paper.
void eraseLast(QString &line)
{
    if (line.isEmpty() || line.back() == QLatin1Char('\n')) {
        return;
    }
    const bool pair
        = line.back().isLowSurrogate() && line.size() > 1 && line.at(line.size() - 2).isHighSurrogate();
    line.chop(pair ? 2 : 1);
}

} // namespace

qsizetype endOfEscape(QStringView text, qsizetype at)
{
    if (at < text.size() && isBetween(text[at].unicode(), 0x40, 0x5F)) {
        return endOfFunction(text, at + 1, text[at].unicode());
    }
    while (at < text.size() && isBetween(text[at].unicode(), 0x20, 0x2F)) {
        ++at;
    }
    return at < text.size() && isBetween(text[at].unicode(), 0x30, 0x7E) ? at + 1 : at;
}

QString withoutControls(QStringView text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype at = 0; at < text.size();) {
        const char16_t unit = text[at++].unicode();
        if (isLineEnd(unit)) {
            const bool pair = unit == u'\r' && at < text.size() && text[at] == QLatin1Char('\n');
            at += pair ? 1 : 0;
            result.append(QLatin1Char('\n'));
        } else if (unit == escape) {
            at = endOfEscape(text, at);
        } else if (isBetween(unit, 0x80, 0x9F)) {
            at = endOfFunction(text, at, static_cast<char16_t>(unit - 0x40));
        } else if (unit == u'\b') {
            eraseLast(result);
        } else if (isReserved(unit)) {
            result.append(QChar::ReplacementCharacter);
        } else if (unit == u'\t' || (unit >= 0x20 && unit != 0x7F && !changesDirection(unit))) {
            result.append(QChar(unit));
        }
    }
    return result;
}

} // namespace tidewright::terminal_text
