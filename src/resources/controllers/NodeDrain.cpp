// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/NodeDrain.h"

namespace tidewright {

namespace {

/// The first and the last one are never empty: white space at the ends of an output is cut off.
enum Field { NameSpace, Phase, Owners, Volumes, Name, FieldCount };

} // namespace

QStringList DrainPlan::podsArguments(const QString &node)
{
    return {QStringLiteral("get"), QStringLiteral("pods"), QStringLiteral("--all-namespaces"),
        QLatin1String("--field-selector=spec.nodeName=") + node, QStringLiteral("-ogo-template"),
        QStringLiteral("--template={{range .items}}{{.metadata.namespace}}\t{{.status.phase}}\t"
                       "{{range .metadata.ownerReferences}}{{if .controller}}{{.kind}}{{end}}{{end}}\t"
                       "{{range .spec.volumes}}{{.emptyDir}}{{end}}\t{{.metadata.name}}\n{{end}}")};
}

DrainPlan DrainPlan::read(const QByteArray &pods)
{
    DrainPlan plan;
    for (const QByteArray &line : pods.split('\n')) {
        const QByteArrayList fields = line.split('\t');
        if (fields.size() != FieldCount) {
            continue;
        }
        const QString pod = QString::fromUtf8(fields[NameSpace] + '/' + fields[Name]);
        const bool hasEnded = fields[Phase] == "Succeeded" || fields[Phase] == "Failed";
        if ((fields[Owners] == "DaemonSet" && !hasEnded) || fields[Owners] == "Node") {
            plan.staying.append(pod);
            continue;
        }
        plan.leaving.append(pod);
        if (fields[Owners].isEmpty() && !hasEnded) {
            plan.unmanaged.append(pod);
        }
        if (!hasEnded && fields[Volumes].contains("map[")) {
            plan.withLocalData.append(pod);
        }
    }
    return plan;
}

QString DrainPlan::text(const QString &node) const
{
    QStringList lines{
        QStringLiteral("Are you sure you want to drain the node \"%1\"? It takes no new pods from then on.")
            .arg(node)};
    if (leaving.isEmpty()) {
        lines.append(QStringLiteral("No pods have to leave it."));
    } else {
        const qsizetype count = leaving.size();
        lines.append(count == 1 ? QStringLiteral("One pod has to leave it:")
                                : QStringLiteral("%1 pods have to leave it:").arg(count));
        lines.back() += QLatin1String("\n    ") + leaving.join(QLatin1String("\n    "));
    }
    if (!staying.isEmpty()) {
        lines.append(
            QStringLiteral("Those of daemon sets and of the node itself stay: %1.").arg(staying.size()));
    }
    lines.append(QStringLiteral(
        "kubectl gives up after five minutes: pods may take long to end, and disruption budgets "
        "may keep them from leaving. The node stays closed then."));
    return lines.join(QLatin1String("\n\n"));
}

} // namespace tidewright
