// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/KubeTableItem.h"

#include "platform/text/DateComponents.h"
#include "platform/text/NaturalOrder.h"
#include "platform/text/Timestamp.h"

namespace tidewright {

namespace {

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;
constexpr qint64 minutesPerHour = 60;

QString unitsText(double seconds, bool approximate)
{
    if (seconds >= 0x1p63) {
        return QString(); // more than the unit formatter can count
    }
    if (seconds > day) {
        const QString days = fullDays(static_cast<qint64>(seconds / day));
        return approximate && !days.isEmpty() ? QStringLiteral("About ") + days : days;
    }
    const auto minutes = static_cast<qint64>(seconds / minute);
    return seconds > hour ? abbreviatedHours(minutes / minutesPerHour, minutes % minutesPerHour)
                          : abbreviatedMinutes(minutes);
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

QString formatAge(double seconds, bool approximate)
{
    if (!(seconds > minute)) { // not a number, too
        return QStringLiteral("<1m");
    }
    const QString text = unitsText(seconds, approximate);
    return text.isEmpty() ? QStringLiteral("--") : text;
}

} // namespace tidewright
