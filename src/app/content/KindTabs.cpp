// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/KindTabs.h"

#include "pods/table/Pod.h"
#include "pods/table/PodController.h"
#include "resources/controllers/CronJobController.h"
#include "resources/controllers/DaemonSetController.h"
#include "resources/controllers/DeploymentController.h"
#include "resources/controllers/EventController.h"
#include "resources/controllers/JobController.h"
#include "resources/controllers/NodeController.h"
#include "resources/controllers/SecretController.h"
#include "resources/controllers/ServiceController.h"
#include "resources/controllers/StatefulSetController.h"
#include "resources/controllers/StorageClassController.h"
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

#include <algorithm>
#include <iterator>

namespace tidewright {

namespace {

/// A table with commands of its own.
template <typename Controller> SharedContentViewController *table(WindowState &window)
{
    return new Controller(window);
}

template <ResourceKind (*kind)()> SharedContentViewController *tableOf(WindowState &window)
{
    return new SharedContentViewController(kind(), window);
}

constexpr KindTab tabs[] = {
    {"Pods", {"pod", "container"}, podKind, table<PodController>},
    {"Deployments", {"deployment"}, deploymentKind, table<DeploymentController>},
    {"Services", {"service"}, serviceKind, table<ServiceController>},
    {"Persistent Volumes", {"persistentvolume"}, persistentVolumeKind, tableOf<persistentVolumeKind>},
    {"Cron Jobs", {"cronjob"}, cronJobKind, table<CronJobController>},
    {"Config Maps", {"configmap"}, configMapKind, tableOf<configMapKind>},
    {"Secrets", {"secret"}, secretKind, table<SecretController>},
    {"Events", {"event"}, eventKind, table<EventController>},
    {"Endpoints", {"endpoint"}, endpointKind, tableOf<endpointKind>},
    {"Jobs", {"job"}, jobKind, table<JobController>},
    {"Service Accounts", {"serviceaccount"}, serviceAccountKind, tableOf<serviceAccountKind>},
    {"Cluster Roles", {"clusterrole"}, clusterRoleKind, tableOf<clusterRoleKind>},
    {"Replica Sets", {"replicaset"}, replicaSetKind, tableOf<replicaSetKind>},
    {"Daemon Sets", {"daemonset"}, daemonSetKind, table<DaemonSetController>},
    {"Stateful Sets", {"statefulset"}, statefulSetKind, table<StatefulSetController>, false},
    {"Persistent Volume Claims", {"persistentvolumeclaim"}, persistentVolumeClaimKind,
        tableOf<persistentVolumeClaimKind>, false},
    {"Storage Classes", {"storageclass"}, storageClassKind, table<StorageClassController>, false},
    {"Ingresses", {"ingress"}, ingressKind, tableOf<ingressKind>, false},
    {"Network Policies", {"networkpolicy"}, networkPolicyKind, tableOf<networkPolicyKind>, false},
    {"Horizontal Pod Autoscalers", {"horizontalpodautoscaler"}, horizontalPodAutoscalerKind,
        tableOf<horizontalPodAutoscalerKind>, false},
    {"Nodes", {"node"}, nodeKind, table<NodeController>, false},
    {"Namespaces", {}, namespaceKind, tableOf<namespaceKind>, false},
    {"Roles", {"role"}, roleKind, tableOf<roleKind>, false},
    {"Role Bindings", {"rolebinding"}, roleBindingKind, tableOf<roleBindingKind>, false},
    {"Cluster Role Bindings", {"clusterrolebinding"}, clusterRoleBindingKind, tableOf<clusterRoleBindingKind>,
        false},
    {"Custom Resource Definitions", {"customresourcedefinition"}, customResourceDefinitionKind,
        tableOf<customResourceDefinitionKind>, false},
};

} // namespace

QString KindTab::key() const
{
    return QString::fromLatin1(name).toLower();
}

std::span<const KindTab> kindTabs()
{
    return tabs;
}

const KindTab *kindTab(const QString &key)
{
    const auto found = std::find_if(
        std::begin(tabs), std::end(tabs), [&key](const KindTab &tab) { return tab.key() == key; });
    return found == std::end(tabs) ? nullptr : found;
}

} // namespace tidewright
