// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Time.h"

#include <ctime>

namespace tidewright::demo {

Seconds now()
{
    return std::time(nullptr);
}

std::string timestamp(Seconds time)
{
    const std::time_t value = time;
    std::tm parts{};
    gmtime_r(&value, &parts);
    char buffer[32];
    const size_t length = std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return {buffer, length};
}

Seconds parseTimestamp(const std::string &text)
{
    std::tm parts{};
    const char *end = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
    return end ? timegm(&parts) : 0;
}

std::string shortAge(Seconds seconds)
{
    if (seconds < 120) {
        return std::to_string(seconds < 0 ? 0 : seconds) + "s";
    }
    if (seconds < 180 * 60) {
        return std::to_string(seconds / 60) + "m";
    }
    if (seconds < 48 * 3600) {
        return std::to_string(seconds / 3600) + "h";
    }
    return std::to_string(seconds / 86400) + "d";
}

} // namespace tidewright::demo
