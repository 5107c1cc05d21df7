// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/settings/UserDefaults.h"

#include <QJsonArray>
#include <QStandardPaths>

#include <atomic>

namespace tidewright {

namespace {

// JSON has no bytes: they stand as ["base64", TEXT], which no other value looks like.
const auto dataMark = QStringLiteral("base64");

std::atomic<UserDefaults *> &replacement()
{
    static std::atomic<UserDefaults *> settings = nullptr;
    return settings;
}

} // namespace

UserDefaults::UserDefaults(const QString &path)
    : m_store(std::make_shared<SettingsStore>(path))
{
    m_store->start();
}

UserDefaults &UserDefaults::operator=(UserDefaults &&other) noexcept
{
    std::swap(m_store, other.m_store);
    return *this;
}

UserDefaults::~UserDefaults()
{
    if (m_store) {
        flush();
    }
}

std::optional<QString> UserDefaults::string(const QString &key) const
{
    const QJsonValue value = m_store->value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<UserDefaults::Dictionary> UserDefaults::dictionary(const QString &key) const
{
    const QJsonValue value = m_store->value(key);
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
    const QJsonArray array = m_store->value(key).toArray();
    if (array.size() != 2 || array.first().toString() != dataMark || !array.last().isString()) {
        return std::nullopt;
    }
    const auto bytes = QByteArray::fromBase64Encoding(
        array.last().toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return bytes ? std::optional(bytes.decoded) : std::nullopt;
}

void UserDefaults::set(const QString &key, const QString &value)
{
    m_store->put(key, value);
}

void UserDefaults::set(const QString &key, const Dictionary &value)
{
    QJsonObject object;
    for (auto entry = value.begin(); entry != value.end(); ++entry) {
        object.insert(entry.key(), entry.value());
    }
    m_store->put(key, object);
}

void UserDefaults::set(const QString &key, const QByteArray &value)
{
    m_store->put(key, QJsonArray{dataMark, QString::fromLatin1(value.toBase64())});
}

void UserDefaults::remove(const QString &key)
{
    m_store->put(key, QJsonValue(QJsonValue::Undefined));
}

bool UserDefaults::flush(std::chrono::milliseconds limit) const
{
    return m_store->flush(limit);
}

UserDefaults &userDefaults()
{
    if (UserDefaults *settings = replacement()) {
        return *settings;
    }
    static UserDefaults settings(userSettingsFile());
    return settings;
}

QString userSettingsFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QLatin1String("/com.brindle.Tidewright/settings.json");
}

void setUserDefaultsForTesting(UserDefaults *settings)
{
    replacement() = settings;
}

} // namespace tidewright
