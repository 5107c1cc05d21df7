// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/ResourceType.h"

#include <algorithm>
#include <stdexcept>

namespace tidewright::demo {

std::string ResourceType::apiVersionAs(const std::string &asked) const
{
    return group.empty() ? asked : group + '/' + asked;
}

bool ResourceType::hasSubresource(const std::string &name) const
{
    return std::find(subresources.begin(), subresources.end(), name) != subresources.end();
}

const std::vector<ResourceType> &resourceTypes()
{
    const std::string rbac = "rbac.authorization.k8s.io";
    const std::string network = "networking.k8s.io";
    static const std::vector<ResourceType> table{
        {"", "v1", "pods", "pod", "Pod", {"po"}, true, true, {"log", "status"}, ""},
        {"", "v1", "services", "service", "Service", {"svc"}, true, true, {"status"}, ""},
        {"", "v1", "endpoints", "endpoints", "Endpoints", {"ep"}, true, false, {}, ""},
        {"", "v1", "configmaps", "configmap", "ConfigMap", {"cm"}, true, false, {}, ""},
        {"", "v1", "secrets", "secret", "Secret", {}, true, false, {}, ""},
        {"", "v1", "serviceaccounts", "serviceaccount", "ServiceAccount", {"sa"}, true, false, {}, ""},
        {"", "v1", "events", "event", "Event", {"ev"}, true, false, {}, ""},
        {"", "v1", "persistentvolumeclaims", "persistentvolumeclaim", "PersistentVolumeClaim", {"pvc"}, true,
            false, {"status"}, ""},
        {"", "v1", "persistentvolumes", "persistentvolume", "PersistentVolume", {"pv"}, false, false,
            {"status"}, ""},
        {"", "v1", "namespaces", "namespace", "Namespace", {"ns"}, false, false, {"status"}, ""},
        {"", "v1", "nodes", "node", "Node", {"no"}, false, false, {"status"}, ""},
        {"apps", "v1", "deployments", "deployment", "Deployment", {"deploy"}, true, true, {"scale", "status"},
            ""},
        {"apps", "v1", "replicasets", "replicaset", "ReplicaSet", {"rs"}, true, true, {"scale", "status"},
            ""},
        {"apps", "v1", "daemonsets", "daemonset", "DaemonSet", {"ds"}, true, true, {"status"}, ""},
        {"apps", "v1", "statefulsets", "statefulset", "StatefulSet", {"sts"}, true, true, {"scale", "status"},
            ""},
        {"apps", "v1", "controllerrevisions", "controllerrevision", "ControllerRevision", {}, true, false, {},
            ""},
        {"autoscaling", "v2", "horizontalpodautoscalers", "horizontalpodautoscaler",
            "HorizontalPodAutoscaler", {"hpa"}, true, true, {"status"}, "v2beta2"},
        {"batch", "v1", "jobs", "job", "Job", {}, true, true, {"status"}, ""},
        {"batch", "v1", "cronjobs", "cronjob", "CronJob", {"cj"}, true, true, {"status"}, "v1beta1"},
        {network, "v1", "ingresses", "ingress", "Ingress", {"ing"}, true, false, {"status"}, ""},
        {network, "v1", "networkpolicies", "networkpolicy", "NetworkPolicy", {"netpol"}, true, false, {}, ""},
        {"storage.k8s.io", "v1", "storageclasses", "storageclass", "StorageClass", {"sc"}, false, false, {},
            ""},
        {"apiextensions.k8s.io", "v1", "customresourcedefinitions", "customresourcedefinition",
            "CustomResourceDefinition", {"crd", "crds"}, false, false, {"status"}, ""},
        {rbac, "v1", "roles", "role", "Role", {}, true, false, {}, ""},
        {rbac, "v1", "rolebindings", "rolebinding", "RoleBinding", {}, true, false, {}, ""},
        {rbac, "v1", "clusterroles", "clusterrole", "ClusterRole", {}, false, false, {}, ""},
        {rbac, "v1", "clusterrolebindings", "clusterrolebinding", "ClusterRoleBinding", {}, false, false, {},
            ""},
    };
    return table;
}

const ResourceType &typeOfKind(const std::string &kind)
{
    for (const ResourceType &type : resourceTypes()) {
        if (type.kind == kind) {
            return type;
        }
    }
    throw std::logic_error("no such kind: " + kind);
}

bool isAddressed(
    const ResourceType &type, const std::string &group, const std::string &version, const std::string &plural)
{
    return type.plural == plural && type.group == group
        && (type.version == version || (!version.empty() && type.olderVersion == version));
}

} // namespace tidewright::demo
