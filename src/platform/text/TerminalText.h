// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What becomes of texts that were written for a terminal. Pure functions, any thread.
namespace tidewright::terminal_text {

/// What a terminal without colours would show: escape sequences (ECMA-48) and other control characters are
/// gone, erased characters too, tabs stay, and every kind of line end is a line feed. Characters that would
/// rearrange the text around them, or that a text document keeps for itself, do not get through.
QString withoutControls(QStringView text);

/// Finds where the escape sequences of a text end (ECMA-48), for one walk from its beginning to its end. A
/// control string without an end counts as its introducer; however many there are, the walk's time grows with
/// the text alone. A view of bytes (QLatin1String) knows ESC, but no one-character introducers and ends,
/// which may be parts of characters there.
template <typename View> class EscapeReader
{
public:
    explicit EscapeReader(View text)
        : m_text(text)
    {
    }
    /// Behind the sequence whose ESC, or one-character introducer (U+0080 to U+009F), stands at `at`.
    qsizetype endAt(qsizetype at);

private:
    char16_t unit(qsizetype at) const { return m_text[at].unicode(); }
    qsizetype endOfSequence(qsizetype at) const;
    qsizetype endOfString(qsizetype at);
    qsizetype endOfFunction(qsizetype at, char16_t function);

    View m_text;
    qsizetype m_noEndBefore = 0; ///< no control string ends before this place
};
extern template class EscapeReader<QStringView>;
extern template class EscapeReader<QLatin1String>;

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
