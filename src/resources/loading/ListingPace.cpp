// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/loading/ListingPace.h"

#include <algorithm>

namespace tidewright {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds shortestPause = 1s;
/// A pause after which nobody would call the rows live.
constexpr std::chrono::milliseconds longPause = 3s;

} // namespace

ListingPace::ListingPace(QObject *parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ListingPace::schedule);
}

void ListingPace::changed()
{
    m_isOutdated = true;
    m_isWanted = true;
    schedule();
}

void ListingPace::listingBegins(bool isAlone)
{
    m_timer.stop();
    m_isListing = true;
    if (isAlone) {
        m_isWanted = false;
    }
}

void ListingPace::listingsEnded(bool endedWell, std::chrono::milliseconds pause)
{
    m_isListing = false;
    m_hasFailed = m_isOutdated && !endedWell;
    m_isWanted = m_isWanted || m_hasFailed;
    m_hasListed = m_hasListed || (m_isOutdated && !m_isWanted);
    m_isOutdated = m_isWanted;
    m_isSlow = pause > longPause;
    m_rest.setRemainingTime(std::max(pause, shortestPause));
    schedule();
}

void ListingPace::clear()
{
    m_timer.stop();
    m_hasListed = m_isOutdated = m_isWanted = m_hasFailed = false;
}

bool ListingPace::isKeepingUp() const
{
    return m_hasListed && !(m_isOutdated && (m_isSlow || m_hasFailed));
}

void ListingPace::schedule()
{
    if (!m_isWanted || m_isListing || m_hasFailed) {
        return;
    }
    if (const auto rest = m_rest.remainingTimeAsDuration(); rest > 0ns) {
        m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(rest));
    } else {
        Q_EMIT due();
    }
}

} // namespace tidewright
