// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/store/LogStore.h"

#include <optional>

/// The timestamps that `kubectl logs --timestamps` puts in front of lines, as kubelets write them: RFC 3339
/// with any number of digits behind the point, in UTC or with an offset ("2026-03-01T09:30:00.5Z"). Any
/// thread.
namespace tidewright::log_time {

inline constexpr qsizetype longestTimestamp = 35; // nine digits behind the point and +02:00

/// Since 1970. Nothing for what is no timestamp.
std::optional<qint64> nanoseconds(QByteArrayView timestamp);
/// Whether these bytes can be the begin of a timestamp; only its date and time of day are looked at.
bool fitsDate(QByteArrayView text);
/// The timestamp that a line begins with, without the blank behind it; empty when there is none.
QByteArrayView leading(QByteArrayView line);

/// What a user means by "9:30", "09:30:05" or a whole timestamp, in nanoseconds since 1970: what is missing
/// is taken from an example, the zone too. Nothing for what is no time.
std::optional<qint64> completed(const QString &text, QByteArrayView example);
/// Where the first line begins that is not older. Takes time in proportion to the log.
std::optional<qint64> firstLineSince(const LogBytes &bytes, qint64 moment);

} // namespace tidewright::log_time
