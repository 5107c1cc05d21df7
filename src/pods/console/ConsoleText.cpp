// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/console/ConsoleText.h"

#include "platform/text/RegularExpression.h"

#include <QLocale>

namespace tidewright::console_text {

QString logDate(const QDateTime &date)
{
    return QLocale::c().toString(date.toUTC(), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QStringList commandWords(const QString &line)
{
    // It never backtracks, so no line is too long for it.
    static const RegularExpression word(
        QStringLiteral("([^\\s\"]+|\"[^\"]+\")"), RegularExpression::unlimitedEffort);
    QStringList words;
    for (const TextRange &range : word.allMatches(line).ranges) {
        const QStringView match = QStringView(line).mid(range.start, range.length);
        const bool isQuoted = match.startsWith(QLatin1Char('"'));
        words.append((isQuoted ? match.mid(1, match.size() - 2) : match).toString());
    }
    return words;
}

QUrl linkTarget(const QString &linkText)
{
    static const RegularExpression scheme(QStringLiteral("(?i)^(?:https?|ftp)://"));
    const QString address = scheme.firstMatch(linkText) ? linkText : QLatin1String("https://") + linkText;
    const QUrl url(address);
    const bool allowed
        = QStringList{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("ftp")}.contains(
            url.scheme());
    return url.isValid() && allowed && !url.host().isEmpty() ? url : QUrl();
}

} // namespace tidewright::console_text
