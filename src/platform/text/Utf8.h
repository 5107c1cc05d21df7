// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tidewright {

// ICU's U8_NEXT tells characters apart. QStringDecoder was weighed for the rest: it replaces what is not
// valid instead of refusing it, several bytes by one U+FFFD, and QString::trimmed() trims another set of
// characters.

/// Whether a byte of UTF-8 goes on with a character that began before it.
constexpr bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The text of UTF-8 bytes, or nothing when they are not valid UTF-8.
std::optional<QString> decodeUtf8(QByteArrayView bytes);

/// The text as it is shown of bytes that may be anything: each byte that is part of no character becomes
/// U+FFFD, a byte order mark is a character like others.
QString shownUtf8(QByteArrayView bytes);

/// How many of `bytes` a beginning of `shownUtf8(bytes)` comes from.
qsizetype bytesShownAs(QStringView beginning, QByteArrayView bytes);

/// Removes white space (Unicode space separators, tab) and line ends from both ends of valid UTF-8.
QByteArray trimmedUtf8(QByteArray bytes);

/// How many bytes at the end of `bytes` are the beginning of a character whose rest has not come yet (0 to
/// 3).
qsizetype incompleteUtf8Tail(QByteArrayView bytes);

} // namespace tidewright
