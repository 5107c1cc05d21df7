// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <chrono>

namespace tidewright {

/// When a table is listed again of which a live stream tells only that something has changed: at once after a
/// quiet moment, and no oftener than listings of that cost may follow each other. Main thread.
class ListingPace : public QObject
{
    Q_OBJECT
public:
    explicit ListingPace(QObject *parent = nullptr);

    /// The cluster has told of a change.
    void changed();
    /// `isAlone`: no other listing is under way, which might bring older rows later.
    void listingBegins(bool isAlone);
    /// No listing is under way any more. One that has not ended well is not repeated by itself.
    /// `pause`: at least, before the next one.
    void listingsEnded(bool endedWell, std::chrono::milliseconds pause);
    void clear();

    /// The rows hold all that was told.
    bool isCurrent() const { return m_hasListed && !m_isOutdated; }
    /// They do, or are about to in a moment.
    bool isKeepingUp() const;
    /// The latest listing has failed, and what was told is still to be listed.
    bool hasFailed() const { return m_hasFailed; }

Q_SIGNALS:
    /// A listing is to begin now.
    void due();

private:
    void schedule();

    QTimer m_timer;
    QDeadlineTimer m_rest{0};
    bool m_hasListed = false; ///< since the stream began to tell
    bool m_isOutdated = false; ///< the rows lack a change
    bool m_isWanted = false; ///< and so does the listing under way
    bool m_isListing = false;
    bool m_hasFailed = false;
    bool m_isSlow = false;
};

} // namespace tidewright
