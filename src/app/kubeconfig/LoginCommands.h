// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/kubeconfig/KubeConfigContents.h"

#include <functional>
#include <memory>

class QWidget;

namespace tidewright {

/// The programs that a kubeconfig has kubectl run to log in. Whoever wrote the file chose them, and they run
/// with the user's rights: for a file that is not the user's own default they are asked about once. What was
/// allowed is remembered in the settings, by a hash of the kubeconfig's path, the program, its arguments and
/// variables. Main thread.
namespace login_commands {

/// Those that the user has not allowed; `configPath` is a window's, empty for the default.
QList<QStringList> unseen(const KubeConfigContents &contents, const QString &configPath);

/// The question that one window asks about them.
class LoginQuestion
{
public:
    /// Asks over the window of `view`, unless the question is open already, and remembers what is allowed;
    /// `allowed` is called then.
    void ask(QWidget *view, const QString &configPath, const QList<QStringList> &commands,
        std::function<void()> allowed);

private:
    std::weak_ptr<bool> m_isOpen; ///< gone with the dialog
};

} // namespace login_commands

} // namespace tidewright
