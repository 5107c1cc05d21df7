// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace tidewright {

/// Where a command acts that does not say so itself: the user's own kubeconfigs (the value of KUBECONFIG,
/// empty for none), a context and a namespace in them (empty when it is not known).
struct CommandPlace
{
    QString kubeConfig;
    QString context = {};
    QString nameSpace = {};
};

/// A command as it was started: what is needed to run it again in a shell.
struct CommandLine
{
    QStringList arguments; ///< the program first; none when nothing is known
    CommandPlace place;

    /// One line for a POSIX shell that runs the same program with the same arguments in the same place: a
    /// kubectl that names no context or namespace gets those of the place. Empty without arguments.
    QString shellLine() const;
    /// The options that name the place, for a command line that does not.
    QStringList placeOptions() const;
};

} // namespace tidewright
