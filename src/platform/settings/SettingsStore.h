// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/settings/SettingsFile.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace tidewright {

/// The settings in memory and on their way to the file. A value that was put here is seen by every reader at
/// once; a thread of its own brings it to the file, the latest value of each key only. What cannot be written
/// stays in memory and is tried again with the next change. Any thread. Held by shared pointer, because the
/// writer may still wait for the disk when the owner goes.
class SettingsStore : public std::enable_shared_from_this<SettingsStore>
{
public:
    explicit SettingsStore(const QString &path);

    /// To be called once, right after construction: has a damaged file set aside.
    void start();

    /// The value of a key, as the file has it now unless a change is on its way; undefined when there is
    /// none.
    QJsonValue value(const QString &key);
    /// An undefined value removes the key. Usually the change is in the file when this returns; a slow disk
    /// is waited for only for a moment (50 ms), and not at all while earlier changes still wait for it.
    void put(const QString &key, const QJsonValue &value);

    /// Waits until every change is in the file, at most so long; false when some are not.
    bool flush(std::chrono::milliseconds limit);

private:
    void refresh();
    void startWriter();
    void write();
    void take(const SettingsChanges &written, SettingsFile::Outcome outcome);

    const SettingsFile m_file;
    std::mutex m_mutex; // never held while the disk is written
    std::condition_variable m_writerStopped;
    QJsonObject m_values;
    FileIdentity m_identity;
    SettingsChanges m_pending;
    QString m_lastNotice;
    bool m_writing = false;
    bool m_again = false;
};

/// Receives what went wrong with the settings, a sentence at a time, on any thread; what came before is
/// delivered at once. Each trouble is told once, not with every change that meets it.
void setSettingsProblemHandler(std::function<void(const QString &problem)> handler);

} // namespace tidewright
