// SPDX-License-Identifier: GPL-3.0-or-later
#include "external/TerminalQuoting.h"

#include <algorithm>
#include <string_view>

namespace tidewright {

namespace {

constexpr QChar quote = u'"';
constexpr QChar backslash = u'\\';
const auto escapedQuote = QStringLiteral("\\\"");

QString withQuotesEscaped(QString value)
{
    return value.replace(quote, QLatin1String("\\\\\\\""));
}

/// Puts a backslash for the shell, itself escaped for the literal, before what the shell would read within
/// double quotes. Double quotes are left to others.
QString unreadByShell(QString value)
{
    value.replace(backslash, QLatin1String("\\\\\\\\"));
    value.replace(u'$', QLatin1String("\\\\$"));
    return value.replace(u'`', QLatin1String("\\\\`"));
}

bool isVariableName(const QString &name)
{
    constexpr std::u16string_view letters = u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
    constexpr std::u16string_view digits = u"0123456789";
    const auto isIn = [](std::u16string_view set, QChar c) { return set.find(c.unicode()) != set.npos; };
    return !name.isEmpty() && isIn(letters, name.front())
        && std::all_of(
            name.begin(), name.end(), [&](QChar c) { return isIn(letters, c) || isIn(digits, c); });
}

/// What \CHARACTER stands for; nothing when it stands for itself, backslash included.
QString unescaped(QChar character)
{
    switch (character.unicode()) {
    case u'"':
    case u'\\':
        return character;
    case u'n':
        return QStringLiteral("\n");
    case u'r':
        return QStringLiteral("\r");
    case u't':
        return QStringLiteral("\t");
    default:
        return {};
    }
}

} // namespace

QString escapeString(const QString &value)
{
    const QString escaped = withQuotesEscaped(value);
    return escaped.contains(u',') || escaped.contains(u'\n') ? quote + escaped + quote : escaped;
}

QString terminalAssignment(const QString &name, const QString &value)
{
    if (!isVariableName(name)) {
        return terminalArgument(name + u'=' + value);
    }
    return name + u'=' + escapedQuote + escapeString(unreadByShell(value)) + escapedQuote;
}

QString terminalArgument(const QString &text)
{
    return escapedQuote + withQuotesEscaped(unreadByShell(text)) + escapedQuote;
}

QString withoutLiteralEscapes(const QString &commandLine)
{
    QString line;
    bool afterEscapedQuote = false;
    for (qsizetype i = 0; i < commandLine.size(); ++i) {
        const QChar character = commandLine[i];
        const QString meant = character == backslash && i + 1 < commandLine.size()
            ? unescaped(commandLine[i + 1])
            : QString();
        if (!meant.isEmpty()) {
            line += meant;
            ++i;
        } else if (character != quote
            || !(afterEscapedQuote || QStringView(commandLine).sliced(i + 1).startsWith(escapedQuote))) {
            line += character;
        }
        afterEscapedQuote = meant == quote;
    }
    return line;
}

} // namespace tidewright
