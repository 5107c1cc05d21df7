// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/Timestamp.h"

#include <QChar>

#include <atomic>
#include <chrono>

namespace tidewright {

namespace {

std::atomic<double (*)()> testClock = nullptr;

/// The number that exactly `digits` ASCII digits at `position` spell, or nothing.
std::optional<int> number(QStringView text, qsizetype position, qsizetype digits)
{
    int value = 0;
    for (const QChar c : text.sliced(position, digits)) {
        if (c < u'0' || c > u'9') {
            return std::nullopt;
        }
        value = value * 10 + (c.unicode() - u'0');
    }
    return value;
}

/// Seconds east of UTC that "Z" or "+02:00" names.
std::optional<int> zoneOffset(QStringView zone)
{
    if (zone == u"Z") {
        return 0;
    }
    if (zone.size() != 6 || (zone[0] != u'+' && zone[0] != u'-') || zone[3] != u':') {
        return std::nullopt;
    }
    const auto hours = number(zone, 1, 2);
    const auto minutes = number(zone, 4, 2);
    if (!hours || !minutes || *hours > 23 || *minutes > 59) {
        return std::nullopt;
    }
    const int seconds = (*hours * 60 + *minutes) * 60;
    return zone[0] == u'-' ? -seconds : seconds;
}

} // namespace

std::optional<qint64> parseTimestamp(QStringView text)
{
    using namespace std::chrono;
    constexpr qsizetype zoneStart = 19;
    if (text.size() <= zoneStart || text[4] != u'-' || text[7] != u'-' || text[10] != u'T' || text[13] != u':'
        || text[16] != u':') {
        return std::nullopt;
    }
    const auto y = number(text, 0, 4);
    const auto mo = number(text, 5, 2);
    const auto d = number(text, 8, 2);
    const auto h = number(text, 11, 2);
    const auto mi = number(text, 14, 2);
    const auto s = number(text, 17, 2);
    const auto offset = zoneOffset(text.sliced(zoneStart));
    if (!y || !mo || !d || !h || !mi || !s || !offset || *h > 23 || *mi > 59 || *s > 59) {
        return std::nullopt;
    }
    const year_month_day date{year(*y), month(static_cast<unsigned>(*mo)), day(static_cast<unsigned>(*d))};
    if (!date.ok()) {
        return std::nullopt;
    }
    const auto days = sys_days(date).time_since_epoch();
    return duration_cast<seconds>(days).count() + (*h * 60 + *mi) * 60 + *s - *offset;
}

double currentTime()
{
    if (auto *clock = testClock.load()) {
        return clock();
    }
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

void setClockForTesting(double (*clock)())
{
    testClock = clock;
}

} // namespace tidewright
