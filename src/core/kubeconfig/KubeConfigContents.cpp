// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/kubeconfig/KubeConfigContents.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace tidewright {

namespace {

/// Empty when kubectl runs nothing for that user.
QStringList loginCommandOf(const QJsonObject &user)
{
    const QJsonObject exec = user[QLatin1String("exec")].toObject();
    if (const QString program = exec[QLatin1String("command")].toString(); !program.isEmpty()) {
        QStringList words;
        for (const auto variable : exec[QLatin1String("env")].toArray()) {
            words.append(variable[QLatin1String("name")].toString() + QLatin1Char('=')
                + variable[QLatin1String("value")].toString());
        }
        words.append(program);
        for (const auto argument : exec[QLatin1String("args")].toArray()) {
            words.append(argument.toString());
        }
        return words;
    }
    const QJsonObject provider
        = user[QLatin1String("auth-provider")].toObject()[QLatin1String("config")].toObject();
    const QString program = provider[QLatin1String("cmd-path")].toString();
    return program.isEmpty() ? QStringList()
                             : QStringList(program)
            + provider[QLatin1String("cmd-args")].toString().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

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
    for (const auto entry : config[QLatin1String("users")].toArray()) {
        const QStringList command = loginCommandOf(entry[QLatin1String("user")].toObject());
        if (!command.isEmpty() && !contents.loginCommands.contains(command)) {
            contents.loginCommands.append(command);
        }
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
