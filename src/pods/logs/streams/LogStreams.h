// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/running/Shell.h"
#include "pods/logs/streams/LogIntake.h"
#include "pods/logs/streams/LogSource.h"
#include "pods/logs/streams/LogTimestamps.h"

#include <QObject>
#include <QTimer>

namespace tidewright {

/// The children of a logs window: one `kubectl logs` at a time for each source, and how they are doing. Main
/// thread.
class LogStreams : public QObject
{
    Q_OBJECT
public:
    LogStreams();
    ~LogStreams() override;

    /// In the order in which they were added.
    const std::vector<LogSource> &sources() const { return m_sources; }
    LogSource &source(int index) { return m_sources[static_cast<std::size_t>(index)]; }
    int count() const { return static_cast<int>(m_sources.size()); }
    /// The latest of each source; null where none was started.
    const std::vector<std::shared_ptr<Shell>> &shells() const { return m_shells; }
    bool hasRunning() const;

    /// Adds a source that waits for its first stream, and returns its index (0 to 65535).
    int add();
    /// Starts the stream of a source that has none, or whose last one has ended. With `timestamps`, what
    /// arrives goes through them.
    void start(int source, std::shared_ptr<Shell> shell, const QStringList &arguments,
        std::shared_ptr<LogTimestamps> timestamps = {});
    /// Ends all children; the sources end by that.
    void cancel();
    /// Ends all children and forgets the sources, and what they have written that has not arrived.
    void forget();
    /// While that says so, what arrives is left waiting, and then the children have to.
    void setHeldUp(std::function<bool()> isHeldUp) { m_isHeldUp = std::move(isHeldUp); }
    /// For good: ends all children, and says so of each that ran. Nothing arrives any more.
    void close();

Q_SIGNALS:
    /// A piece of output: any bytes, as a rule UTF-8.
    void arrived(int source, const QByteArray &bytes);
    /// Something about these sources has changed; `isNews` when it is for the user to see.
    void changed(const QList<int> &sources, bool isNews);

private:
    void renewIntake();
    void takePieces();

    std::vector<LogSource> m_sources;
    std::vector<std::shared_ptr<Shell>> m_shells;
    std::shared_ptr<LogIntake> m_intake;
    std::function<bool()> m_isHeldUp;
    QTimer m_later;
    bool m_closed = false;
};

} // namespace tidewright
