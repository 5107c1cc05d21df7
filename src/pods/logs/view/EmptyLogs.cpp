// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/EmptyLogs.h"

#include "pods/logs/view/CombinedLogsViewController.h"

#include <QObject>

namespace tidewright {

namespace {

constexpr int failuresInHint = 4;

QString narrowedText(const CombinedLogsViewController &logs)
{
    const LogDocument &document = logs.document();
    const auto count = static_cast<int>(logs.sources().size());
    int hidden = 0;
    for (int i = 0; i < count; ++i) {
        hidden += document.isSourceHidden(i) ? 1 : 0;
    }
    if (hidden == count) {
        return QObject::tr("All containers are hidden.");
    }
    if (document.examined() < document.size() - LogScan::usualSpan) {
        return QObject::tr("Looking for lines to show…");
    }
    return document.filter().isEmpty()
        ? QObject::tr("The containers that are not hidden have written nothing.")
        : QObject::tr("No line matches the filter.");
}

/// While there is no container of the workloads.
QString waitingText(const PodFollower *follower)
{
    if (!follower || !follower->problem().isEmpty()) {
        return follower ? follower->problem() : QObject::tr("Nothing is followed any more.");
    }
    return follower->knowsPods() ? QObject::tr("There are no pods now. Those that come are followed.")
                                 : QObject::tr("Looking for the pods…");
}

QString unwrittenText(const CombinedLogsViewController &logs, bool isCleared)
{
    if (logs.containers.empty() && !logs.workloads.empty()) {
        return waitingText(logs.follower());
    }
    if (logs.containers.empty()) {
        return QObject::tr("There are no containers to follow.");
    }
    if (logs.sources().empty()) {
        return QObject::tr("Nothing is followed yet.");
    }
    if (isCleared) {
        return QObject::tr("Cleared.");
    }
    if (logs.hasRunningStreams() || logs.follower()) {
        return logs.containers.size() == 1
            ? QObject::tr("Waiting for output of 1 container…")
            : QObject::tr("Waiting for output of %1 containers…").arg(logs.containers.size());
    }
    QStringList lines{QObject::tr("No container has written anything, and none is followed any more.")};
    for (std::size_t i = 0; i < logs.sources().size() && lines.size() <= failuresInHint; ++i) {
        if (logs.sources()[i].failure) {
            lines.append(logs.containers[i].pod + QLatin1String(": ") + logs.sources()[i].details());
        }
    }
    return lines.join(QLatin1String("\n\n"));
}

} // namespace

QString emptyLogsText(const CombinedLogsViewController &logs, bool isCleared)
{
    return logs.document().size() > 0 ? narrowedText(logs) : unwrittenText(logs, isCleared);
}

} // namespace tidewright
