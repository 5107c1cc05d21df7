// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/story/ObjectEvents.h"

#include "platform/text/Timestamp.h"
#include "resources/kinds/FieldText.h"
#include "resources/story/ObjectStory.h"

#include <algorithm>

namespace tidewright {

namespace {

// A message may hold line ends, so a record ends with a tab and one. Of the times and counts an event has
// those that its source thinks of: a series is a newer form of a count.
enum Field { Created, Type, Reason, Count, SeriesCount, SeriesTime, LastTime, EventTime, Message };

QString listingTemplate()
{
    return QStringLiteral(
        R"(-o=jsonpath={range .items[*]}{.metadata.creationTimestamp}{"\t"}{.type}{"\t"}{.reason}{"\t"})"
        R"({.count}{"\t"}{.series.count}{"\t"}{.series.lastObservedTime}{"\t"}{.lastTimestamp}{"\t"})"
        R"({.eventTime}{"\t"}{.message}{"\t\n"}{end})");
}

/// A value in a field selector, which separates requirements with commas.
QString escaped(QString value)
{
    for (const QLatin1Char mark : {QLatin1Char('\\'), QLatin1Char(','), QLatin1Char('=')}) {
        value.replace(mark, QString(QLatin1Char('\\')) + mark);
    }
    return value;
}

/// Fractions of seconds, which newer events have, are cut off.
std::optional<qint64> timeOf(const QString &text)
{
    const qsizetype point = text.indexOf(QLatin1Char('.'));
    return parseTimestamp(point < 0 ? text : text.left(point) + QLatin1Char('Z'));
}

/// Nothing for what is no record: every event was created at some time.
std::optional<ObjectEvent> eventOf(const QString &record)
{
    const QStringList fields = record.split(QLatin1Char('\t'));
    if (!timeOf(fields[Created])) {
        return std::nullopt;
    }
    ObjectEvent event{{}, fields.value(Type), fields.value(Reason),
        fields.mid(Message).join(QLatin1Char('\t')).trimmed(), QStringLiteral("1")};
    for (const Field field : {SeriesTime, LastTime, EventTime, Created}) {
        if (!event.time) {
            event.time = timeOf(fields.value(field));
        }
    }
    for (const Field field : {Count, SeriesCount}) {
        if (integerOf(fields.value(field).toUtf8()) > 0) {
            event.count = fields[field];
        }
    }
    return event;
}

} // namespace

QStringList eventArguments(const ObjectStory &story, const QString &name)
{
    QStringList requirements{QLatin1String("involvedObject.name=") + escaped(name),
        QLatin1String("involvedObject.kind=") + escaped(story.kind)};
    if (!story.uid.isEmpty()) {
        requirements.append(QLatin1String("involvedObject.uid=") + escaped(story.uid));
    }
    return {QLatin1String("--field-selector=") + requirements.join(QLatin1Char(',')), listingTemplate()};
}

std::vector<ObjectEvent> parseEvents(const QByteArray &printed)
{
    std::vector<ObjectEvent> events;
    // The last record has lost its end: what kubectl prints is trimmed.
    for (const QString &record : QString::fromUtf8(printed).split(QLatin1String("\t\n"))) {
        if (const auto event = eventOf(record)) {
            events.push_back(*event);
        } else if (!events.empty()) { // a message with such an end in it
            events.back().message += QLatin1Char('\n') + record;
        }
    }
    std::stable_sort(events.begin(), events.end(),
        [](const ObjectEvent &a, const ObjectEvent &b) { return b.time < a.time; });
    return events;
}

} // namespace tidewright
