// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/RelatedObjects.h"

#include "platform/threads/MainQueue.h"
#include "resources/changes/ClusterChange.h"
#include "resources/listing/RowFilter.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QObject>

namespace tidewright {

namespace {

const auto podTable = QStringLiteral("pod");

void addLabels(const QJsonObject &labels, QStringList &requirements)
{
    for (auto label = labels.begin(); label != labels.end(); ++label) {
        requirements.append(label.key() + QLatin1Char('=') + label.value().toString());
    }
}

void addExpressions(const QJsonArray &expressions, QStringList &requirements)
{
    for (const QJsonValue &expression : expressions) {
        const QString key = expression[QLatin1String("key")].toString();
        const QString relation = expression[QLatin1String("operator")].toString();
        QStringList values;
        for (const QJsonValue &value : expression[QLatin1String("values")].toArray()) {
            values.append(value.toString());
        }
        const QString list = QLatin1String(" (") + values.join(QLatin1Char(',')) + QLatin1Char(')');
        if (relation == QLatin1String("Exists")) {
            requirements.append(key);
        } else if (relation == QLatin1String("DoesNotExist")) {
            requirements.append(QLatin1Char('!') + key);
        } else {
            requirements.append(key + QLatin1Char(' ') + relation.toLower() + list); // "in", "notin"
        }
    }
}

/// What is told of an object when kubectl has printed one of its fields.
struct FieldQuestion
{
    QString field; ///< of the object, as JSONPath has it
    QString notDone;
    QString nothingThere; ///< why that may lead nowhere
    std::function<std::optional<TableTarget>(const QByteArray &field)> answer;
};

void answered(
    WindowState &window, const FieldQuestion &question, const ShellResult &result, const TargetFound &found)
{
    if (!result.hasSucceeded()) {
        return; // the console has kubectl's words
    }
    if (const std::optional<TableTarget> target = question.answer(result.output)) {
        found(*target);
    } else {
        refuseChange(window, question.notDone, question.nothingThere);
    }
}

void ask(QObject &receiver, WindowState &window, const ResourceKind &kind, const ObjectName &object,
    const FieldQuestion &question, const TargetFound &found)
{
    if (const QString reason = whyNotByName(kind, {object}); !reason.isEmpty()) {
        refuseChange(window, question.notDone, reason);
        return;
    }
    QStringList arguments{QStringLiteral("kubectl"), QStringLiteral("get"), kind.listWord,
        contextArgument(window.currentContext())};
    if (kind.namespaced) {
        arguments += namespaceArgument(object.nameSpace);
    }
    arguments += {object.name, QLatin1String("-o=jsonpath={") + question.field + QLatin1Char('}')};
    const ChangePlace place(window);
    window.kubeCtl().makeShell()->runAsync(arguments, true, window.console(),
        [self = QPointer(&receiver), place, question, found](const ShellResult &result) {
            postToMain(self, [place, question, found, result](QObject &) {
                if (place.isStillShown()) {
                    answered(*place.window, question, result, found);
                }
            });
        });
}

QString choiceObstacle(const ResourceKind &kind, int chosen)
{
    if (chosen == 1) {
        return {};
    }
    return (chosen == 0 ? QObject::tr("Select a %1 first.") : QObject::tr("Select a single %1."))
        .arg(kind.humanReadableResourceName);
}

} // namespace

QString podsObstacle(const ResourceKind &kind, int chosen)
{
    return kind.pods == ResourceKind::Pods::None
        ? QObject::tr("%1 have no pods. Choose deployments, jobs or services.").arg(kind.tableName)
        : choiceObstacle(kind, chosen);
}

QString ownerObstacle(const ResourceKind &kind, int chosen)
{
    return kind.hasOwner
        ? choiceObstacle(kind, chosen)
        : QObject::tr("%1 have no owner. Choose pods, replica sets or jobs.").arg(kind.tableName);
}

QString targetWord(const ResourceKind &kind)
{
    return QString(kind.humanReadableResourceName).remove(QLatin1Char(' ')).toLower();
}

std::optional<QString> podFilter(const QByteArray &selector, const QString &nameSpace)
{
    const QJsonObject parsed = QJsonDocument::fromJson(selector).object();
    const QJsonValue labels = parsed[QLatin1String("matchLabels")];
    const QJsonValue expressions = parsed[QLatin1String("matchExpressions")];
    QStringList requirements;
    if (labels.isObject() || expressions.isArray()) {
        addLabels(labels.toObject(), requirements);
        addExpressions(expressions.toArray(), requirements);
    } else {
        addLabels(parsed, requirements);
    }
    if (requirements.isEmpty()) {
        return std::nullopt;
    }
    const QString filter = QLatin1String("label:") + quotedForFilter(requirements.join(QLatin1Char(',')));
    return nameSpace.isEmpty() ? filter : filter + QLatin1String(" ns:=") + nameSpace;
}

std::optional<TableTarget> ownerTarget(const QByteArray &ownerReferences, const QString &nameSpace)
{
    const QJsonArray owners = QJsonDocument::fromJson(ownerReferences).array();
    QJsonValue owner = owners.first();
    for (const QJsonValue &each : owners) {
        if (each[QLatin1String("controller")].toBool()) {
            owner = each;
            break;
        }
    }
    const QString kind = owner[QLatin1String("kind")].toString();
    const QString name = owner[QLatin1String("name")].toString();
    if (kind.isEmpty() || name.isEmpty()) {
        return std::nullopt;
    }
    return TableTarget{kind.toLower(), QString(), {nameSpace, name}};
}

void findPods(QObject &receiver, WindowState &window, const ResourceKind &kind, const ObjectName &object,
    const TargetFound &found)
{
    const QString notDone = QObject::tr("No pods were shown");
    if (kind.pods == ResourceKind::Pods::OnNode && !window.liveUpdates()) {
        refuseChange(window, notDone,
            QObject::tr(
                "only live updates tell which node a pod runs on; they are off (menu View, Live Updates)."));
        return;
    }
    if (kind.pods == ResourceKind::Pods::OnNode) {
        found({podTable, QLatin1String("node:=") + object.name});
        return;
    }
    const QString nameSpace = window.currentNamespace() == allNamespaces ? object.nameSpace : QString();
    const FieldQuestion question{QStringLiteral(".spec.selector"), notDone,
        QObject::tr("the %1 %2 selects none.").arg(kind.humanReadableResourceName, object.name),
        [nameSpace](const QByteArray &field) -> std::optional<TableTarget> {
            const std::optional<QString> filter = podFilter(field, nameSpace);
            return filter ? std::optional(TableTarget{podTable, *filter}) : std::nullopt;
        }};
    ask(receiver, window, kind, object, question, found);
}

void findOwner(QObject &receiver, WindowState &window, const ResourceKind &kind, const ObjectName &object,
    const TargetFound &found)
{
    const FieldQuestion question{QStringLiteral(".metadata.ownerReferences"),
        QObject::tr("No owner was shown"),
        QObject::tr("the %1 %2 has none.").arg(kind.humanReadableResourceName, object.name),
        [nameSpace = object.nameSpace](const QByteArray &field) { return ownerTarget(field, nameSpace); }};
    ask(receiver, window, kind, object, question, found);
}

} // namespace tidewright
