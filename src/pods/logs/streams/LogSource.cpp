// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/streams/LogSource.h"

#include "platform/text/DisplayText.h"
#include "platform/text/TerminalText.h"
#include "platform/text/Utf8.h"

#include <QObject>
#include <QRegularExpression>

namespace tidewright {

namespace {

constexpr qsizetype charactersKept = 4000;
constexpr qsizetype longestNote = 120;

/// The way kubectl puts it, on a line of its own.
const QRegularExpression &choiceLine()
{
    static const QRegularExpression line(
        QStringLiteral("^Found (\\d+) pods, using (pod/\\S+)\\n"), QRegularExpression::MultilineOption);
    return line;
}

/// The last line that may tell why a stream ended, or what there is to know; kubectl's reason comes last.
QString lastLine(const QString &said, bool isReason)
{
    const QStringList lines = said.split(u'\n', Qt::SkipEmptyParts);
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        const bool isNote = choiceLine().match(*line + u'\n').hasMatch() || line->startsWith(u"Warning:");
        if (!line->trimmed().isEmpty() && !(isReason && isNote)) {
            return line->trimmed();
        }
    }
    return {};
}

} // namespace

void LogSource::tell(const QString &what)
{
    story.append(QObject::tr("%1 %2").arg(QTime::currentTime().toString(QStringLiteral("HH:mm:ss")), what));
}

void LogSource::begin()
{
    waits = false;
    ended = false;
    hasWritten = false;
    said.clear();
    choice.reset();
    failure.reset();
}

void LogSource::hear(QByteArrayView piece)
{
    said += terminal_text::withoutControls(shownUtf8(piece));
    said = said.right(charactersKept);
    if (const auto match = choice ? QRegularExpressionMatch() : choiceLine().match(said); match.hasMatch()) {
        choice = {match.captured(2), match.captured(1)};
    }
}

QString LogSource::refusedContainers() const
{
    static const QRegularExpression refusal(
        QStringLiteral("attempting to follow (\\d{1,6}) log streams, but maximum allowed concurrency"));
    return failure ? refusal.match(said).captured(1) : QString();
}

QString LogSource::state() const
{
    return waits  ? QObject::tr("waiting to start")
        : failure ? QObject::tr("ended, error")
        : ended   ? QObject::tr("ended")
                  : QObject::tr("running");
}

QString LogSource::note() const
{
    QString note;
    if (const QString count = refusedContainers(); !count.isEmpty()) {
        note = QObject::tr("%1 containers are more than kubectl follows unasked").arg(count);
    } else if (failure) {
        note = lastLine(said, true);
        note = note.isEmpty() ? *failure : note;
    } else if (!story.isEmpty()) {
        note = story.last();
    } else if (choice) {
        note = QObject::tr("using %1, 1 of %2 pods").arg(choice->pod, choice->pods);
    } else {
        note = lastLine(said, false);
    }
    return display_text::shortened(note, longestNote);
}

QString LogSource::details() const
{
    QStringList lines = story;
    if (const QString text = said.trimmed(); !text.isEmpty()) {
        lines.append(text);
    }
    if (failure == QLatin1String("No process defined")) {
        lines.append(
            QObject::tr("%1: the pipes to kubectl could not be made; too many files or streams are open.")
                .arg(*failure));
    } else if (failure) {
        lines.append(*failure);
    }
    return lines.join(u'\n');
}

} // namespace tidewright
