// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/KubeTableItem.h"

#include "platform/text/NaturalOrder.h"
#include "platform/text/Timestamp.h"

#include <QLocale>

namespace tidewright {

namespace {

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;
constexpr int minutesPerHour = 60;

QString daysText(qint64 days)
{
    static const QLocale english(QLocale::English);
    return english.toString(days) + (days == 1 ? QLatin1String(" day") : QLatin1String(" days"));
}

} // namespace

KubeTableItem::KubeTableItem(const QString &objectName)
    : name(objectName)
    , foldedName(objectName.toCaseFolded())
    , nameSortKey(naturalSortKey(objectName))
{
}

KubeTableItem::KubeTableItem(const KubeTableItem &other)
    : name(other.name)
    , nameSpace(other.nameSpace)
    , foldedName(other.foldedName)
    , nameSortKey(other.nameSortKey)
    , startTimeString(other.startTimeString)
{
}

KubeTableItem::~KubeTableItem() = default;

QString KubeTableItem::getAge() const
{
    return ageSince(startTimeString, true);
}

QString KubeTableItem::ageSince(const QString &timestamp, bool storeInterval) const
{
    const auto start = parseTimestamp(timestamp);
    if (!start) {
        return QStringLiteral("<unknown>");
    }
    const double seconds = currentTime() - static_cast<double>(*start);
    if (storeInterval) {
        startTimeInterval = seconds;
    }
    return formatAge(seconds, false);
}

QByteArrayView listedPart(QByteArrayView line)
{
    const qsizetype end = line.lastIndexOf('\0');
    return end < 0 ? line : line.first(end);
}

QByteArrayView livePart(QByteArrayView line)
{
    const qsizetype end = line.lastIndexOf('\0');
    return end < 0 ? QByteArrayView() : line.sliced(end + 1);
}

QByteArray lineOf(const QByteArray &listed, QByteArrayView live)
{
    QByteArray line = listed + '\0' + live;
    for (qsizetype at = listed.size() + 1; (at = line.indexOf('\0', at)) >= 0;) {
        line[at] = ' ';
    }
    return line;
}

QString formatAge(double seconds, bool approximate)
{
    if (!(seconds > minute)) { // not a number, too
        return QStringLiteral("<1m");
    }
    if (seconds >= 0x1p63) {
        return QStringLiteral("--"); // more than can be counted
    }
    if (seconds > day) {
        const QString days = daysText(static_cast<qint64>(seconds / day));
        return approximate ? QStringLiteral("About ") + days : days;
    }
    const auto minutes = static_cast<int>(seconds / minute);
    return seconds > hour
        ? QStringLiteral("%1h %2m").arg(minutes / minutesPerHour).arg(minutes % minutesPerHour)
        : QStringLiteral("%1m").arg(minutes);
}

} // namespace tidewright
