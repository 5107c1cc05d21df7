// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/streams/LogOptions.h"

#include "core/running/ChildEnvironment.h"

#include "core/running/ApplicationRecord.h"

#include <QFile>

namespace tidewright {

namespace {

/// Nothing asks for all there is.
QString beginning(const LogOptions &options, const QDateTime &now)
{
    if (!options.since.isEmpty()) {
        return QLatin1String("--since-time=") + QLatin1String(options.since);
    }
    switch (options.from) {
    case LogOptions::From::Last50:
        return QStringLiteral("--tail=50");
    case LogOptions::From::Last500:
        return QStringLiteral("--tail=500");
    case LogOptions::From::Last5000:
        return QStringLiteral("--tail=5000");
    case LogOptions::From::FiveMinutes:
        return QStringLiteral("--since=5m");
    case LogOptions::From::OneHour:
        return QStringLiteral("--since=1h");
    case LogOptions::From::Today:
        return QLatin1String("--since-time=") + now.date().startOfDay().toUTC().toString(Qt::ISODate);
    case LogOptions::From::All:
        break;
    }
    return {};
}

} // namespace

QStringList LogPlace::arguments(const QString &ownNamespace) const
{
    return {
        contextArgument(context), QLatin1String("-n") + (ownNamespace.isEmpty() ? nameSpace : ownNamespace)};
}

std::shared_ptr<Shell> LogPlace::makeShell() const
{
    std::shared_ptr<Shell> shell = Shell::create();
    shell->pipeSize = Pipe::Size::Usual; // there may be hundreds, and they share what the user may have
    child_environment::setKubeConfig(shell->environment, kubeConfig);
    child_environment::ignoreKubeRc(shell->environment);
    return shell;
}

QStringList LogOptions::arguments(const QDateTime &now) const
{
    QStringList arguments{previous ? QStringLiteral("--previous") : QStringLiteral("-f")};
    if (const QString begin = beginning(*this, now); !begin.isEmpty()) {
        arguments.append(begin);
    }
    if (timestamps) {
        arguments.append(QStringLiteral("--timestamps"));
    }
    return arguments;
}

QStringList logArguments(
    const LogPlace &place, const ContainerPair &pair, const LogOptions &options, const QDateTime &now)
{
    return QStringList{kubectlPath(), QStringLiteral("logs")} + options.arguments(now)
        + place.arguments(pair.nameSpace) + QStringList{pair.pod, pair.container};
}

} // namespace tidewright
