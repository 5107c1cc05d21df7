// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

namespace tidewright {

/// What went wrong with a live stream in a row, and what is to be done about it. Whatever goes well is told
/// too: then it is no row any more.
class LivePatience
{
public:
    /// The child did its work.
    void succeeded() { m_failures = 0; }
    /// A watch told something, be it only that time passes.
    void heard();
    /// And that could be read.
    void understood() { m_lostStates = 0; }

    /// The child failed. How long to wait before the next one.
    std::chrono::milliseconds failed();

    /// A watch lived that long and `toldVersion`, or ended without a word.
    void watchEnded(std::chrono::milliseconds lived, bool wasAnswered, bool toldVersion);
    /// That was too short for a server's usual end.
    static bool isShort(std::chrono::milliseconds lived);
    bool endsEveryWatch() const;

    enum class Step { Now, Later, GiveUp };
    /// What came since is not known. When to fetch the whole state.
    Step lostState();

    /// After how long without a word from a watch the whole state is to be compared.
    std::chrono::milliseconds silenceLimit() const;
    /// It was. True when something on the way keeps holding back what the watch should have told.
    bool compared(bool hasDiffered);

private:
    int m_failures = 0;
    int m_emptyWatches = 0; // ended at once, without a word
    int m_silences = 0; // in which something was held back
    int m_quietTimes = 0; // in which there was nothing to say
    int m_lostStates = 0;
};

} // namespace tidewright
