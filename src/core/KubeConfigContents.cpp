// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/KubeConfigContents.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace tidewright {

std::optional<KubeConfigContents> KubeConfigContents::parse(const QByteArray &json)
{
    const QJsonObject config = QJsonDocument::fromJson(json).object();
    if (config[QLatin1String("kind")].toString() != QLatin1String("Config")) {
        return std::nullopt;
    }
    KubeConfigContents contents;
    contents.current = config[QLatin1String("current-context")].toString();
    for (const auto entry : config[QLatin1String("contexts")].toArray()) {
        contents.contexts.insert(
            entry[QLatin1String("name")].toString(), entry[QLatin1String("context")].toObject());
    }
    for (const auto entry : config[QLatin1String("clusters")].toArray()) {
        contents.servers.insert(entry[QLatin1String("name")].toString(),
            entry[QLatin1String("cluster")][QLatin1String("server")].toString());
    }
    return contents;
}

QString KubeConfigContents::nameSpace(const QString &context) const
{
    const QString named = contexts.value(context)[QLatin1String("namespace")].toString();
    return named.isEmpty() ? QStringLiteral("default") : named;
}

QString KubeConfigContents::server(const QString &context) const
{
    return servers.value(contexts.value(context)[QLatin1String("cluster")].toString());
}

QString KubeConfigContents::destination(const QString &context) const
{
    if (!hasContext(context)) {
        return {};
    }
    const QJsonObject stanza = contexts.value(context);
    return QStringList{stanza[QLatin1String("cluster")].toString(), stanza[QLatin1String("user")].toString(),
        server(context)}
        .join(QLatin1Char('\n'));
}

} // namespace tidewright
