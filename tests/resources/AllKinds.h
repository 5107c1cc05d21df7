// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/table/Pod.h"
#include "resources/kinds/ClusterRole.h"
#include "resources/kinds/ClusterRoleBinding.h"
#include "resources/kinds/ConfigMap.h"
#include "resources/kinds/CronJob.h"
#include "resources/kinds/CustomResourceDefinition.h"
#include "resources/kinds/DaemonSet.h"
#include "resources/kinds/Deployment.h"
#include "resources/kinds/Endpoint.h"
#include "resources/kinds/Event.h"
#include "resources/kinds/HorizontalPodAutoscaler.h"
#include "resources/kinds/Ingress.h"
#include "resources/kinds/Job.h"
#include "resources/kinds/Namespace.h"
#include "resources/kinds/NetworkPolicy.h"
#include "resources/kinds/Node.h"
#include "resources/kinds/PersistentVolume.h"
#include "resources/kinds/PersistentVolumeClaim.h"
#include "resources/kinds/ReplicaSet.h"
#include "resources/kinds/Role.h"
#include "resources/kinds/RoleBinding.h"
#include "resources/kinds/Secret.h"
#include "resources/kinds/Service.h"
#include "resources/kinds/ServiceAccount.h"
#include "resources/kinds/StatefulSet.h"
#include "resources/kinds/StorageClass.h"

#include <QRegularExpression>

namespace tidewright::test {

using MakeKind = ResourceKind (*)();
inline constexpr MakeKind allKinds[] = {podKind, deploymentKind, replicaSetKind, daemonSetKind, jobKind,
    cronJobKind, serviceKind, endpointKind, configMapKind, secretKind, persistentVolumeKind,
    serviceAccountKind, clusterRoleKind, eventKind, statefulSetKind, nodeKind, namespaceKind, ingressKind,
    persistentVolumeClaimKind, storageClassKind, horizontalPodAutoscalerKind, networkPolicyKind, roleKind,
    roleBindingKind, clusterRoleBindingKind, customResourceDefinitionKind};

/// The cells of a row with bars between them: the names of images and, in the first cell, of colours behind
/// the text. Without the namespace, which tables of all namespaces show.
inline QString cellsOf(const ResourceKind &kind, const KubeTableItem &item)
{
    QStringList cells;
    for (const Column &column : kind.columns) {
        if (column.identifier == QLatin1String("namespace")) {
            continue;
        }
        QString cell = column.text(item);
        if (column.image && !column.image(item).isEmpty()) {
            cell += QStringLiteral(" <%1>").arg(column.image(item));
        }
        if (column.colour && cells.isEmpty() && !column.colour(item).isEmpty()) {
            cell += QLatin1String(" in ") + column.colour(item);
        }
        cells.append(cell);
    }
    return cells.join(QLatin1Char('|'));
}

/// Whether cells are as a pattern has them, in which "*" stands for anything within a cell.
inline bool matches(const QString &cells, const QString &pattern)
{
    const QString any
        = QRegularExpression::escape(pattern).replace(QLatin1String("\\*"), QLatin1String("[^|]*"));
    return QRegularExpression(QRegularExpression::anchoredPattern(any)).match(cells).hasMatch();
}

} // namespace tidewright::test
