// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/ContextPolicy.h"

#include <QStringList>

#include <functional>

namespace tidewright {

/// What the contexts that a command may touch allow it. A plain value; any thread.
struct CommandVerdict
{
    bool reads = false; ///< it is known to change nothing in a cluster and in a kubeconfig
    ContextAccess access = ContextAccess::Free; ///< of the strictest of the contexts concerned
    QString context; ///< that one

    bool isRefused() const { return !reads && access == ContextAccess::ReadOnly; }
    bool needsConsent() const { return !reads && access == ContextAccess::Protected; }
};

/// Judges a command line, program first, that acts in `context` unless it names another one, which then
/// counts too. Only kubectl is known, by the name "kubectl", and of it the commands that only read: a command
/// line that leaves any doubt of which command it is does not count as reading.
CommandVerdict judgeCommand(const QStringList &arguments, const QString &context);

/// Why nothing may be changed in a context: a sentence; empty when changes are allowed. Any thread.
QString readOnlyReason(const QString &context);

/// What a Shell is to ask before it starts a child in that context. It goes by the policies of that moment.
std::function<QString(const QStringList &arguments)> commandGate(const QString &context);

} // namespace tidewright
