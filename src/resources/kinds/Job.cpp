// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Job.h"

#include "platform/text/Timestamp.h"
#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{.spec.completions}}\t{{.status.succeeded}}\t"
        "{{.status.startTime}}\t{{.status.completionTime}}\t"
        "{{range .status.conditions}}{{.type}}:{{if .reason}}{{.reason}}{{end}},{{end}}\t"
        "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Completions = 1, Succeeded, StartTime, CompletionTime, Conditions, Created, FieldCount };

constexpr QLatin1String listGlue(", ");

/// Conditions come as "Complete:,Failed:BackoffLimitExceeded,".
void assignConditions(const QString &conditions, Job &job)
{
    QStringList types;
    QStringList reasons;
    for (const QString &condition : conditions.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QStringList parts = condition.split(QLatin1Char(':'));
        types.append(parts.first());
        reasons.append(parts.value(1));
    }
    job.lastStatus = types.join(listGlue);
    job.lastReason = reasons.join(listGlue);
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &job = static_cast<Job &>(item);
    job.completions = integerOf(fields[Completions]);
    job.succeeded = integerOf(fields[Succeeded]);
    job.lastStartTime = textOf(fields[StartTime]);
    job.lastEndTime = textOf(fields[CompletionTime]);
    assignConditions(textOf(fields[Conditions]), job);
    job.startTimeString = textOf(fields[Created]);
}

bool hasFailed(const Job &job)
{
    return job.lastStatus.contains(QLatin1String("Failed"));
}

std::optional<qint64> secondsOf(const Job &job)
{
    const auto start = parseTimestamp(job.lastStartTime);
    const auto end = parseTimestamp(job.lastEndTime);
    return start && end ? std::optional(*end - *start) : std::nullopt;
}

/// The conditions; a job that has none yet is under way, or waits for its start.
QString statusText(const Job &job)
{
    if (!job.lastStatus.isEmpty()) {
        return job.lastStatus;
    }
    return parseTimestamp(job.lastStartTime) ? QStringLiteral("Running") : QStringLiteral("Waiting");
}

Column completionsColumn()
{
    const auto part = [](const Job &job) {
        const auto succeeded = static_cast<double>(job.succeeded);
        // One that wants nothing has all of it, as with availability.
        return job.completions > 0 ? succeeded / static_cast<double>(job.completions) : 2;
    };
    const Column column
        = textColumn<Job>("completions", QStringLiteral("Completions"), &Job::getCompletions, 115);
    return withImage<Job>(sortedBy<Job>(column, part), &Job::getCompletionsImage);
}

Column statusColumn()
{
    return withColour<Job>(textColumn<Job>("status", QStringLiteral("Status"), statusText, 110),
        [](const Job &job) { return hasFailed(job) ? QStringLiteral("red") : QString(); });
}

Column durationColumn()
{
    return sortedBy<Job>(textColumn<Job>("duration", QStringLiteral("Duration"), &Job::getDuration, 90),
        [](const Job &job) { return secondsOf(job).value_or(-1); });
}

std::vector<Column> columns()
{
    return {
        nameColumn(250),
        completionsColumn(),
        statusColumn(),
        textColumn<Job>("reason", QStringLiteral("Reason"), &Job::lastReason, 180),
        timeColumn<Job>(
            "lastStart", QStringLiteral("Started"), &Job::getLastStartAge, &Job::lastStartTime, 95),
        durationColumn(),
        ageColumn(90),
    };
}

} // namespace

QString Job::getCompletions() const
{
    return QStringLiteral("%1/%2").arg(succeeded).arg(completions);
}

QString Job::getCompletionsImage() const
{
    return availabilityImage(succeeded, completions);
}

QString Job::getDuration() const
{
    const auto seconds = secondsOf(*this);
    return seconds ? formatAge(static_cast<double>(*seconds), false) : QString();
}

QString Job::getLastStartAge() const
{
    return ageSince(lastStartTime, false);
}

ResourceKind jobKind()
{
    ResourceKind kind = kindOf<Job>();
    kind.resourceName = QStringLiteral("job");
    kind.humanReadableResourceName = QStringLiteral("job");
    kind.tableName = QStringLiteral("Jobs");
    kind.listWord = QStringLiteral("job");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.selectsPods = true;
    kind.logTarget = QStringLiteral("job/");
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
