// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/text/LogPattern.h"

namespace tidewright {

/// Which lines of a log are shown: those that a pattern is in, perhaps with some around them, or all others.
/// No pattern shows all. Immutable and cheap to copy; any thread.
class LogFilter
{
public:
    /// `around` is how many lines before and behind a matching one are shown as well; none when matching
    /// lines are those left out.
    LogFilter(LogPattern pattern = {}, bool excludes = false, int around = 0)
        : m_pattern(std::move(pattern))
        , m_excludes(excludes)
        , m_around(excludes ? 0 : around)
    {
    }

    bool isEmpty() const { return m_pattern.isEmpty(); }
    bool isValid() const { return m_pattern.isValid(); }
    const LogPattern &pattern() const { return m_pattern; }
    bool excludes() const { return m_excludes; }
    int around() const { return m_around; }

    friend bool operator==(const LogFilter &, const LogFilter &) = default;

private:
    LogPattern m_pattern;
    bool m_excludes = false;
    int m_around = 0;
};

} // namespace tidewright
