// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/kubeconfig/ContextPolicy.h"
#include "core/kubeconfig/KubeConfigContents.h"

#include <QStringList>

#include <functional>

namespace tidewright {

/// Where a command acts that does not say so itself, and what else its kubeconfig leads to. A plain value.
struct StartingPlace
{
    QString configPath; ///< as a window has it
    QString context; ///< empty: not known yet
    KubeConfigContents contents;
};

/// What the contexts that a command may touch allow it. A plain value; any thread.
struct CommandVerdict
{
    bool reads = false; ///< it is known to change nothing in a cluster and in a kubeconfig
    ContextAccess access = ContextAccess::Free; ///< of the strictest of the contexts that it may reach
    ContextKey context; ///< that one

    bool isRefused() const { return !reads && access == ContextAccess::ReadOnly; }
    bool needsConsent() const { return !reads && access == ContextAccess::Protected; }
};

/// Judges a command line, program first. Only kubectl is known, by the name "kubectl", and of it the commands
/// that only read: a command line that leaves any doubt of which command it is does not count as reading.
/// What it may write on this machine (`cluster-info dump --output-directory`) does not matter.
///
/// It is judged by the strictest of the contexts that it may reach:
/// - a kubectl that surely names a context reaches that one, every other command the one of the place, and
///   all that it may be naming;
/// - one that names a user or credentials may act for any context on the same server;
/// - one that names a server, a cluster or a kubeconfig may lead to any context, under whatever name, that
///   the user has chosen a policy for; so may one without a context;
/// - another program may also have names of contexts among its words, in whatever form: those that the user
///   has chosen a policy for count too.
CommandVerdict judgeCommand(const QStringList &arguments, const StartingPlace &place);

/// Why nothing may be changed in a context: a sentence; empty when changes are allowed. Any thread.
QString readOnlyReason(const ContextKey &context);

/// Why a command line must not run: a sentence; empty when it may.
QString gateReason(const QStringList &arguments, const StartingPlace &place);

} // namespace tidewright
