// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What becomes of texts that were written for a terminal. Pure functions, any thread.
namespace tidewright::terminal_text {

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

} // namespace tidewright::terminal_text
