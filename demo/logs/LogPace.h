// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

namespace tidewright::demo {

/// Shares one rate of log lines among all open streams, and counts the lines. Safe from any thread.
class LogPace
{
public:
    /// Counts a stream as open for as long as it lives.
    class Share
    {
    public:
        explicit Share(LogPace &pace)
            : m_pace(pace)
        {
            ++m_pace.m_streams;
        }
        ~Share() { --m_pace.m_streams; }
        Share(const Share &) = delete;
        Share &operator=(const Share &) = delete;

        // Lines per second of this stream when all together may have `total`; 0 means that each goes at its
        // own leisurely pace.
        double rate(double total) const { return total > 0 ? total / m_pace.m_streams : 3.0; }

        void countLines(std::uint64_t lines) const { m_pace.m_lines += lines; }

    private:
        LogPace &m_pace;
    };

    /// Lines written to all streams since the start.
    std::uint64_t lines() const { return m_lines; }

private:
    std::atomic<int> m_streams{0};
    std::atomic<std::uint64_t> m_lines{0};
};

} // namespace tidewright::demo
