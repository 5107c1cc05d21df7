// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/UserDefaults.h"

#include "platform/Diagnostics.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>
#include <QStandardPaths>

namespace tidewright {

namespace {

// JSON has no bytes: they stand as ["base64", TEXT], which no other value looks like.
const auto dataMark = QStringLiteral("base64");

UserDefaults *&replacement()
{
    static UserDefaults *settings = nullptr;
    return settings;
}

/// Nothing when the file is there but does not hold settings.
std::optional<QJsonObject> readSettings(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return QJsonObject();
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

} // namespace

UserDefaults::UserDefaults(const QString &path)
    : m_path(path)
    , m_values(readSettings(path).value_or(QJsonObject()))
{
}

std::optional<QString> UserDefaults::string(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<UserDefaults::Dictionary> UserDefaults::dictionary(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    if (!value.isObject()) {
        return std::nullopt;
    }
    Dictionary result;
    const QJsonObject object = value.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (!entry.value().isString()) {
            return std::nullopt;
        }
        result.insert(entry.key(), entry.value().toString());
    }
    return result;
}

std::optional<QByteArray> UserDefaults::data(const QString &key) const
{
    const QJsonArray array = m_values.value(key).toArray();
    if (array.size() != 2 || array.first().toString() != dataMark) {
        return std::nullopt;
    }
    return QByteArray::fromBase64(array.last().toString().toLatin1());
}

void UserDefaults::set(const QString &key, const QString &value)
{
    store(key, value);
}

void UserDefaults::set(const QString &key, const Dictionary &value)
{
    QJsonObject object;
    for (auto entry = value.begin(); entry != value.end(); ++entry) {
        object.insert(entry.key(), entry.value());
    }
    store(key, object);
}

void UserDefaults::set(const QString &key, const QByteArray &value)
{
    store(key, QJsonArray{dataMark, QString::fromLatin1(value.toBase64())});
}

void UserDefaults::remove(const QString &key)
{
    store(key, QJsonValue(QJsonValue::Undefined));
}

void UserDefaults::store(const QString &key, const QJsonValue &value)
{
    if (const auto current = readSettings(m_path)) {
        m_values = *current;
    } else {
        QFile::rename(
            m_path, m_path + QLatin1String(".unreadable")); // whatever it holds, it is not ours to discard
    }
    m_values.insert(key, value); // an undefined value removes the key
    QDir().mkpath(QFileInfo(m_path).path());
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)
        || file.write(QJsonDocument(m_values).toJson()) < 0 || !file.commit()) {
        writeDiagnostic(QLatin1String("Unable to write settings: ") + file.errorString());
    }
}

UserDefaults &userDefaults()
{
    if (replacement()) {
        return *replacement();
    }
    static UserDefaults settings(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QLatin1String("/com.brindle.Tidewright/settings.json"));
    return settings;
}

void setUserDefaultsForTesting(UserDefaults *settings)
{
    replacement() = settings;
}

} // namespace tidewright
