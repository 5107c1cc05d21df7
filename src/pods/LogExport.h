// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/LogStore.h"

#include <QObject>

#include <atomic>

namespace tidewright {

/// Writes a log to a file in the background, byte for byte. The file appears whole or not at all. Letting it
/// go before the end gives the file up.
class LogExport : public QObject
{
    Q_OBJECT
public:
    LogExport(LogBytes bytes, const QString &path, QObject *parent);
    ~LogExport() override;

    QString path() const { return m_path; }

Q_SIGNALS:
    /// Whole percents.
    void progressed(int percent);
    /// Once. `problem` is why the file could not be written, empty when it was.
    void finished(const QString &problem);

private:
    const QString m_path;
    std::shared_ptr<std::atomic<bool>> m_cancelled = std::make_shared<std::atomic<bool>>(false);
};

} // namespace tidewright
