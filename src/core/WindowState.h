// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Access.h"
#include "core/KubeCtl.h"

#include <QDateTime>
#include <QObject>

#include <vector>

namespace tidewright {

/// A pod's name and a container's; or what `kubectl logs` takes in their places: a target such as
/// "deploy/web" and the option `allContainers`.
struct ContainerPair
{
    QString pod;
    QString container;
    QString nameSpace = {}; ///< of the pod; empty: the one that the window shows

    bool operator==(const ContainerPair &) const = default;
};
/// What a logs window shows of containers.
enum class LogScope {
    Following, ///< what they write
    AllPods, ///< the same of all pods of the objects in the pods' places, also of those that come later
    Previous, ///< what their previous instances have written
};
/// Stands for all containers of a pod.
inline constexpr QLatin1String allContainers("--all-containers");

/// What a table needs to know of the window that shows it, and may ask it to do. Implemented by the cluster
/// window's content; lives as long as the window. Main thread only, on which also everything is answered.
class WindowState : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    virtual QString currentContext() const = 0;
    /// A namespace's name, or `allNamespaces`; empty until one is chosen.
    virtual QString currentNamespace() const = 0;
    /// The kubeconfig of the window, empty for kubectl's default.
    virtual QString kubeConfigPath() const = 0;
    virtual KubeCtl &kubeCtl() = 0;
    virtual Console *console() = 0;

    /// For commands that change something or run foreign programs: calls back once whatever is started then
    /// acts in the context and namespace that the window shows, with the empty text; or with a sentence that
    /// says why nothing may be started now (a switch under way, a kubeconfig that leads elsewhere by now);
    /// the window itself may be gone then.
    virtual void whenSettled(std::function<void(const QString &obstacle)> completion) = 0;

    /// Whether the tables follow every change as it happens, instead of listing the objects again and again.
    virtual bool liveUpdates() const { return false; }

    /// Why the tables have nothing to load from now (no context or namespace yet, a context switch under
    /// way): a sentence and perhaps details on further lines; empty when they have.
    virtual QString loadingHint() const { return {}; }
    /// Since when the window has been waiting for contexts or namespaces; invalid when it is not.
    virtual QDateTime waitingSince() const { return {}; }
    /// Tries again to get what the tables need.
    virtual void retryLoading() { }
    /// Ends that waiting.
    virtual void stopWaiting() { }

    /// Whether the user may do that in the namespace that the window shows. False only when the cluster has
    /// surely said so: who does not know answers true.
    virtual bool mayDo(const Access & /*access*/) const { return true; }

    /// Opens an object in the user's editor. The arguments are those of kubectl; it is run once the window is
    /// settled. `finished` is called once, whatever the outcome, unless the window goes first.
    virtual void startExternalEdit(const QStringList & /*arguments*/, std::function<void()> /*finished*/) { }

    /// Follows the logs of these containers in a window of its own, one more for each call.
    virtual void openLogs(const std::vector<ContainerPair> & /*containers*/, LogScope /*scope*/) { }

    /// Opens a shell in a container, in the user's terminal. A pair of pod and container by name.
    virtual void openShell(const ContainerPair & /*container*/) { }

Q_SIGNALS:
    void loadingHintChanged();
    void liveUpdatesChanged();
    /// `mayDo` may answer otherwise now.
    void accessChanged();
};

} // namespace tidewright
