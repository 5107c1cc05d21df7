// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/kubeconfig/KubeConfigContents.h"
#include "platform/process/FileDescriptor.h"

#include <memory>

namespace tidewright {

/// A place to act in, for children: a small kubeconfig file, private to this user, that names one current
/// context and carries its stanza with one namespace. It stands in front of the window's own files in
/// KUBECONFIG; kubectl merges them and the first wins, so that a command that names no context and no
/// namespace acts there, whatever the user's own file says, and changes of the current context land in it. No
/// credentials are in it.
///
/// Nobody but the child it was made for ever changes the file, and it goes with the last holder: a child
/// keeps the place it was started in. Behind a program that may have left others running, which read it once
/// more, stands a file that leads nowhere. Any thread.
class KubeConfigView
{
public:
    enum class Holds {
        OneContext,
        AllContexts, ///< for programs that may switch: kubectl writes a stanza back to where it found it
    };
    enum class Lifetime {
        WithHolder,
        OnItsOwn, ///< the file stays until nobody has it open any more: see `sweep`
    };

    struct Options
    {
        Holds holds = Holds::OneContext;
        Lifetime lifetime = Lifetime::WithHolder;
        // What the file says at first, for a kubectl that is to change it.
        std::optional<QString> firstContext = {};
        std::optional<QString> firstNamespace = {};
    };

    /// Makes the file; null when that failed, and `problem` says why then, without a full stop. A context
    /// that `contents` do not have leads nowhere: kubectl refuses to act in it.
    static std::shared_ptr<const KubeConfigView> make(const KubeConfigContents &contents,
        const QString &context, const QString &nameSpace, QString &problem, const Options &options);
    ~KubeConfigView();
    KubeConfigView(const KubeConfigView &) = delete;
    KubeConfigView &operator=(const KubeConfigView &) = delete;

    const QString &path() const { return m_path; }
    const QString &context() const { return m_context; }
    const QString &nameSpace() const { return m_nameSpace; }
    /// The value of KUBECONFIG: this file, then those of `rest`, which is such a list itself.
    QString inFrontOf(const QString &rest) const;

    /// Removes the files that programs which are gone have left behind. Whoever uses one holds a shared lock
    /// on it.
    static void sweep();

private:
    KubeConfigView() = default;

    QString m_path;
    QString m_context;
    QString m_nameSpace;
    Lifetime m_lifetime = Lifetime::WithHolder;
    bool m_isForeign = false;
    FileDescriptor m_file;
};

} // namespace tidewright
