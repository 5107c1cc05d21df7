// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/NetworkPolicy.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{.spec.podSelector.matchLabels}}\t"
        "{{range .spec.podSelector.matchExpressions}}{{.key}} {{.operator}} {{.values}},{{end}}\t"
        "{{range .spec.policyTypes}}{{.}},{{end}}\t{{if .spec.ingress}}{{.spec.ingress|len}}{{end}}\t"
        "{{if .spec.egress}}{{.spec.egress|len}}{{end}}\t{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Labels = 1, Expressions, Types, IngressRules, EgressRules, Created, FieldCount };

constexpr QLatin1String listGlue(", ");

/// Of "tier In [front back],app Exists <no value>,": "tier in (front, back), app".
QStringList expressionsOf(QByteArrayView field)
{
    QStringList result;
    for (const QString &expression : textOf(field).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString key = expression.section(QLatin1Char(' '), 0, 0);
        const QString relation = expression.section(QLatin1Char(' '), 1, 1).toLower();
        QString values = expression.section(QLatin1Char(' '), 2);
        if (relation == QLatin1String("exists")) {
            result.append(key);
        } else if (relation == QLatin1String("doesnotexist")) {
            result.append(QLatin1Char('!') + key);
        } else {
            values = values.mid(1).chopped(values.endsWith(QLatin1Char(']')) ? 1 : 0);
            result.append(
                QStringLiteral("%1 %2 (%3)").arg(key, relation, values.replace(QLatin1Char(' '), listGlue)));
        }
    }
    return result;
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &policy = static_cast<NetworkPolicy &>(item);
    QStringList selectors = expressionsOf(fields[Expressions]);
    if (const QString labels = labelsTextOf(fields[Labels]); !labels.isEmpty()) {
        selectors.prepend(labels);
    }
    policy.pods = selectors.join(listGlue);
    policy.types = joinedPieces(textOf(fields[Types]), QLatin1Char(','), listGlue);
    policy.ingressRules = integerOf(fields[IngressRules]);
    policy.egressRules = integerOf(fields[EgressRules]);
    policy.startTimeString = textOf(fields[Created]);
}

QString shownPods(const NetworkPolicy &policy)
{
    return policy.pods.isEmpty() ? QStringLiteral("All pods") : policy.pods;
}

/// A direction that the policy is about and has no rule for is closed.
QString rulesText(const NetworkPolicy &policy, QLatin1String type, qint64 rules)
{
    if (!policy.types.contains(type)) {
        return QStringLiteral("Open");
    }
    return rules == 0 ? QStringLiteral("Closed") : QString::number(rules);
}

QString ingressText(const NetworkPolicy &policy)
{
    return rulesText(policy, QLatin1String("Ingress"), policy.ingressRules);
}

QString egressText(const NetworkPolicy &policy)
{
    return rulesText(policy, QLatin1String("Egress"), policy.egressRules);
}

std::vector<Column> columns()
{
    return {
        nameColumn(230),
        textColumn<NetworkPolicy>("pods", QStringLiteral("Pods"), shownPods, 300),
        textColumn<NetworkPolicy>("types", QStringLiteral("Types"), &NetworkPolicy::types, 140),
        textColumn<NetworkPolicy>("ingress", QStringLiteral("Ingress Rules"), ingressText, 110),
        textColumn<NetworkPolicy>("egress", QStringLiteral("Egress Rules"), egressText, 110),
        ageColumn(),
    };
}

} // namespace

ResourceKind networkPolicyKind()
{
    ResourceKind kind = kindOf<NetworkPolicy>();
    kind.resourceName = QStringLiteral("networkpolicies.networking.k8s.io");
    kind.humanReadableResourceName = QStringLiteral("network policy");
    kind.tableName = QStringLiteral("Network Policies");
    kind.listWord = QStringLiteral("networkpolicies.networking.k8s.io");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.pluralNoun = QStringLiteral("network policies");
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
