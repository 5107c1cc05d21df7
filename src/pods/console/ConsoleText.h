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
