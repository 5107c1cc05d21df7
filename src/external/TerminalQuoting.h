// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

// A terminal command line is text for the inside of a double-quoted script literal, of the kind that desktops
// with scriptable terminals use: \" stands for a double quote, \\ for a backslash, \n, \r and \t for control
// characters. What remains once these are undone is read by a POSIX shell. So a value in the shell's double
// quotes passes two readers. All of this is pure; any thread.

/// A value as it stands between two escaped quotes (\"VALUE\") of a command line: double quotes become \\\",
/// and a value with a comma or a line feed is enclosed in plain double quotes. Everything else is left as it
/// is: the shell expands $ and back-quotes, and backslashes act as escapes. Values that are not known to be
/// free of these three belong into `terminalAssignment` or `terminalArgument` instead.
QString escapeString(const QString &value);

/// NAME=\"VALUE\" with `escapeString` of the value, where also $, back-quotes and backslashes reach the
/// program as they are, unread by the shell; for values without them it is nothing but the former. A name
/// that the shell would not take for a variable's is quoted together with the value.
QString terminalAssignment(const QString &name, const QString &value);

/// One word of the command, \"TEXT\": whatever it holds, it reaches the program unchanged.
QString terminalArgument(const QString &text);

/// The command line for the shell: the escapes above undone. Of plain quotes, which would end a literal,
/// those directly inside an escaped pair (where `escapeString` puts them) are dropped, so that what they
/// enclose stays within the shell's quotes; others are kept.
QString withoutLiteralEscapes(const QString &commandLine);

} // namespace tidewright
