// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/LoadProblem.h"

#include "platform/RegularExpression.h"

namespace tidewright {

QString sentenceFirst(const QString &errorText)
{
    static const RegularExpression logLine(QStringLiteral(R"(^[EWIF]\d{4} [\d:.]+\s+\d+ [^\]]*\] ?)"));
    QStringList sentences;
    QStringList logged;
    for (const QString &line : errorText.trimmed().split(QLatin1Char('\n'))) {
        const auto prefix = logLine.firstMatch(line);
        (prefix ? logged : sentences).append(line.mid(prefix ? prefix->length : 0));
    }
    logged.removeDuplicates();
    return (sentences + logged).join(QLatin1Char('\n'));
}

QString loadProblem(const LoadOutcome &outcome)
{
    if (outcome.error) {
        const QString text = sentenceFirst(*outcome.error);
        return text.isEmpty() ? QObject::tr("kubectl failed without saying why.") : text;
    }
    if (!outcome.errorIsText) {
        return QObject::tr("kubectl reported an error that could not be read: it is not text.");
    }
    if (!outcome.isText) {
        return QObject::tr("kubectl's answer could not be read: it is not text.");
    }
    if (outcome.signal) {
        return QObject::tr("kubectl was ended by signal %1 before it had finished: rows may be missing.")
            .arg(*outcome.signal);
    }
    if (outcome.skippedLines > 0) {
        return QObject::tr("%1 of %2 lines of the listing could not be read.\nThe first of them: %3")
            .arg(outcome.skippedLines)
            .arg(outcome.lines)
            .arg(outcome.firstSkippedLine);
    }
    return {};
}

QString firstLine(const QString &text)
{
    return text.trimmed().section(QLatin1Char('\n'), 0, 0);
}

} // namespace tidewright
