// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QString>

#include <optional>

namespace tidewright {

/// What the kubeconfigs of a window hold, merged as kubectl merges them: read from the output of `kubectl
/// config view -o json`, which has the shape of a kubeconfig file (v1 Config) and leaves credentials out. A
/// plain value.
struct KubeConfigContents
{
    /// Nothing when the text is no such output.
    static std::optional<KubeConfigContents> parse(const QByteArray &json);

    bool hasContext(const QString &context) const { return contexts.contains(context); }
    /// The namespace of a context, "default" when it names none.
    QString nameSpace(const QString &context) const;
    /// The server that a context leads to; empty when the kubeconfig does not know.
    QString server(const QString &context) const;
    /// Equal for as long as a context leads to the same cluster as the same user; empty without that context.
    QString destination(const QString &context) const;

    QString current; ///< the current context; empty when there is none
    QMap<QString, QJsonObject> contexts; ///< the stanza of each: "cluster", "user", "namespace", "extensions"
    QMap<QString, QString> servers; ///< the address of each cluster
    /// What kubectl runs by itself to log users in, each once: variables as NAME=VALUE, the program, its
    /// arguments. From `exec` and, for old clients, the `cmd-path` of an `auth-provider`.
    QList<QStringList> loginCommands;
};

} // namespace tidewright
