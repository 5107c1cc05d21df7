// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/decoding/LiveRun.h"

#include <QStringList>

#include <memory>

namespace tidewright {

class ObjectLines;
class ResourcePaths;
struct ResourceKind;

/// Where a live stream looks.
struct LivePlace
{
    QString context; ///< named to kubectl; empty: its current one
    QString server; ///< the address of the context's cluster (KubeConfigContents::server)
    QString nameSpace; ///< a name, or `allNamespaces`
    QString labelSelector = {}; ///< only objects that match it; empty: all
};

/// One child of a live stream: what it is asked, and what reads its answer.
struct LiveRequest
{
    QStringList arguments; ///< after "kubectl"; empty when the cluster has no such thing
    std::shared_ptr<LiveDecoder> decoder;
};

/// What a live stream asks kubectl for. Main thread.
class LiveRequests
{
public:
    LiveRequests(std::shared_ptr<const ResourceKind> kind, LivePlace place);

    /// Why the kind cannot be followed; empty when it can.
    QString obstacle() const { return m_obstacle; }
    /// Objects come as they are, a state apart from what changes it. Without that kubectl prints their
    /// fields, and a watch begins with the state.
    bool isRaw() const { return m_lines != nullptr; }

    /// Where the cluster has things, as far as it is known.
    ResourcePaths &paths() const;

    /// Part of a state. `before`: the page before that one; null for the first one.
    LiveRequest page(const LiveRun *before) const;
    /// What comes after that version; of a kind that is not raw, from the state on.
    LiveRequest watch(const QByteArray &version) const;
    /// The state, and then what comes after it, of a kind that is raw; without arguments when its place is
    /// not known. Servers before 1.27, and some after it, refuse.
    LiveRequest stateAndWatch() const;
    /// What `ResourcePaths::learn` takes, as the run's text.
    LiveRequest discovery() const;

private:
    LiveRequest get(const QStringList &arguments, std::shared_ptr<LiveDecoder> decoder) const;
    LiveRequest rawWatch(const QString &parameters) const;
    QString path(const QString &query) const;
    QStringList context() const;

    const std::shared_ptr<const ResourceKind> m_kind;
    const LivePlace m_place;
    std::shared_ptr<const ObjectLines> m_lines;
    QString m_obstacle;
};

} // namespace tidewright
