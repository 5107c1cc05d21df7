// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/KubeConfigContents.h"

#include <functional>

class QWidget;

namespace tidewright {

/// The programs that a kubeconfig has kubectl run to log in. Whoever wrote the file chose them, and they run
/// with the user's rights: for a file that is not the user's own default they are asked about once. What was
/// allowed is remembered in the settings, by a hash of the kubeconfig's path, the program, its arguments and
/// variables. Main thread.
namespace login_commands {

/// Those that the user has not allowed; `configPath` is a window's, empty for the default.
QList<QStringList> unseen(const KubeConfigContents &contents, const QString &configPath);

/// Asks over the window of `view` and remembers what is allowed. `answered` is called later, with whether it
/// was, unless there is no window to ask in.
void ask(QWidget *view, const QString &configPath, const QList<QStringList> &commands,
    std::function<void(bool allowed)> answered);

} // namespace login_commands

} // namespace tidewright
