// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

#include <optional>

namespace tidewright {

/// Seconds since 1970-01-01T00:00:00Z of an RFC 3339 internet date-time without fractional seconds, such as
/// 2019-04-02T10:00:00Z or 2019-04-02T12:00:00+02:00; nothing for any other text. Any thread. Qt's ISO parser
/// and GLib's take more than that: fractions, missing zones, a space for the T.
std::optional<qint64> parseTimestamp(QStringView text);

/// Seconds since 1970, fractions included. A test may install a clock of its own; an empty function restores
/// the real one.
double currentTime();
void setClockForTesting(double (*clock)());

} // namespace tidewright
