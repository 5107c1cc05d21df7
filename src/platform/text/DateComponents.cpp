// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/DateComponents.h"

#include <unicode/measunit.h>
#include <unicode/numberformatter.h>

namespace tidewright {

namespace {

using icu::number::LocalizedNumberFormatter;

LocalizedNumberFormatter formatter(const icu::MeasureUnit &unit, UNumberUnitWidth width)
{
    return icu::number::NumberFormatter::withLocale(icu::Locale::getEnglish()).unit(unit).unitWidth(width);
}

QString text(const LocalizedNumberFormatter &format, qint64 count)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString formatted = format.formatInt(count, status).toString(status);
    return U_FAILURE(status) ? QString() : QString::fromUtf16(formatted.getBuffer(), formatted.length());
}

} // namespace

QString fullDays(qint64 days)
{
    static const LocalizedNumberFormatter format
        = formatter(icu::MeasureUnit::getDay(), UNUM_UNIT_WIDTH_FULL_NAME);
    return text(format, days);
}

QString abbreviatedMinutes(qint64 minutes)
{
    static const LocalizedNumberFormatter format
        = formatter(icu::MeasureUnit::getMinute(), UNUM_UNIT_WIDTH_NARROW);
    return text(format, minutes);
}

QString abbreviatedHours(qint64 hours, qint64 minutes)
{
    static const LocalizedNumberFormatter format
        = formatter(icu::MeasureUnit::getHour(), UNUM_UNIT_WIDTH_NARROW);
    const QString hourText = text(format, hours);
    const QString minuteText = abbreviatedMinutes(minutes);
    return hourText.isEmpty() || minuteText.isEmpty() ? QString() : hourText + QLatin1Char(' ') + minuteText;
}

} // namespace tidewright
