// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Shell.h"

namespace tidewright {

/// The pseudo-namespace of a window that shows every namespace. It never reaches the kubeconfig.
inline const QString allNamespaces = QStringLiteral("All Namespaces");

/// "--all-namespaces" for the pseudo-namespace, else "-n" immediately followed by the name, as one argument.
QString namespaceArgument(const QString &currentNamespace);
/// "--context=" immediately followed by the name, as one argument.
QString contextArgument(const QString &context);

/// The one object through which a cluster window reaches its cluster: it hands the window's kubeconfig to
/// every kubectl child and knows the contexts and namespaces. Main thread; each operation runs on a shell of
/// its own, which it returns so that the caller can cancel it. Failures go to the main window's console, as
/// errors without a command; a run that was cancelled is no failure, but completes like one.
class KubeCtl
{
public:
    using ContextsLoaded = std::function<void(const QStringList &contexts, const QString &current)>;
    using NamespacesLoaded = std::function<void(const QStringList &namespaces)>;
    /// kubectl's error text, perhaps empty.
    using Failed = std::function<void(const QString &error)>;
    using ContextUsed = std::function<void(bool success)>;
    using NamespaceSet = std::function<void(bool success)>;

    /// The window's kubeconfig file; empty means kubectl's own default.
    QString configPath;

    /// A shell whose children use the window's kubeconfig.
    std::shared_ptr<Shell> makeShell() const;

    /// The contexts in the kubeconfig's order, and the current one (empty when the kubeconfig names none).
    /// Completes on a shell-queue thread; when there is no context at all, `failed` is called there instead.
    std::shared_ptr<Shell> loadContexts(ContextsLoaded completion, Failed failed = {}) const;

    /// The namespaces of the kubeconfig's current context, empty after a failure, which `failed` is told of
    /// just before. Completes on a shell-queue thread.
    std::shared_ptr<Shell> loadNamespaces(NamespacesLoaded completion, Failed failed = {}) const;

    /// Makes a context current in the kubeconfig; an empty name does nothing at all and yields no shell.
    /// Completes with true on the main thread, with false on a shell-queue thread.
    std::shared_ptr<Shell> useContext(const QString &name, ContextUsed completion) const;

    /// Sets the namespace of the kubeconfig's current context. The pseudo-namespace is only recorded, without
    /// a shell. Completes on the main thread.
    std::shared_ptr<Shell> setNamespace(const QString &name, NamespaceSet completion = {}) const;
};

} // namespace tidewright
