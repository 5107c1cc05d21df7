// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Event.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

#include <QDateTime>
#include <QLocale>

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range .items}}{{.metadata.name}}\t{{.type}}\t{{.reason}}\t{{.involvedObject.kind}}\t"
        "{{.involvedObject.name}}\t{{.message}}\t{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Type = 1, Reason, ObjectKind, ObjectName, Message, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &event = static_cast<Event &>(item);
    event.type = textOf(fields[Type]);
    event.reason = textOf(fields[Reason]);
    event.object = textOf(fields[ObjectKind]) + QLatin1Char('/') + textOf(fields[ObjectName]);
    event.message = textOf(fields[Message]);
    event.startTimeString = textOf(fields[Created]);
}

QString shownMessage(const Event &event)
{
    return withoutMissingValues(event.message);
}

QString shownReason(const Event &event)
{
    return withoutMissingValues(event.reason);
}

Column typeColumn()
{
    return withImage<Event>(
        textColumn<Event>("type", QStringLiteral("Type"), &Event::type, 95), &Event::typeImage);
}

/// Puts what was listed last on top; the events of one listing stand as that listing has them.
Column firstListedColumn()
{
    Column column = textColumn<Event>(
        "firstListed", QStringLiteral("First Listed"),
        [](const Event &event) {
            const auto time = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(event.startDate * 1000));
            return QLocale().toString(time.time(), QLocale::ShortFormat);
        },
        100);
    column.hidden = true;
    return sortedBy<Event>(column, &Event::startDate);
}

std::vector<Column> columns()
{
    std::vector<Column> columns{
        typeColumn(),
        ageColumn(75),
        textColumn<Event>("reason", QStringLiteral("Reason"), shownReason, 145),
        textColumn<Event>("object", QStringLiteral("Object"), &Event::object, 270),
        textColumn<Event>("message", QStringLiteral("Message"), shownMessage, 340),
        firstListedColumn(),
        nameColumn(),
    };
    columns.back().hidden = true;
    for (Column &column : columns) {
        column = withColour<Event>(std::move(column), &Event::getEventColor);
    }
    return columns;
}

} // namespace

QString Event::getEventColor() const
{
    return type == QLatin1String("Warning") ? QStringLiteral("orange")
        : type == QLatin1String("Error")    ? QStringLiteral("red")
                                            : QString();
}

QString Event::typeImage() const
{
    return type == QLatin1String("Warning") ? QStringLiteral("warning")
        : type == QLatin1String("Error")    ? QStringLiteral("NSStatusUnavailable")
                                            : QStringLiteral("statusInformation");
}

ResourceKind eventKind()
{
    ResourceKind kind = kindOf<Event>();
    kind.resourceName = QStringLiteral("event");
    kind.humanReadableResourceName = QStringLiteral("event");
    kind.tableName = QStringLiteral("Events");
    kind.listWord = QStringLiteral("events");
    kind.outputArguments = {QStringLiteral("--sort-by"), QStringLiteral(".lastTimestamp"),
        QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.freeTextField = Message;
    kind.lastLineFirst = true; // kubectl sorts the latest to the end
    kind.firstListed
        = [](KubeTableItem &item, double moment) { static_cast<Event &>(item).startDate = moment; };
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
