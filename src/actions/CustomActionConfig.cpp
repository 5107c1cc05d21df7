// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/CustomActionConfig.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace tidewright {

namespace {

constexpr qint64 largestFile = 1 << 20;

/// Takes the values of an object by key and notes the first that is of the wrong type.
class StrictReader
{
public:
    explicit StrictReader(QJsonObject object)
        : m_object(std::move(object))
    {
    }

    void read(const char *key, std::optional<QString> &field)
    {
        field.reset();
        if (const QJsonValue value = present(key); value.isString()) {
            field = value.toString();
        } else {
            complain(value, key, "a text");
        }
    }

    void read(const char *key, std::optional<bool> &field)
    {
        field.reset();
        if (const QJsonValue value = present(key); value.isBool()) {
            field = value.toBool();
        } else {
            complain(value, key, "true or false");
        }
    }

    void read(const char *key, std::optional<QStringList> &field)
    {
        field.reset();
        const QJsonValue value = present(key);
        const QJsonArray array = value.toArray();
        const auto isText = [](const QJsonValue &element) { return element.isString(); };
        if (value.isArray() && std::all_of(array.begin(), array.end(), isText)) {
            QStringList texts;
            for (const QJsonValue &element : array) {
                texts.append(element.toString());
            }
            field = texts;
        } else {
            complain(value, key, "an array of texts");
        }
    }

    void complain(const QString &error)
    {
        if (m_error.isEmpty()) {
            m_error = error;
        }
    }

    const QString &error() const { return m_error; }

    /// The keys that nobody has asked for.
    QStringList unknownKeys() const
    {
        QStringList keys = m_object.keys();
        keys.removeIf([this](const QString &key) { return m_asked.contains(key); });
        return keys;
    }

private:
    /// Undefined when the key is absent or null.
    QJsonValue present(const char *key)
    {
        m_asked.append(QLatin1String(key));
        const QJsonValue value = m_object.value(QLatin1String(key));
        return value.isNull() ? QJsonValue(QJsonValue::Undefined) : value;
    }

    void complain(const QJsonValue &value, const char *key, const char *expected)
    {
        if (!value.isUndefined()) {
            complain(QStringLiteral("\"%1\" is not %2").arg(QLatin1String(key), QLatin1String(expected)));
        }
    }

    QJsonObject m_object;
    QStringList m_asked;
    QString m_error;
};

} // namespace

bool CustomActionConfig::isActiveIn(const QString &context) const
{
    return !active_in_contexts || active_in_contexts->isEmpty() || active_in_contexts->contains(context);
}

CustomActionConfig::Decoded CustomActionConfig::decode(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        const QByteArray before = json.left(error.offset);
        return {std::nullopt,
            QStringLiteral("%1 at line %2, byte %3")
                .arg(error.errorString())
                .arg(before.count('\n') + 1)
                .arg(before.size() - before.lastIndexOf('\n') - 1)};
    }
    if (!document.isObject()) {
        return {std::nullopt, QStringLiteral("it is not one JSON object")};
    }
    StrictReader reader(document.object());
    CustomActionConfig config;
    std::optional<QString> scope;
    reader.read("scope", scope);
    reader.read("open_in_terminal", config.open_in_terminal);
    reader.read("use_name_matching_pattern", config.use_name_matching_pattern);
    reader.read("environment_variables", config.environment_variables);
    reader.read("show_warning_text", config.show_warning_text);
    reader.read("active_in_contexts", config.active_in_contexts);
    reader.read("is_smart_action", config.is_smart_action);
    reader.read("reads_only", config.reads_only);
    reader.read("once_per_namespace", config.once_per_namespace);
    if (!scope) {
        reader.complain(QStringLiteral("the required \"scope\" is missing"));
    }
    if (!reader.error().isEmpty()) {
        return {std::nullopt, reader.error()};
    }
    config.scope = *scope;
    return {config, {}, reader.unknownKeys()};
}

CustomActionConfig::Decoded CustomActionConfig::load(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile()) { // a pipe or a device would be waited for
        return {std::nullopt, QStringLiteral("it is not a file")};
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return {std::nullopt, file.errorString()};
    }
    const QByteArray json = file.read(largestFile + 1);
    if (json.size() > largestFile) {
        return {std::nullopt, QStringLiteral("it is larger than 1 MiB")};
    }
    return decode(json);
}

} // namespace tidewright
