// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/LivePatience.h"

#include <algorithm>

namespace tidewright {

namespace {

using namespace std::chrono_literals;

constexpr auto firstPause = 1000ms;
constexpr int longestPauseDoublings = 6;
/// Most servers note the passing of time each minute (bookmarks), some only once something has changed. So
/// after this much silence the state tells whether there was nothing to say or somebody holds bytes back.
constexpr std::chrono::milliseconds firstSilence = 150s;
constexpr int longestSilenceDoublings = 4;
constexpr auto shortWatch = 5s;
constexpr int patienceWithSilence = 2;
constexpr int patience = 3; // how often something must go wrong in a row before listing is the better way

} // namespace

void LivePatience::heard()
{
    m_silences = 0;
    m_quietTimes = 0;
    m_emptyWatches = 0;
}

std::chrono::milliseconds LivePatience::failed()
{
    return firstPause * (1 << std::min(m_failures++, longestPauseDoublings));
}

void LivePatience::watchEnded(std::chrono::milliseconds lived, bool wasAnswered, bool toldVersion)
{
    if (isShort(lived) && !toldVersion) {
        ++m_emptyWatches;
    } else if (!isShort(lived) && wasAnswered) {
        m_failures = 0;
    }
}

bool LivePatience::isShort(std::chrono::milliseconds lived)
{
    return lived < shortWatch;
}

bool LivePatience::endsEveryWatch() const
{
    return m_emptyWatches >= patience;
}

LivePatience::Step LivePatience::lostState()
{
    ++m_lostStates;
    return m_lostStates > patience ? Step::GiveUp : m_lostStates == 1 ? Step::Now : Step::Later;
}

std::chrono::milliseconds LivePatience::silenceLimit() const
{
    return firstSilence * (1 << m_quietTimes);
}

bool LivePatience::compared(bool hasDiffered)
{
    if (hasDiffered) {
        return ++m_silences >= patienceWithSilence;
    }
    m_quietTimes = std::min(m_quietTimes + 1, longestSilenceDoublings);
    return false;
}

} // namespace tidewright
