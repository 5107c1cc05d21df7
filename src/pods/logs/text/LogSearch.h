// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/text/LogDocument.h"

namespace tidewright {

/// Finds a pattern in what a log document shows, in the background, and goes on doing so while text arrives.
/// One match is the current one. Main thread.
class LogSearch : public QObject
{
    Q_OBJECT
public:
    /// The document outlives the search.
    /// Nobody goes through more, and each has its place to be kept.
    static constexpr qint64 mostMatches = 1'000'000;

    explicit LogSearch(LogDocument &document, QObject *parent = nullptr);

    /// Looks for something else; nothing when the pattern is empty or invalid. The first match at `origin` (a
    /// stored position) or behind becomes the current one when it is found.
    void setPattern(const LogPattern &pattern, qint64 origin);
    const LogPattern &pattern() const { return m_pattern; }
    /// Makes the next or the previous match the current one; from the last one on to the first, and back.
    void goOn(bool forward);

    qint64 count() const { return m_found.size() + static_cast<qint64>(m_inLastLine.size()); }
    /// There are more, which are not looked for.
    bool hasMore() const { return m_found.size() >= mostMatches; }
    /// Which match is the current one, from 1; 0 when none is.
    qint64 currentNumber() const;
    /// Its stored position; -1 when there is none.
    qint64 current() const { return m_current; }
    /// Lines that may hold more matches: the pattern is too complicated for them.
    qint64 cutOffLines() const { return m_cutOff + (m_isLastCutOff ? 1 : 0); }
    /// Part of the text has not been looked at yet.
    bool isSearching() const { return m_scanner.isScanning(); }

Q_SIGNALS:
    /// The count, the current match or the pattern.
    void changed();
    /// A match became the current one: it should be seen.
    void currentMoved(qint64 position);

private:
    void restart();
    void scanOn();
    void scanned(const LogRange &part, bool reachesEnd, const LogScan::Matches &matches);
    qint64 at(qint64 index) const;
    /// The index of the first match behind a position.
    qint64 upperBound(qint64 position) const;
    void moveTo(qint64 index);

    LogDocument &m_document;
    LogPattern m_pattern;
    AscendingList m_found;
    std::vector<qint64> m_inLastLine; ///< of a line that has not ended: found again with each scan
    qint64 m_cutOff = 0;
    bool m_isLastCutOff = false;
    std::optional<qint64> m_origin; ///< where the first match is still looked for
    qint64 m_current = -1;
    LogScanner m_scanner; ///< of what is shown
};

} // namespace tidewright
