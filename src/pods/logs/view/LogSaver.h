// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/store/LogStore.h"

#include <QPointer>
#include <QWidget>

#include <functional>

namespace tidewright {

class LogExport;
class LogStatusLine;

/// Saves what a logs window holds to a file, one at a time, and says in its status line what has come of it.
/// A save outlives its window. Main thread; the status line outlives it.
class LogSaver : public QObject
{
    Q_OBJECT
public:
    LogSaver(LogStatusLine &status, QWidget &window);
    ~LogSaver() override;

    bool isBusy() const;
    /// Asks for a file first. `chosen` is called with it.
    void chooseFile(
        const QString &title, const QString &name, std::function<void(const QString &path)> chosen);
    /// Writes the ranges one after another; a file that is there is replaced.
    void save(const LogBytes &bytes, std::vector<LogRange> ranges, const QString &path);

Q_SIGNALS:
    /// A save has begun, or ended.
    void busyChanged(bool busy);

private:
    LogStatusLine &m_status;
    QWidget &m_window;
    QPointer<LogExport> m_export; ///< while it runs
};

} // namespace tidewright
