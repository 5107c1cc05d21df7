// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/CronJob.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "-o=jsonpath={range "
        ".items[*]}{.metadata.name}\t{.spec.schedule}\t{.spec.suspend}\t{.status.active[*].name}\t"
        "{.status.lastScheduleTime}\t{.metadata.creationTimestamp}\n");
}

enum Field { Schedule = 1, Suspend, Active, LastScheduleTime, Created, FieldCount };

/// Each word begins with an upper-case letter, the rest is in lower case.
QString capitalized(const QString &text)
{
    QString result = text.toLower();
    for (qsizetype i = 0; i < result.size(); ++i) {
        if (i == 0 || result[i - 1].isSpace()) {
            result[i] = result[i].toUpper();
        }
    }
    return result;
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &cronJob = static_cast<CronJob &>(item);
    cronJob.schedule = textOf(fields[Schedule]);
    cronJob.suspend = capitalized(textOf(fields[Suspend]));
    cronJob.active = !fields[Active].isEmpty();
    cronJob.lastScheduleTime = textOf(fields[LastScheduleTime]);
    cronJob.startTimeString = textOf(fields[Created]);
}

bool isSuspended(const CronJob &cronJob)
{
    return cronJob.suspend == QLatin1String("True");
}

Column suspendColumn()
{
    return withImage<CronJob>(
        textColumn<CronJob>("suspend", QStringLiteral("Suspended"), &CronJob::suspend, 110),
        [](const CronJob &cronJob) {
            return isSuspended(cronJob) ? QStringLiteral("NSStatusPartiallyAvailable") : QString();
        });
}

Column activeColumn()
{
    const auto text = [](const CronJob &cronJob) {
        return cronJob.active ? QStringLiteral("Running") : QStringLiteral("No");
    };
    const auto image = [](const CronJob &cronJob) {
        return cronJob.active ? QStringLiteral("NSStatusAvailable") : QString();
    };
    return withImage<CronJob>(textColumn<CronJob>("active", QStringLiteral("Active"), text, 100), image);
}

QString lastScheduleText(const CronJob &cronJob)
{
    return cronJob.lastScheduleTime.isEmpty() ? QStringLiteral("Never") : cronJob.getLastScheduleAge();
}

std::vector<Column> columns()
{
    return {
        nameColumn(330),
        textColumn<CronJob>("schedule", QStringLiteral("Schedule"), &CronJob::schedule, 140),
        suspendColumn(),
        activeColumn(),
        timeColumn<CronJob>("lastSchedule", QStringLiteral("Last Schedule"), lastScheduleText,
            &CronJob::lastScheduleTime, 130),
        ageColumn(),
    };
}

} // namespace

QString CronJob::getAge() const
{
    return ageSince(startTimeString, false);
}

QString CronJob::getLastScheduleAge() const
{
    return ageSince(lastScheduleTime, true);
}

ResourceKind cronJobKind()
{
    ResourceKind kind = kindOf<CronJob>();
    kind.resourceName = QStringLiteral("cj");
    kind.humanReadableResourceName = QStringLiteral("cronjob");
    kind.tableName = QStringLiteral("Cron Jobs");
    kind.listWord = QStringLiteral("cj");
    kind.outputArguments = {listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
