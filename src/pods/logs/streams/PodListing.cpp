// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/streams/PodListing.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tidewright {

namespace {

constexpr qsizetype fieldCount = 4;

LogContainer container(const QJsonObject &status)
{
    const QJsonObject state = status[QLatin1String("state")].toObject();
    LogContainer result;
    result.name = status[QLatin1String("name")].toString();
    result.restarts = status[QLatin1String("restartCount")].toInt();
    result.runs = state.contains(QLatin1String("running"));
    // One that waits to be started once more still has the log of its last run.
    result.hasLog = result.runs || state.contains(QLatin1String("terminated"))
        || status[QLatin1String("lastState")].toObject().contains(QLatin1String("terminated"));
    return result;
}

QString textOf(const QJsonArray &values)
{
    QStringList texts;
    for (const QJsonValue &value : values) {
        texts.append(value.toString());
    }
    return texts.join(u',');
}

/// One of `matchExpressions`; empty for an operator that is not known.
QString requirement(const QJsonObject &expression)
{
    const QString key = expression[QLatin1String("key")].toString();
    const QString operation = expression[QLatin1String("operator")].toString();
    const QString values = textOf(expression[QLatin1String("values")].toArray());
    if (operation == u"In") {
        return QStringLiteral("%1 in (%2)").arg(key, values);
    }
    if (operation == u"NotIn") {
        return QStringLiteral("%1 notin (%2)").arg(key, values);
    }
    return operation == u"Exists" ? key : operation == u"DoesNotExist" ? u'!' + key : QString();
}

} // namespace

QStringList podOutputArguments()
{
    return {QStringLiteral("-o"),
        QStringLiteral("jsonpath={range .items[*]}{.metadata.name}{\"\\t\"}{.metadata.uid}{\"\\t\"}"
                       "{.status.initContainerStatuses}{\"\\t\"}{.status.containerStatuses}{\"\\n\"}{end}")};
}

std::vector<LogPod> parsedPods(QByteArrayView output)
{
    std::vector<LogPod> pods;
    for (const QByteArray &line : output.toByteArray().split('\n')) {
        QByteArrayList fields = line.split('\t');
        if (fields.size() < 2 || fields[0].isEmpty() || fields[1].isEmpty() || fields[0].startsWith('-')) {
            continue; // no name begins like an option
        }
        fields.resize(fieldCount); // the end of the output is trimmed
        LogPod &pod
            = pods.emplace_back(LogPod{QString::fromUtf8(fields[0]), QString::fromUtf8(fields[1]), {}});
        for (const QByteArray &statuses : {fields[2], fields[3]}) {
            for (const QJsonValue &status : QJsonDocument::fromJson(statuses).array()) {
                if (LogContainer known = container(status.toObject());
                    !known.name.isEmpty() && !known.name.startsWith(u'-')) {
                    pod.containers.push_back(std::move(known));
                }
            }
        }
    }
    return pods;
}

std::optional<QString> labelSelector(QByteArrayView json)
{
    if (json.isEmpty()) {
        return QString();
    }
    const QJsonDocument document = QJsonDocument::fromJson(json.toByteArray());
    if (!document.isObject()) {
        return std::nullopt;
    }
    const QJsonObject selector = document.object();
    const QJsonValue labels = selector[QLatin1String("matchLabels")];
    const QJsonValue expressions = selector[QLatin1String("matchExpressions")];
    // That of a service is nothing but labels.
    const QJsonObject equal = labels.isObject() ? labels.toObject()
        : expressions.isArray()                 ? QJsonObject()
                                                : selector;
    QStringList parts;
    for (auto label = equal.constBegin(); label != equal.constEnd(); ++label) {
        parts.append(label.key() + u'=' + label.value().toString());
    }
    for (const QJsonValue &expression : expressions.toArray()) {
        parts.append(requirement(expression.toObject()));
    }
    return parts.contains(QString()) ? std::nullopt : std::optional(parts.join(u','));
}

} // namespace tidewright
