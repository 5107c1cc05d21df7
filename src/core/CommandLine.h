// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace tidewright {

/// A command as it was started: what is needed to run it again in a shell.
struct CommandLine
{
    QStringList arguments; ///< the program first; none when nothing is known
    QString kubeConfig; ///< the value of KUBECONFIG, empty when the command had none

    /// One line for a POSIX shell that runs the same program with the same arguments; empty without
    /// arguments.
    QString shellLine() const;
};

} // namespace tidewright
