// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/settings/SettingsStore.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>

namespace tidewright {

/// The user's settings: named values in one JSON file of the XDG configuration folder. A value that was never
/// written, or that has another type than the one asked for, is absent; every reader has its own fallback. A
/// write replaces the whole value of its key and nothing else, whatever other instances of the program write
/// meanwhile; their changes are seen by the next reading. Every reader sees a write at once; the file has it
/// when the call returns, or a little later when the disk is slow. Trouble is told to the handler of
/// setSettingsProblemHandler(). Any thread.
class UserDefaults
{
public:
    using Dictionary = QMap<QString, QString>;

    /// The settings in the file at `path`, which need not exist yet.
    explicit UserDefaults(const QString &path);
    UserDefaults(UserDefaults &&other) noexcept = default;
    UserDefaults &operator=(UserDefaults &&other) noexcept;
    /// Waits for the disk, but not for long.
    ~UserDefaults();

    std::optional<QString> string(const QString &key) const;
    /// Absent also when any of its values is not a text.
    std::optional<Dictionary> dictionary(const QString &key) const;
    /// Bytes, which stand in the file as ["base64", TEXT].
    std::optional<QByteArray> data(const QString &key) const;

    void set(const QString &key, const QString &value);
    void set(const QString &key, const Dictionary &value);
    void set(const QString &key, const QByteArray &value);
    void remove(const QString &key);

    /// For the end of the program: waits until the file has every change, at most so long; false when some
    /// are not in it.
    bool flush(std::chrono::milliseconds limit = std::chrono::seconds(2)) const;

private:
    std::shared_ptr<SettingsStore> m_store;
};

/// The settings of this user, in the file that userSettingsFile() names.
UserDefaults &userDefaults();
/// com.brindle.Tidewright/settings.json in the XDG configuration folder, which need not exist.
QString userSettingsFile();
/// Puts other settings in their place; null restores the user's own. They must outlive their use.
void setUserDefaultsForTesting(UserDefaults *settings);

} // namespace tidewright
