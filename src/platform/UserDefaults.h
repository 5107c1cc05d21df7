// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QString>

#include <optional>

namespace tidewright {

/// The user's settings: named values in one JSON file of the XDG configuration folder. A value that was never
/// written, or that has another type than the one asked for, is absent; every reader has its own fallback. A
/// write replaces the whole value of its key and is in the file when the call returns. Main thread.
class UserDefaults
{
public:
    using Dictionary = QMap<QString, QString>;

    /// The settings in the file at `path`, which need not exist yet.
    explicit UserDefaults(const QString &path);

    std::optional<QString> string(const QString &key) const;
    /// Absent also when any of its values is not a text.
    std::optional<Dictionary> dictionary(const QString &key) const;
    std::optional<QByteArray> data(const QString &key) const;

    void set(const QString &key, const QString &value);
    void set(const QString &key, const Dictionary &value);
    void set(const QString &key, const QByteArray &value);
    void remove(const QString &key);

private:
    void store(const QString &key, const QJsonValue &value);

    QString m_path;
    QJsonObject m_values;
};

/// The settings of this user, in com.brindle.Tidewright/settings.json.
UserDefaults &userDefaults();
/// Puts other settings in their place; null restores the user's own. They must outlive their use.
void setUserDefaultsForTesting(UserDefaults *settings);

} // namespace tidewright
