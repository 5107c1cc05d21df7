// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/threads/MainQueue.h"
#include "pods/logs/text/LogScan.h"

namespace tidewright {

/// Takes a growing text through scans on the log queue, one part after another and one at a time. A scan ends
/// with the last whole line: the next one begins there. Main thread.
class LogScanner : public QObject
{
    Q_OBJECT
public:
    ~LogScanner() override;

    /// From the beginning; what is under way is given up.
    void restart();
    bool isScanning() const { return m_scanning; }
    /// How far the text has been looked at, in bytes.
    qint64 place() const { return m_place; }
    /// The next part of a text that has so many bytes now. None while a scan is under way, at the end, and
    /// while there is nothing but the unfinished line that the last scan came to already.
    std::optional<LogRange> next(qint64 size) const;
    /// Becomes true when nobody wants the result of the scan under way any more.
    std::shared_ptr<const std::atomic<bool>> cancelled() const { return m_cancelled; }
    /// Runs `scan` on the log queue and then `take` with what it returns on the main thread, unless there was
    /// a restart meanwhile or the scanner is gone. `take` begins with `advance`.
    template <typename Scan, typename Take> void run(Scan scan, Take take);
    /// The scan of a part has come to the end of lines at `place`.
    void advance(const LogRange &part, qint64 place);
    /// Has the unfinished line at the end looked at once more.
    void lookAgain() { m_waitingAt = -1; }

private:
    qint64 m_place = 0;
    qint64 m_span = LogScan::usualSpan;
    qint64 m_waitingAt = -1; ///< the size at which only an unfinished line was left
    bool m_scanning = false;
    quint64 m_request = 0;
    std::shared_ptr<std::atomic<bool>> m_cancelled = std::make_shared<std::atomic<bool>>(false);
};

template <typename Scan, typename Take> void LogScanner::run(Scan scan, Take take)
{
    m_scanning = true;
    logQueue().post([self = QPointer<LogScanner>(this), request = m_request, scan = std::move(scan),
                        take = std::move(take)]() mutable {
        postToMain(self, [request, result = scan(), take = std::move(take)](LogScanner &scanner) mutable {
            if (request == scanner.m_request) {
                take(std::move(result));
            }
        });
    });
}

} // namespace tidewright
