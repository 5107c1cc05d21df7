// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

namespace tidewright {

/// Where a cluster serves a kind.
struct ResourcePath
{
    QString apiVersion; ///< "v1", or group and version such as "apps/v1"
    QString plural;
    bool isNamespaced = true;
    bool isWatchable = true;

    /// The path of the list, behind the path of the server's address (such as "/k8s/clusters/c-1", of servers
    /// that many clusters share: `kubectl get --raw` leaves it out). `nameSpace` is a name, or
    /// `allNamespaces`.
    QString listPath(const QString &server, const QString &nameSpace) const;

    bool operator==(const ResourcePath &) const = default;
};

/// What follows the other parameters of a list or watch; empty for an empty selector.
QString labelSelectorQuery(const QString &selector);

/// The paths of one cluster, for all tables: where the kinds stand on nearly every server until the cluster
/// has been asked, and from then on what it said. Main thread.
class ResourcePaths
{
public:
    /// Shared by all windows that reach this server.
    static ResourcePaths &of(const QString &server);

    /// The arguments after "kubectl" whose output `learn` reads.
    static QStringList discoveryArguments();
    /// Output of `kubectl api-resources` with all columns and no headers, in the form of any client from 1.20
    /// on: name, short names (may be missing), API version, whether namespaced, kind, verbs.
    void learn(const QByteArray &apiResources);
    bool hasLearned() const { return m_hasLearned; }

    /// `word` is what follows "kubectl get" (ResourceKind::listWord): a plural, a singular, a short name, or
    /// plural and group such as "ingresses.networking.k8s.io".
    /// Nothing when nobody knows of it.
    std::optional<ResourcePath> find(const QString &word) const;

    /// Whether a watch may be asked for the state too, which saves two runs of kubectl: an answer to a watch
    /// has come through from this server, and it has not failed to tell a state so.
    bool mayWatchState() const { return m_hasAnsweredWatch && !m_cannotWatchState; }
    void watchAnswered() { m_hasAnsweredWatch = true; }
    /// `forGood`: the server does not know of it, or tells objects in no order. Else until the next answer.
    void stateWatchFailed(bool forGood);

private:
    bool m_hasAnsweredWatch = false;
    bool m_cannotWatchState = false;
    QHash<QString, ResourcePath> m_learned; // by plural, short name and singular
    bool m_hasLearned = false;
};

} // namespace tidewright
