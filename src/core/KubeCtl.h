// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CommandGate.h"
#include "core/PlaceArguments.h"
#include "core/kubeconfig/KubeConfigFiles.h"
#include "core/kubeconfig/KubeConfigReading.h"
#include "core/kubeconfig/KubeConfigView.h"
#include "core/running/Shell.h"

namespace tidewright {

/// What a program gets that is not kubectl: a view of its own in front of the kubeconfig, to be held until it
/// has read it for the last time.
struct KubeConfigCopy
{
    QString kubeConfig; ///< the value of KUBECONFIG
    std::shared_ptr<const KubeConfigView> view;
    QString problem = {}; ///< why there is none: a sentence; then nothing may be started
};

/// The one object through which a cluster window reaches its cluster. It knows the window's kubeconfig and
/// its view of it, which stands in front of it in the environment of every child, so that what names no
/// context and no namespace acts where the window does. Main thread; each operation runs on a shell of its
/// own, which it returns so that the caller can cancel it. Failures go to the main window's console, as
/// errors without a command; a run that was cancelled is no failure, but completes like one.
///
/// Until `adopt` was called there is no view, and children get the user's kubeconfig alone. From then on
/// every child passes the gate of the context's policy (CommandGate); those on the user's own kubeconfig do
/// not.
class KubeCtl
{
public:
    using ContextsLoaded = std::function<void(const QStringList &contexts, const QString &current)>;
    using NamespacesLoaded = std::function<void(const QStringList &namespaces)>;
    /// kubectl's error text, perhaps empty.
    using Failed = std::function<void(const QString &error)>;
    using ContextUsed = std::function<void(bool success)>;
    using NamespaceSet = std::function<void(bool success)>;
    using KubeConfigRead = std::function<void(const std::optional<KubeConfigContents> &contents)>;

    KubeCtl();

    /// The window's kubeconfig: a path, or a list of them separated by colons; empty means kubectl's own
    /// default.
    QString configPath;
    /// A sentence while nothing may be started that could reach a cluster or log in: shells then refuse with
    /// it. Empty otherwise.
    QString closedBecause;

    /// What the kubeconfig held when it was read last.
    const KubeConfigContents &contents() const { return m_place->contents; }
    /// Null without one.
    std::shared_ptr<const KubeConfigView> view() const { return m_place->view; }
    /// Takes a context of the kubeconfig, with its own namespace, for the place of all children to come. An
    /// empty one leads nowhere.
    void adopt(const KubeConfigContents &contents, const QString &context);

    /// Where its children act, for the gate that they have to pass; without a view nowhere known.
    StartingPlace startingPlace() const;
    /// A shell whose children act where the window does: they use the view as it is now, whatever it is
    /// replaced by.
    std::shared_ptr<Shell> makeShell() const;
    /// The same for programs that may themselves switch the context, which then switch only themselves.
    std::shared_ptr<Shell> makeForeignShell() const;
    /// A shell whose children use the user's own kubeconfig and nothing else.
    std::shared_ptr<Shell> makePlainShell() const;
    /// Acts in `nameSpace`; where it is empty, in the window's.
    KubeConfigCopy makeCopy(KubeConfigView::Lifetime lifetime = KubeConfigView::Lifetime::WithHolder,
        const QString &nameSpace = {}) const;

    /// The contexts in the kubeconfig's order, and the current one (empty when the kubeconfig names none). It
    /// is the user's kubeconfig that is asked. Completes on a shell-queue thread; when there is no context at
    /// all, `failed` is called there instead.
    std::shared_ptr<Shell> loadContexts(ContextsLoaded completion, Failed failed = {}) const;

    /// Reads the user's kubeconfig, untold. Completes on the main thread, with nothing when kubectl could not
    /// read it.
    std::shared_ptr<Shell> readKubeConfig(KubeConfigRead completion) const;

    /// The namespaces of the current context, empty after a failure, which `failed` is told of just before.
    /// Completes on a shell-queue thread.
    std::shared_ptr<Shell> loadNamespaces(
        NamespacesLoaded completion, Failed failed = {}, int niceness = 0) const;

    /// Makes a context current in a new view, as the kubeconfig has it by now, which takes the old one's
    /// place. Done only when kubectl ended well and the view reads back so. An empty name does nothing at all
    /// and yields no shell. Completes with true on the main thread, with false on a shell-queue thread, or on
    /// the main thread when a later change has superseded this one.
    std::shared_ptr<Shell> useContext(const QString &name, ContextUsed completion) const;

    /// Sets the namespace of the current context, in the same way. The pseudo-namespace is only recorded,
    /// without a shell; an empty name fails without one. Completes on the main thread.
    std::shared_ptr<Shell> setNamespace(const QString &name, NamespaceSet completion = {}) const;

private:
    struct Place
    {
        KubeConfigContents contents;
        std::shared_ptr<const KubeConfigView> view;
        QString problem; ///< why there is no view that could be used
        quint64 changes = 0;
    };
    using View = std::shared_ptr<const KubeConfigView>;
    struct Change;

    std::shared_ptr<Shell> shellFor(const KubeConfigCopy &copy) const;
    QString obstacle() const;
    bool usesView() const { return m_place->view || !m_place->problem.isEmpty(); }

    std::shared_ptr<Place> m_place;
};

} // namespace tidewright
