// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/LoadProblem.h"

#include "platform/text/DisplayText.h"
#include "platform/text/RegularExpression.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace tidewright {

QString sentenceFirst(const QString &errorText)
{
    static const RegularExpression logLine(QStringLiteral(R"(^[EWIF]\d{4} [\d:.]+\s+\d+ [^\]]*\] ?)"));
    QStringList sentences;
    QStringList logged;
    bool goesOn = false; // a log line, on further lines
    for (const QString &line : errorText.trimmed().split(QLatin1Char('\n'))) {
        if (goesOn) {
            goesOn = line != QLatin1String(" >");
            logged.last() += QLatin1Char('\n') + line;
            continue;
        }
        const auto prefix = logLine.firstMatch(line);
        (prefix ? logged : sentences).append(line.mid(prefix ? prefix->length : 0));
        goesOn = prefix && line.endsWith(QLatin1String("=<"));
    }
    logged.removeDuplicates();
    if (const QString helper = helperProblem(errorText); !helper.isEmpty()) {
        sentences.prepend(helper);
    }
    return (sentences + logged).join(QLatin1Char('\n'));
}

QString helperProblem(const QString &errorText)
{
    using Kind = QPair<QRegularExpression, QString>; // its group is the program
    const auto pattern = [](const char *text) { return QRegularExpression(QLatin1String(text)); };
    const QString folder
        = QLatin1Char(' ') + QObject::tr("Add its folder under Preferences, Advanced, Helper programs.");
    const QString notFound
        = QObject::tr("kubectl signs in to this cluster with “%1”, which was not found.") + folder;
    const QString removed
        = QObject::tr("The kubeconfig signs in to this cluster in a way, “%1”, that this kubectl "
                      "does not have. It must be written anew, for a program that signs in.");
    // In the words of clients 1.20 to 1.33. What a program that was found misses itself comes first.
    const std::array kinds{
        Kind(
            pattern(R"re(exec: \\?"([^"\s\\]{1,200})\\?": executable file not found in \$PATH)re"), notFound),
        Kind(pattern(R"re(exec: executable (\S{1,200}) not found)re"), notFound),
        Kind(pattern(R"re(exec: executable (\S{1,200}) failed with exit code 127)re"),
            QObject::tr(
                "kubectl signs in to this cluster with “%1”, which did not find another program that it "
                "needs.")
                + folder),
        Kind(pattern(R"re(exec: fork/exec (\S{1,200}): no such file or directory)re"),
            QObject::tr("The kubeconfig signs in to this cluster with the program %1. That file, or the "
                        "interpreter that it asks for, is not there.")),
        Kind(pattern(R"re(The (\S{1,200}) auth plugin has been removed)re"), removed),
        Kind(pattern(R"re(no Auth Provider found for name "([^"]{1,200})")re"), removed),
    };
    for (const auto &[expression, sentence] : kinds) {
        if (const auto match = expression.match(errorText); match.hasMatch()) {
            return sentence.arg(match.captured(1));
        }
    }
    return {};
}

QString loadProblem(const LoadOutcome &outcome)
{
    if (outcome.error) {
        constexpr qsizetype read = 16 * 1024; // kubectl says what is wrong long before that
        const QString text = sentenceFirst(display_text::shortened(*outcome.error, read));
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

bool hasOnlyWarned(const LoadOutcome &outcome)
{
    return outcome.endedWell && outcome.error && outcome.isText && outcome.skippedLines == 0;
}

QString kindObstacle(const QString &problem)
{
    constexpr std::array signs{
        "(Forbidden)", "doesn't have a resource type", "(NotFound)", "could not find the requested resource"};
    const QString line = firstLine(problem);
    const bool isObstacle = std::any_of(
        signs.begin(), signs.end(), [&line](const char *sign) { return line.contains(QLatin1String(sign)); });
    return isObstacle ? line : QString();
}

QString firstLine(const QString &text)
{
    return text.trimmed().section(QLatin1Char('\n'), 0, 0);
}

} // namespace tidewright
