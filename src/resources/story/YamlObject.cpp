// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/story/YamlObject.h"

#include <QJsonArray>

#include <yaml-cpp/yaml.h>

namespace tidewright {

namespace {

constexpr qsizetype largestText = 8 << 20;
constexpr int mostValues = 200'000;

QString scalarText(const YAML::Node &scalar)
{
    return QString::fromStdString(scalar.Scalar());
}

/// Values of one document, up to a number of them.
class YamlValues
{
public:
    QJsonValue take(const YAML::Node &node)
    {
        if (++m_count > mostValues) {
            m_areTooMany = true;
            return {};
        }
        switch (node.Type()) {
        case YAML::NodeType::Map:
            return takeMap(node);
        case YAML::NodeType::Sequence:
            return takeList(node);
        case YAML::NodeType::Scalar:
            return takeScalar(node);
        default:
            return QJsonValue(QJsonValue::Null);
        }
    }

    bool areTooMany() const { return m_areTooMany; }

private:
    QJsonValue takeMap(const YAML::Node &node)
    {
        QJsonObject map;
        for (const auto &entry : node) {
            if (m_areTooMany) {
                break;
            }
            if (entry.first.IsScalar()) {
                map.insert(scalarText(entry.first), take(entry.second));
            }
        }
        return map;
    }

    QJsonValue takeList(const YAML::Node &node)
    {
        QJsonArray list;
        for (const YAML::Node &entry : node) {
            if (m_areTooMany) {
                break;
            }
            list.append(take(entry));
        }
        return list;
    }

    static QJsonValue takeScalar(const YAML::Node &node)
    {
        const QString text = scalarText(node);
        const bool isQuoted = node.Tag() == "!";
        if (!isQuoted && (text == QLatin1String("true") || text == QLatin1String("false"))) {
            return text == QLatin1String("true");
        }
        return text;
    }

    int m_count = 0;
    bool m_areTooMany = false;
};

} // namespace

std::optional<QJsonObject> objectOfYaml(const QByteArray &yaml)
{
    if (yaml.size() > largestText) {
        return std::nullopt;
    }
    try {
        YamlValues values;
        const QJsonValue object = values.take(YAML::Load(yaml.toStdString()));
        return object.isObject() && !values.areTooMany() ? std::optional(object.toObject()) : std::nullopt;
    } catch (const YAML::Exception &) {
        return std::nullopt;
    }
}

} // namespace tidewright
