// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/settings/SettingsStore.h"

#include "platform/threads/DispatchQueue.h"

#include <QStringList>

namespace tidewright {

namespace {

constexpr auto patience = std::chrono::milliseconds(50);

DispatchQueue &settingsQueue()
{
    static auto *queue = new DispatchQueue("settings"); // outlives main(): its thread may wait for the disk
    return *queue;
}

struct Problems
{
    std::mutex mutex;
    std::function<void(const QString &)> handler;
    QStringList untold;
};

Problems &problems()
{
    static auto *instance = new Problems;
    return *instance;
}

void tellProblem(const QString &problem)
{
    Problems &all = problems();
    const std::lock_guard lock(all.mutex);
    if (all.handler) {
        all.handler(problem);
    } else {
        all.untold.append(problem);
    }
}

} // namespace

void setSettingsProblemHandler(std::function<void(const QString &)> handler)
{
    Problems &all = problems();
    const std::lock_guard lock(all.mutex);
    all.handler = std::move(handler);
    if (all.handler) {
        for (const QString &problem : std::as_const(all.untold)) {
            all.handler(problem);
        }
        all.untold.clear();
    }
}

SettingsStore::SettingsStore(const QString &path)
    : m_file(path)
{
}

void SettingsStore::start()
{
    const std::lock_guard lock(m_mutex);
    m_identity = m_file.identity();
    const SettingsFile::Content content = m_file.read();
    m_values = content.values;
    m_hasLostValues = !content.reason.isEmpty();
    if (m_hasLostValues) {
        startWriter();
    }
}

QJsonValue SettingsStore::value(const QString &key)
{
    const std::lock_guard lock(m_mutex);
    const auto pending = m_pending.constFind(key);
    if (pending != m_pending.cend()) {
        return *pending;
    }
    refresh();
    return m_values.value(key);
}

/// Takes over what another process wrote. A file that is no longer sound may just be in an editor's hands:
/// its last values hold until the next change has to deal with it.
void SettingsStore::refresh()
{
    const FileIdentity identity = m_file.identity();
    if (identity == m_identity) {
        return;
    }
    m_identity = identity;
    const SettingsFile::Content content = m_file.read();
    if (content.reason.isEmpty()) {
        m_values = content.values;
    }
}

void SettingsStore::put(const QString &key, const QJsonValue &value)
{
    std::unique_lock lock(m_mutex);
    const bool behind = !m_pending.isEmpty();
    m_pending.insert(key, value);
    startWriter();
    if (!behind) {
        m_writerStopped.wait_for(lock, patience, [this] { return !m_writing; });
    }
}

void SettingsStore::startWriter()
{
    m_again = true;
    if (!m_writing) {
        m_writing = true;
        settingsQueue().post([self = shared_from_this()] { self->write(); });
    }
}

void SettingsStore::write()
{
    std::unique_lock lock(m_mutex);
    while (std::exchange(m_again, false)) {
        const SettingsChanges changes = m_pending;
        const QJsonObject lastKnown = m_values;
        lock.unlock();
        SettingsFile::Outcome outcome = m_file.change(changes, lastKnown);
        if (!outcome.notice.isEmpty() && outcome.notice != m_lastNotice) {
            tellProblem(outcome.notice);
        }
        m_lastNotice = outcome.done ? QString() : outcome.notice;
        lock.lock();
        if (outcome.done) {
            take(changes, std::move(outcome));
        }
    }
    m_writing = false;
    m_writerStopped.notify_all();
}

void SettingsStore::take(const SettingsChanges &written, SettingsFile::Outcome outcome)
{
    m_values = std::move(outcome.values);
    m_identity = outcome.identity;
    for (auto change = written.begin(); change != written.end(); ++change) {
        const auto pending = m_pending.constFind(change.key());
        if (pending != m_pending.cend() && *pending == change.value()) {
            m_pending.erase(pending);
        }
    }
}

bool SettingsStore::flush(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    if (!m_writing && !m_pending.isEmpty()) {
        startWriter();
    }
    return m_writerStopped.wait_for(lock, limit, [this] { return !m_writing; }) && m_pending.isEmpty();
}

} // namespace tidewright
