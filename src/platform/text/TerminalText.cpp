// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/TerminalText.h"

#include <type_traits>

namespace tidewright::terminal_text {

namespace {

constexpr char16_t escape = 0x1B;
constexpr char16_t bell = 0x07;
constexpr char16_t stringTerminator = 0x9C;

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

template <typename View> qsizetype EscapeReader<View>::endOfSequence(qsizetype at) const
{
    while (at < m_text.size() && isBetween(unit(at), 0x20, 0x3F)) {
        ++at;
    }
    return at < m_text.size() && isBetween(unit(at), 0x40, 0x7E) ? at + 1 : at;
}

/// One without an end hides nothing of what follows.
template <typename View> qsizetype EscapeReader<View>::endOfString(qsizetype at)
{
    constexpr bool isOfCharacters = std::is_same_v<View, QStringView>;
    if (at < m_noEndBefore) {
        return at;
    }
    qsizetype i = at;
    for (; i < m_text.size() && unit(i) != u'\n'; ++i) {
        if (unit(i) == bell || (isOfCharacters && unit(i) == stringTerminator)) {
            return i + 1;
        }
        if (unit(i) == escape && i + 1 < m_text.size() && unit(i + 1) == u'\\') {
            return i + 2;
        }
    }
    m_noEndBefore = i;
    return at;
}

/// The control function of a C1 character, as one byte between '@' and '_'.
template <typename View> qsizetype EscapeReader<View>::endOfFunction(qsizetype at, char16_t function)
{
    switch (function) {
    case u'[':
        return endOfSequence(at);
    case u']':
    case u'P':
    case u'X':
    case u'^':
    case u'_':
        return endOfString(at);
    default:
        return at;
    }
}

template <typename View> qsizetype EscapeReader<View>::endAt(qsizetype at)
{
    const char16_t introducer = unit(at++);
    if (introducer != escape) {
        return endOfFunction(at, static_cast<char16_t>(introducer - 0x40));
    }
    if (at < m_text.size() && isBetween(unit(at), 0x40, 0x5F)) {
        return endOfFunction(at + 1, unit(at));
    }
    while (at < m_text.size() && isBetween(unit(at), 0x20, 0x2F)) {
        ++at;
    }
    return at < m_text.size() && isBetween(unit(at), 0x30, 0x7E) ? at + 1 : at;
}

template class EscapeReader<QStringView>;
template class EscapeReader<QLatin1String>;

QString withoutControls(QStringView text)
{
    QString result;
    result.reserve(text.size());
    EscapeReader<QStringView> escapes(text);
    for (qsizetype at = 0; at < text.size();) {
        const char16_t unit = text[at++].unicode();
        if (isLineEnd(unit)) {
            const bool pair = unit == u'\r' && at < text.size() && text[at] == QLatin1Char('\n');
            at += pair ? 1 : 0;
            result.append(QLatin1Char('\n'));
        } else if (unit == escape || isBetween(unit, 0x80, 0x9F)) {
            at = escapes.endAt(at - 1);
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
