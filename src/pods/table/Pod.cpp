// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/table/Pod.h"

#include "platform/text/Timestamp.h"
#include "resources/kinds/Columns.h"
#include "resources/kinds/Usage.h"

#include <QDateTime>
#include <QSet>

#include <algorithm>
#include <charconv>
#include <limits>

namespace tidewright {

namespace {

/// One line a pod: name, readiness of each container, phase, restart counts, reasons, start time, container
/// names.
QString podListingTemplate()
{
    return QStringLiteral(
        "-o=jsonpath={range .items[*]}{.metadata.name}\t{.status.containerStatuses[*].ready}\t"
        "{.status.phase}\t{.status.containerStatuses[*].restartCount}\t"
        "{.status.containerStatuses[*].state.*.reason}\t{.status.startTime}\t"
        "{.spec.containers[*].name}\n{end}");
}

/// What only the object itself tells.
QString podLiveTemplate()
{
    return QStringLiteral(
        "-o=jsonpath={range .items[*]}{.spec.nodeName}\t{.status.podIP}\t{.metadata.creationTimestamp}\t"
        "{.metadata.deletionTimestamp}\t{.status.reason}\t"
        "{.status.initContainerStatuses[*].state.*.reason}\n{end}");
}

enum PodLiveField { Node, Ip, Created, Deleted, PodReason, InitReasons, LiveFieldCount };

enum PodField { Ready = 1, Phase, Restarts, Reasons, StartTime, Containers, FieldCount };

QStringList words(QByteArrayView field)
{
    return QString::fromUtf8(field).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// The container names of a pod. Neighbours in a listing are mostly pods of one workload and share one list.
QStringList containerNames(QByteArrayView field)
{
    thread_local QByteArray lastField;
    thread_local QStringList lastNames;
    if (field != lastField) {
        lastField = field.toByteArray();
        lastNames = words(field);
    }
    return lastNames;
}

/// A phase; nearly all pods have the same.
QString phaseText(QByteArrayView field)
{
    static const QString running = QStringLiteral("Running");
    return field == "Running" ? running : QString::fromUtf8(field);
}

/// Counts that are no numbers, and what goes beyond 64 bits, count as nothing.
qint64 sumOfNumbers(QByteArrayView field)
{
    qint64 sum = 0;
    for (const char *begin = field.begin(), *end = field.end(); begin < end;) {
        const char *const blank = std::find(begin, end, ' ');
        qint64 count = 0;
        const auto [rest, error] = std::from_chars(begin, blank, count);
        if (error == std::errc() && rest == blank && count > 0
            && sum <= std::numeric_limits<qint64>::max() - count) {
            sum += count;
        }
        begin = blank + (blank < end);
    }
    return sum;
}

QString distinctWords(QByteArrayView field)
{
    if (field.isEmpty()) {
        return {};
    }
    QStringList distinct = words(field);
    distinct.removeDuplicates();
    return distinct.join(QLatin1String(", "));
}

bool sameNames(const QStringList &a, const QStringList &b)
{
    return a == b || QSet<QString>(a.cbegin(), a.cend()) == QSet<QString>(b.cbegin(), b.cend());
}

void assignPod(const Fields &fields, KubeTableItem &item)
{
    auto &pod = static_cast<Pod &>(item);
    pod.readyCount = fields[Ready].count("true");
    pod.notReadyCount = fields[Ready].count("false");
    pod.status = phaseText(fields[Phase]);
    pod.restarts = sumOfNumbers(fields[Restarts]);
    pod.reason = distinctWords(fields[Reasons]);
    pod.startTimeString = QString::fromUtf8(fields[StartTime]);
    const QStringList containers = containerNames(fields[Containers]);
    if (!sameNames(containers, pod.containers)) {
        pod.containers = containers;
    }
}

void assignLivePod(const Fields &fields, KubeTableItem &item)
{
    auto &pod = static_cast<Pod &>(item);
    pod.node = QString::fromUtf8(fields[Node]);
    pod.ip = QString::fromUtf8(fields[Ip]);
    pod.created = QString::fromUtf8(fields[Created]);
    pod.isDeleting = !fields[Deleted].isEmpty();
    pod.podReason = QString::fromUtf8(fields[PodReason]);
    pod.initReason = distinctWords(fields[InitReasons]);
}

/// Without the words of containers that are on their way, or have done what they were to do.
QString withoutProgress(const QString &reasons)
{
    static const QSet<QString> steps{
        QStringLiteral("ContainerCreating"), QStringLiteral("PodInitializing"), QStringLiteral("Completed")};
    QStringList all = reasons.split(QLatin1String(", "), Qt::SkipEmptyParts);
    all.removeIf([](const QString &reason) { return steps.contains(reason); });
    return all.join(QLatin1String(", "));
}

QString createdText(const Pod &pod)
{
    const auto time = parseTimestamp(pod.created);
    return time ? QDateTime::fromSecsSinceEpoch(*time).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
                : pod.created;
}

std::vector<Column> podColumns()
{
    const auto containers = [](const Pod &pod) { return pod.containers.join(QLatin1String(", ")); };
    return {
        nameColumn(290),
        troubleFirst<Pod>(
            textColumn<Pod>("status", QStringLiteral("Status"), &Pod::isReadyText, 170), &Pod::isReadyImage),
        textColumn<Pod>("reason", QStringLiteral("Reason"), &Pod::why, 140),
        numberColumn<Pod>("restarts", QStringLiteral("Restarts"), &Pod::restarts, 80),
        usedCoresColumn<Pod>("cpu", QStringLiteral("CPU")),
        usedBytesColumn<Pod>("memory", QStringLiteral("Memory")),
        timeColumn<Pod>("age", QStringLiteral("Age"), &Pod::getAge, &Pod::ageTime, 90),
        textColumn<Pod>("containers", QStringLiteral("Containers"), containers, 200),
        hiddenAtFirst(textColumn<Pod>("node", QStringLiteral("Node"), &Pod::node, 160)),
        hiddenAtFirst(textColumn<Pod>("ip", QStringLiteral("IP"), &Pod::ip, 120)),
        hiddenAtFirst(timeColumn<Pod>("created", QStringLiteral("Created"), createdText, &Pod::created, 160)),
    };
}

} // namespace

bool operator==(const Pod &a, const Pod &b)
{
    return a.name == b.name && a.readyCount == b.readyCount && a.notReadyCount == b.notReadyCount
        && a.restarts == b.restarts && a.status == b.status && a.reason == b.reason
        && a.startTimeString == b.startTimeString && a.containers == b.containers
        && a.nameSpace == b.nameSpace && a.node == b.node && a.ip == b.ip && a.created == b.created
        && a.isDeleting == b.isDeleting && a.podReason == b.podReason && a.initReason == b.initReason
        && a.usage == b.usage;
}

QString Pod::isReadyImage() const
{
    if (isDeleting) {
        return QStringLiteral("NSStatusPartiallyAvailable");
    }
    if (readyCount > 0 && notReadyCount == 0) {
        return QStringLiteral("NSStatusAvailable");
    }
    if (status == QLatin1String("Succeeded")) {
        return QStringLiteral("statusCompleted");
    }
    const bool isComing = status == QLatin1String("Pending")
        && withoutProgress(reason + QLatin1String(", ") + initReason).isEmpty();
    return isComing ? QStringLiteral("NSStatusPartiallyAvailable") : QStringLiteral("NSStatusUnavailable");
}

QString Pod::why() const
{
    if (isDeleting) {
        return QStringLiteral("Terminating");
    }
    if (!podReason.isEmpty()) {
        return podReason;
    }
    if (status == QLatin1String("Succeeded")) {
        return {};
    }
    const QString init = withoutProgress(initReason);
    return init.isEmpty() ? reason : QLatin1String("Init: ") + init;
}

QString Pod::getAge() const
{
    return startTimeString.isEmpty() && !created.isEmpty() ? ageSince(created, true)
                                                           : KubeTableItem::getAge();
}

QString Pod::isReadyText() const
{
    if (status == QLatin1String("Running")) {
        return QStringLiteral("%1/%2 Running").arg(readyCount).arg(readyCount + notReadyCount);
    }
    if (status == QLatin1String("Succeeded") || reason.isEmpty()) {
        return status;
    }
    return status + QLatin1String(": ") + reason;
}

ResourceKind podKind()
{
    ResourceKind kind = kindOf<Pod>();
    kind.resourceName = QStringLiteral("po");
    kind.humanReadableResourceName = QStringLiteral("pod");
    kind.tableName = QStringLiteral("Pods");
    kind.listWord = QStringLiteral("po");
    kind.outputArguments = {podListingTemplate()};
    kind.fieldCount = FieldCount;
    kind.hasOwner = true;
    kind.logTarget = QString(); // the pod's name by itself
    kind.columns = podColumns();
    kind.assign = assignPod;
    kind.liveArguments = {podLiveTemplate()};
    kind.liveFieldCount = LiveFieldCount;
    kind.assignLive = assignLivePod;
    setUsage<Pod>(kind, QStringLiteral("pods"));
    return kind;
}

} // namespace tidewright
