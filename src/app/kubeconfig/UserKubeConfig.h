// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/KubeCtl.h"

#include <chrono>
#include <deque>
#include <future>

namespace tidewright {

/// The user's own kubeconfig, which other programs go by: it follows the windows as far as a preference says.
/// Windows do not depend on it: what fails here is a note in the console. One for all windows, so that
/// changes come one after the other; main thread.
class UserKubeConfig : public QObject
{
    Q_OBJECT
public:
    /// The preference "My kubeconfig follows".
    enum class Follows {
        WindowInFront, ///< also when the user turns to another window
        Choice, ///< when the user chooses a context or a namespace
        Nothing,
    };
    Q_ENUM(Follows)
    static Follows preference();
    static void setPreference(Follows follows);

    /// The user chose a context in a window with that kubeconfig.
    void contextChosen(const QString &configPath, const QString &context);
    /// The user chose a namespace; it is set only while the kubeconfig's current context is that one.
    void namespaceChosen(const QString &configPath, const QString &context, const QString &nameSpace);
    /// The user turned to a window. An empty namespace is not known yet.
    void windowInFront(const QString &configPath, const QString &context, const QString &nameSpace);

    bool isBusy() const { return m_busy; }
    /// For the end of the application: waits for a change under way, which would leave its lock and its
    /// copies behind otherwise.
    void finish(std::chrono::milliseconds limit) const;

Q_SIGNALS:
    /// Everything that was asked for until now is through.
    void settled();

private:
    struct Change
    {
        QString files;
        QString context;
        QString nameSpace; ///< empty or the pseudo-namespace: it stays as it is
        bool switches; ///< to the context; else nothing happens in another one
    };

    void enqueue(Change change);
    void runNext();
    static QString perform(const Change &change, const std::shared_ptr<Shell> &shell);

    std::deque<Change> m_waiting;
    bool m_busy = false;
    std::future<void> m_running; ///< the change under way
};

} // namespace tidewright
