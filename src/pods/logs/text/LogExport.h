// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/store/LogStore.h"

#include <QEventLoopLocker>
#include <QObject>

#include <atomic>

namespace tidewright {

/// Writes a log, or parts of it, to a file in the background, byte for byte. The file appears whole or not at
/// all. Belongs to the application and goes by itself behind the end; until then the application does not end
/// because its last window was closed. When the application ends all the same, the file is given up, which is
/// said on standard output. Main thread.
class LogExport : public QObject
{
    Q_OBJECT
public:
    /// The ranges are written one after another.
    LogExport(LogBytes bytes, std::vector<LogRange> ranges, const QString &path);
    ~LogExport() override;

    QString path() const { return m_path; }
    /// Nobody shows the outcome any more: a failure is told in the main window's console.
    void leaveAlone();

Q_SIGNALS:
    /// Whole percents.
    void progressed(int percent);
    /// Once. `problem` is why the file could not be written, empty when it was.
    void finished(const QString &problem);

private:
    void end(const QString &problem);

    const QEventLoopLocker m_keepsRunning;
    bool m_ended = false;
    const QString m_path;
    std::shared_ptr<std::atomic<bool>> m_cancelled = std::make_shared<std::atomic<bool>>(false);
};

} // namespace tidewright
