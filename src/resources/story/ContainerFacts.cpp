// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/Timestamp.h"
#include "resources/kinds/KubeTableItem.h"
#include "resources/story/ObjectStory.h"

#include <QJsonArray>
#include <QObject>

namespace tidewright {

namespace {

QString text(const QJsonValue &value, const char *field)
{
    return value[QLatin1String(field)].toString();
}

/// Empty for what is no time.
QString ageOf(const QString &timestamp, double now)
{
    const auto time = parseTimestamp(timestamp);
    return time ? formatAge(now - static_cast<double>(*time), false) : QString();
}

bool isBad(const QJsonValue &terminated)
{
    return terminated.isObject() && text(terminated, "exitCode") != QLatin1String("0");
}

/// "OOMKilled, exit code 137, 2m ago"
QString terminatedText(const QJsonValue &terminated, double now)
{
    QStringList parts{text(terminated, "reason")};
    if (const QString code = text(terminated, "exitCode"); !code.isEmpty()) {
        parts.append(QObject::tr("exit code %1").arg(code));
    }
    if (const QString number = text(terminated, "signal"); !number.isEmpty()) {
        parts.append(QObject::tr("signal %1").arg(number));
    }
    if (const QString age = ageOf(text(terminated, "finishedAt"), now); !age.isEmpty()) {
        parts.append(QObject::tr("%1 ago").arg(age));
    }
    parts.removeAll(QString());
    return parts.join(QLatin1String(", "));
}

QString waitingText(const QJsonValue &waiting)
{
    const QString reason = text(waiting, "reason");
    const QString message = text(waiting, "message");
    return (reason.isEmpty() ? QObject::tr("Waiting") : reason)
        + (message.isEmpty() ? QString() : QLatin1String(": ") + message);
}

bool isOnItsWay(const QString &waitingReason)
{
    return waitingReason.isEmpty() || waitingReason == QLatin1String("ContainerCreating")
        || waitingReason == QLatin1String("PodInitializing");
}

void tellState(const QJsonValue &status, double now, ContainerFacts &facts)
{
    const QJsonValue state = status[QLatin1String("state")];
    const QJsonValue running = state[QLatin1String("running")];
    const QJsonValue terminated = state[QLatin1String("terminated")];
    const QJsonValue waiting = state[QLatin1String("waiting")];
    if (running.isObject()) {
        const QString age = ageOf(text(running, "startedAt"), now);
        facts.state = age.isEmpty() ? QObject::tr("Running") : QObject::tr("Running for %1").arg(age);
        if (!status[QLatin1String("ready")].toBool()) {
            facts.state += QObject::tr(", not ready");
        }
    } else if (terminated.isObject()) {
        facts.state = terminatedText(terminated, now);
        facts.isInTrouble = isBad(terminated);
    } else if (waiting.isObject()) {
        facts.state = waitingText(waiting);
        facts.isInTrouble = !isOnItsWay(text(waiting, "reason"));
    } else {
        facts.state = QObject::tr("Not started");
    }
    const QJsonValue last = status[QLatin1String("lastState")][QLatin1String("terminated")];
    facts.lastState = last.isObject() ? terminatedText(last, now) : QString();
    facts.hadTrouble = isBad(last);
    facts.restarts = text(status, "restartCount");
}

QString portsText(const QJsonValue &container)
{
    QStringList lines;
    for (const QJsonValue &port : container[QLatin1String("ports")].toArray()) {
        const QString name = text(port, "name");
        const QString protocol = text(port, "protocol");
        lines.append((name.isEmpty() ? QString() : name + QLatin1Char(' ')) + text(port, "containerPort")
            + QLatin1Char('/') + (protocol.isEmpty() ? QStringLiteral("TCP") : protocol));
    }
    return lines.join(QLatin1Char('\n'));
}

/// "http :8080/healthz every 10 s"
QString probeText(const QJsonValue &probe)
{
    const QJsonValue http = probe[QLatin1String("httpGet")];
    const QJsonValue tcp = probe[QLatin1String("tcpSocket")];
    const QJsonValue grpc = probe[QLatin1String("grpc")];
    QString what;
    if (http.isObject()) {
        const QString scheme = text(http, "scheme").toLower();
        what = (scheme.isEmpty() ? QStringLiteral("http") : scheme) + QLatin1String(" :") + text(http, "port")
            + text(http, "path");
    } else if (tcp.isObject()) {
        what = QLatin1String("tcp :") + text(tcp, "port");
    } else if (grpc.isObject()) {
        what = QLatin1String("grpc :") + text(grpc, "port");
    } else {
        QStringList words;
        for (const QJsonValue &word : probe[QLatin1String("exec")][QLatin1String("command")].toArray()) {
            words.append(word.toString());
        }
        what = QLatin1String("exec ") + words.join(QLatin1Char(' '));
    }
    const QString period = text(probe, "periodSeconds");
    return period.isEmpty() ? what : QObject::tr("%1 every %2 s").arg(what, period);
}

QString probesText(const QJsonValue &container)
{
    QStringList lines;
    for (const auto &[field, name] : {std::pair("startupProbe", QObject::tr("Startup")),
             std::pair("livenessProbe", QObject::tr("Liveness")),
             std::pair("readinessProbe", QObject::tr("Readiness"))}) {
        if (const QJsonValue probe = container[QLatin1String(field)]; probe.isObject()) {
            lines.append(name + QLatin1String(": ") + probeText(probe));
        }
    }
    return lines.join(QLatin1Char('\n'));
}

QHash<QString, QJsonValue> byName(const QJsonValue &statuses)
{
    QHash<QString, QJsonValue> all;
    for (const QJsonValue &status : statuses.toArray()) {
        all.insert(text(status, "name"), status);
    }
    return all;
}

} // namespace

std::vector<ContainerFacts> containersOf(const QJsonObject &pod, double now)
{
    struct List
    {
        const char *containers;
        const char *statuses;
        QString mark;
    };
    std::vector<ContainerFacts> all;
    for (const List &list : {List{"initContainers", "initContainerStatuses", QObject::tr(" (init)")},
             List{"containers", "containerStatuses", {}},
             List{"ephemeralContainers", "ephemeralContainerStatuses", QObject::tr(" (ephemeral)")}}) {
        const auto statuses = byName(pod[QLatin1String("status")][QLatin1String(list.statuses)]);
        for (const QJsonValue &container :
            pod[QLatin1String("spec")][QLatin1String(list.containers)].toArray()) {
            ContainerFacts facts;
            const QString name = text(container, "name");
            facts.name
                = name + (text(container, "restartPolicy").isEmpty() ? list.mark : QObject::tr(" (sidecar)"));
            facts.image = text(container, "image");
            facts.ports = portsText(container);
            facts.probes = probesText(container);
            tellState(statuses.value(name), now, facts);
            all.push_back(facts);
        }
    }
    return all;
}

} // namespace tidewright
