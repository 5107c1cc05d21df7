// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace tidewright {

/// What can be told of a command line of kubectl's without knowing all of its options: as kubectl reads it,
/// options may stand anywhere before "--", with their value behind "=" or as the next word.
struct KubectlArguments
{
    /// `arguments` without the program.
    static KubectlArguments read(const QStringList &arguments);

    /// Whether the command goes by what kubeconfigs say, instead of naming a context or a kubeconfig itself.
    bool goesByCurrentContext() const { return !namesContext && !namesKubeConfig; }
    /// Whether it is about the kubeconfig or the client itself, or asks kubectl for help: no cluster is
    /// asked. Not when it cannot be told.
    bool isLocal() const;
    /// Whether it changes a kubeconfig.
    bool writesKubeConfig() const;

    /// The command's words ("get", "po"; "config", "use-context", "x"), without options. Nothing from an
    /// option on of which it is not known whether a value follows, when that stands before the command.
    QStringList words;
    bool isReadable = true; ///< no such option came first
    bool namesContext = false;
    bool namesKubeConfig = false;
    bool namesServer = false; ///< or a cluster; also when it only may
    bool namesUser = false; ///< or credentials, or somebody to act as
    bool namesNamespace = false; ///< one, or all of them
    QString context; ///< the one it names: of several the last, as kubectl has it
    QStringList contexts; ///< all that it names
    /// kubectl surely takes the context: there is one, and no option before it of which it is not known here
    /// whether a value follows.
    bool contextIsCertain = false;
    /// So many of the first words are surely that for kubectl too: before them stand no options of which it
    /// is not known here whether a value follows.
    qsizetype certainWords = 0;
};

} // namespace tidewright
