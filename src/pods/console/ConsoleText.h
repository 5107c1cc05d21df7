// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QStringList>
#include <QUrl>

namespace tidewright {

/// What the console makes of texts. Pure functions, any thread.
namespace console_text {

/// Of a command's output, this many characters are shown.
inline constexpr qsizetype longestResponse = 3000;
/// Commands and errors are meant to be read whole; this only keeps a flood from stopping the window.
inline constexpr qsizetype longestLine = 30'000;

/// What a terminal without colours would show: escape sequences (ECMA-48) and other control characters are
/// gone, erased characters too, tabs stay, and every kind of line end is a line feed. Characters that would
/// rearrange the text around them, or that a text document keeps for itself, do not get through.
QString withoutControls(QStringView text);

/// Where the escape sequence ends (ECMA-48) whose ESC stands before `at`. A control string without an end
/// counts as its first two characters.
qsizetype endOfEscape(QStringView text, qsizetype at);

/// Between two UTF-16 units, both included.
constexpr bool isBetween(char16_t unit, char16_t first, char16_t last)
{
    return unit >= first && unit <= last;
}
/// Characters that would rearrange the text around them.
constexpr bool changesDirection(char16_t unit)
{
    return isBetween(unit, 0x202A, 0x202E) || isBetween(unit, 0x2066, 0x2069);
}
/// What a text layout takes for something of its own.
constexpr bool isReserved(char16_t unit)
{
    return isBetween(unit, 0xFDD0, 0xFDEF) || unit == 0xFFFC || unit >= 0xFFFE;
}

/// "yyyy-MM-dd HH:mm:ss" in UTC, with European digits.
QString logDate(const QDateTime &date);

/// The words of a typed line: runs without white space and double quotes, and double-quoted runs, which lose
/// their quotes. A double quote that opens no pair is skipped.
QStringList commandWords(const QString &line);

/// Where a link leads: the address itself, or behind https:// when it names no scheme. Nothing for an address
/// that is not one of http, https or ftp with a host.
QUrl linkTarget(const QString &linkText);

} // namespace console_text

} // namespace tidewright
