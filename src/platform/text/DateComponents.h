// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// English texts of whole time units, from ICU's unit names. Any thread. Empty when ICU cannot produce one.
QString fullDays(qint64 days); // "3 days"
QString abbreviatedHours(qint64 hours, qint64 minutes); // "5h 0m"
QString abbreviatedMinutes(qint64 minutes); // "59m"

} // namespace tidewright
