// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace tidewright::demo {

/// Seconds since 1970, UTC.
using Seconds = std::int64_t;

Seconds now();

/// RFC 3339 without fractions, as in 2024-05-01T10:00:00Z.
std::string timestamp(Seconds time);

/// The opposite; 0 when the text is not such a timestamp.
Seconds parseTimestamp(const std::string &text);

/// Short age as kubectl's own tables print it: 45s, 12m, 3h, 41d.
std::string shortAge(Seconds seconds);

} // namespace tidewright::demo
