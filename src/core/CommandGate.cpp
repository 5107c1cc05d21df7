// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/CommandGate.h"

#include "core/KubectlArguments.h"

#include <algorithm>

namespace tidewright {

namespace {

const QLatin1String kubectl("kubectl");

/// A GET that reaches a program behind the API server may do anything there.
bool leavesTheServer(const QString &rawPath)
{
    const QString path = rawPath.section(QLatin1Char('?'), 0, 0);
    const QStringList steps = path.split(QLatin1Char('/'));
    return path.contains(QLatin1Char('%'))
        || std::any_of(steps.begin(), steps.end(), [](const QString &step) {
               static const QStringList leaving{QStringLiteral("proxy"), QStringLiteral("exec"),
                   QStringLiteral("attach"), QStringLiteral("portforward")};
               return leaving.contains(step);
           });
}

bool asksOtherPrograms(const QStringList &arguments)
{
    static const QString raw = QStringLiteral("--raw");
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &word = arguments.at(i);
        if (word == raw ? leavesTheServer(arguments.value(i + 1))
                        : word.startsWith(raw + QLatin1Char('=')) && leavesTheServer(word)) {
            return true;
        }
    }
    return false;
}

bool isReading(const KubectlArguments &read, const QStringList &arguments)
{
    static const QStringList verbs{QStringLiteral("get"), QStringLiteral("describe"), QStringLiteral("logs"),
        QStringLiteral("top"), QStringLiteral("explain"), QStringLiteral("api-resources"),
        QStringLiteral("api-versions"), QStringLiteral("version"), QStringLiteral("diff"),
        QStringLiteral("events"), QStringLiteral("cluster-info"), QStringLiteral("options"),
        QStringLiteral("help"), QStringLiteral("completion"), QStringLiteral("wait")};
    static const QStringList pairs{QStringLiteral("config view"), QStringLiteral("config get-contexts"),
        QStringLiteral("config get-clusters"), QStringLiteral("config get-users"),
        QStringLiteral("config current-context"), QStringLiteral("auth can-i"), QStringLiteral("auth whoami"),
        QStringLiteral("plugin list"), QStringLiteral("rollout status"), QStringLiteral("rollout history")};
    if (arguments.isEmpty() || arguments == QStringList(QStringLiteral("--help"))
        || arguments == QStringList(QStringLiteral("-h"))) {
        return true; // kubectl tells what it can do
    }
    if (read.certainWords > 0 && verbs.contains(read.words.first())) {
        return !asksOtherPrograms(arguments);
    }
    return read.certainWords > 1
        && pairs.contains(QString(read.words.first() + QLatin1Char(' ') + read.words.at(1)));
}

/// How a refusal names the command, without what may be long or secret.
QString shortName(const QStringList &arguments)
{
    const QString program = arguments.value(0);
    const QString verb
        = program == kubectl ? KubectlArguments::read(arguments.mid(1)).words.value(0) : QString();
    return verb.isEmpty() ? program : program + QLatin1Char(' ') + verb;
}

} // namespace

CommandVerdict judgeCommand(const QStringList &arguments, const QString &context)
{
    CommandVerdict verdict{false, ContextPolicies::policy(context).access, context};
    if (arguments.value(0) != kubectl) {
        return verdict;
    }
    const QStringList behind = arguments.mid(1);
    const KubectlArguments read = KubectlArguments::read(behind);
    verdict.reads = isReading(read, behind);
    for (const QString &named : read.contexts) {
        if (const ContextAccess access = ContextPolicies::policy(named).access; access > verdict.access) {
            verdict.access = access;
            verdict.context = named;
        }
    }
    return verdict;
}

QString readOnlyReason(const QString &context)
{
    return ContextPolicies::policy(context).access == ContextAccess::ReadOnly
        ? QStringLiteral("The context %1 is read-only (Preferences: Contexts).").arg(context)
        : QString();
}

std::function<QString(const QStringList &arguments)> commandGate(const QString &context)
{
    return [context](const QStringList &arguments) {
        const CommandVerdict verdict = judgeCommand(arguments, context);
        return verdict.isRefused()
            ? QStringLiteral("The context %1 is read-only (Preferences: Contexts), and \"%2\" is not known "
                             "to change nothing.")
                  .arg(verdict.context, shortName(arguments))
            : QString();
    };
}

} // namespace tidewright
