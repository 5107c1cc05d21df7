// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/CommandGate.h"

#include "core/running/ApplicationRecord.h"
#include "core/running/KubectlArguments.h"

#include <QRegularExpression>

#include <algorithm>

namespace tidewright {

namespace {

/// A user types its name, the program itself may start the packaged one by its path.
bool isKubectl(const QString &program)
{
    return program == QLatin1String("kubectl") || (program == kubectlPath() && !program.isEmpty());
}

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
    const QString program = isKubectl(arguments.value(0)) ? QStringLiteral("kubectl") : arguments.value(0);
    const QString verb
        = isKubectl(program) ? KubectlArguments::read(arguments.mid(1)).words.value(0) : QString();
    return verb.isEmpty() ? program : program + QLatin1Char(' ') + verb;
}

QStringList contextsOnServerOf(const QString &context, const KubeConfigContents &contents)
{
    QStringList result;
    const QString server = contents.server(context);
    for (auto other = contents.contexts.keyBegin(); other != contents.contexts.keyEnd(); ++other) {
        if (contents.server(*other) == server) {
            result.append(*other);
        }
    }
    return result;
}

/// "--kube-context=prod", "prod", "kubectl --context prod"
QList<ContextKey> chosenContextsNamedIn(const QStringList &words)
{
    QList<ContextKey> result = ContextPolicies::chosen();
    const QString line = words.join(QLatin1Char(' '));
    result.removeIf([&line](const ContextKey &context) {
        const QRegularExpression name(QLatin1String("(?<![\\w.-])") + QRegularExpression::escape(context.name)
            + QLatin1String("(?![\\w.-])"));
        return !line.contains(name);
    });
    return result;
}

/// At least one.
QList<ContextKey> reachOf(const KubectlArguments &read, const StartingPlace &place)
{
    const bool mayLeadAnywhere = read.namesServer || read.namesKubeConfig;
    QStringList names = read.contexts;
    if (!read.contextIsCertain || mayLeadAnywhere) {
        names.append(place.context);
    }
    QList<ContextKey> reached;
    for (const QString &name : std::as_const(names)) {
        reached.append({place.configPath, name});
        if (read.namesUser) {
            for (const QString &other : contextsOnServerOf(name, place.contents)) {
                reached.append({place.configPath, other});
            }
        }
    }
    return mayLeadAnywhere || names.contains(QString()) ? reached + ContextPolicies::chosen() : reached;
}

} // namespace

CommandVerdict judgeCommand(const QStringList &arguments, const StartingPlace &place)
{
    CommandVerdict verdict;
    KubectlArguments read;
    if (isKubectl(arguments.value(0))) {
        const QStringList behind = arguments.mid(1);
        read = KubectlArguments::read(behind);
        verdict.reads = isReading(read, behind);
    }
    QList<ContextKey> all = reachOf(read, place);
    if (!isKubectl(arguments.value(0))) {
        all += chosenContextsNamedIn(arguments);
    }
    verdict.context = all.first();
    for (const ContextKey &reached : all) {
        if (const ContextAccess access = ContextPolicies::policy(reached).access; access > verdict.access) {
            verdict.access = access;
            verdict.context = reached;
        }
    }
    return verdict;
}

QString readOnlyReason(const ContextKey &context)
{
    const ContextPolicy policy = ContextPolicies::policy(context);
    if (!policy.isReadable) {
        return QStringLiteral(
            "The context %1 counts as read-only, because what the settings say of it cannot "
            "be read; choose it anew (Preferences: Contexts).")
            .arg(context.name);
    }
    return policy.access == ContextAccess::ReadOnly
        ? QStringLiteral("The context %1 is read-only (Preferences: Contexts).").arg(context.name)
        : QString();
}

QString gateReason(const QStringList &arguments, const StartingPlace &place)
{
    const CommandVerdict verdict = judgeCommand(arguments, place);
    if (!verdict.isRefused()) {
        return {};
    }
    const QString how = verdict.context == ContextKey(place.configPath, place.context)
        ? QStringLiteral("%1 \"%2\" may change it.")
        : QStringLiteral("%1 \"%2\" may lead there and change it.");
    return how.arg(readOnlyReason(verdict.context), shortName(arguments));
}

} // namespace tidewright
