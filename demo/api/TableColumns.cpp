// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TableColumns.h"

#include "base/Time.h"

#include <algorithm>
#include <map>

namespace tidewright::demo {

json text(const json &object, const std::string &pointer, const std::string &missing)
{
    return textAt(object, pointer, missing);
}

json age(const json &object)
{
    return shortAge(now() - parseTimestamp(textAt(object, "/metadata/creationTimestamp")));
}

std::string joined(const json &list, const std::string &pointer, const char *separator)
{
    std::string result;
    for (const json &item : list) {
        const json &value = pointer.empty() ? item : at(item, pointer);
        if (value.is_null()) {
            continue;
        }
        result += (result.empty() ? "" : separator)
            + (value.is_string() ? value.get<std::string>() : toText(value));
    }
    return result.empty() ? "<none>" : result;
}

namespace {

json nodeStatus(const json &object)
{
    std::string status = "Unknown";
    for (const json &condition : at(object, "/status/conditions")) {
        if (textAt(condition, "/type") == "Ready") {
            status = textAt(condition, "/status") == "True" ? "Ready" : "NotReady";
        }
    }
    return flagAt(object, "/spec/unschedulable") ? status + ",SchedulingDisabled" : status;
}

json nodeRoles(const json &object)
{
    static const std::string prefix = "node-role.kubernetes.io/";
    std::string roles;
    const json &labels = at(object, "/metadata/labels");
    for (auto label = labels.begin(); label != labels.end(); ++label) {
        if (label.key().starts_with(prefix)) {
            roles += (roles.empty() ? "" : ",") + label.key().substr(prefix.size());
        }
    }
    return roles.empty() ? "<none>" : roles;
}

json nodeAddress(const json &object, const char *type)
{
    for (const json &address : at(object, "/status/addresses")) {
        if (textAt(address, "/type") == type) {
            return textAt(address, "/address");
        }
    }
    return "<none>";
}

std::string labelText(const json &labels)
{
    std::string result;
    for (auto label = labels.begin(); label != labels.end(); ++label) {
        result += (result.empty() ? "" : ",") + label.key() + '=' + label->get<std::string>();
    }
    return result.empty() ? "<none>" : result;
}

json subjects(const json &object, const std::string &kind)
{
    std::string result;
    for (const json &subject : at(object, "/subjects")) {
        if (textAt(subject, "/kind") == kind) {
            const std::string ns = textAt(subject, "/namespace");
            result += (result.empty() ? "" : ", ") + (ns.empty() ? ns : ns + '/') + textAt(subject, "/name");
        }
    }
    return result;
}

json metricTargets(const json &object)
{
    std::string result;
    const json &current = at(object, "/status/currentMetrics");
    const json &metrics = at(object, "/spec/metrics");
    for (size_t i = 0; i < metrics.size(); ++i) {
        const json measured
            = i < current.size() ? at(current[i], "/resource/current/averageUtilization") : json();
        result += (result.empty() ? "" : ", ") + textAt(metrics[i], "/resource/name") + ": "
            + (measured.is_number() ? toText(measured) + '%' : "<unknown>") + '/'
            + std::to_string(numberAt(metrics[i], "/resource/target/averageUtilization")) + '%';
    }
    return result.empty() ? "<none>" : result;
}

std::vector<TableColumn> nodeColumns()
{
    return {{"Status", nodeStatus}, {"Roles", nodeRoles}, {"Age", age},
        {"Version", CELL(text(o, "/status/nodeInfo/kubeletVersion"))},
        {"Internal-IP", CELL(nodeAddress(o, "InternalIP")), 1},
        {"External-IP", CELL(nodeAddress(o, "ExternalIP")), 1},
        {"OS-Image", CELL(text(o, "/status/nodeInfo/osImage")), 1},
        {"Kernel-Version", CELL(text(o, "/status/nodeInfo/kernelVersion")), 1},
        {"Container-Runtime", CELL(text(o, "/status/nodeInfo/containerRuntimeVersion")), 1}};
}

std::vector<TableColumn> claimColumns()
{
    return {{"Status", CELL(text(o, "/status/phase", ""))}, {"Volume", CELL(text(o, "/spec/volumeName", ""))},
        {"Capacity", CELL(text(o, "/status/capacity/storage", ""))},
        {"Access Modes", CELL(joined(at(o, "/spec/accessModes"), ""))},
        {"StorageClass", CELL(text(o, "/spec/storageClassName", ""))}, {"Age", age},
        {"VolumeMode", CELL(text(o, "/spec/volumeMode", "<unset>")), 1}};
}

std::vector<TableColumn> storageColumns()
{
    return {{"Provisioner", CELL(text(o, "/provisioner"))},
        {"ReclaimPolicy", CELL(text(o, "/reclaimPolicy"))},
        {"VolumeBindingMode", CELL(text(o, "/volumeBindingMode"))},
        {"AllowVolumeExpansion", CELL(flagAt(o, "/allowVolumeExpansion"))}, {"Age", age}};
}

std::vector<TableColumn> ingressColumns()
{
    return {{"Class", CELL(text(o, "/spec/ingressClassName"))},
        {"Hosts", CELL(joined(at(o, "/spec/rules"), "/host"))},
        {"Address", CELL(joined(at(o, "/status/loadBalancer/ingress"), "/hostname"))},
        {"Ports", CELL(at(o, "/spec/tls").empty() ? "80" : "80, 443")}, {"Age", age}};
}

std::vector<TableColumn> scalerColumns()
{
    return {{"Reference",
                CELL(textAt(o, "/spec/scaleTargetRef/kind") + '/' + textAt(o, "/spec/scaleTargetRef/name"))},
        {"Targets", metricTargets}, {"MinPods", CELL(numberAt(o, "/spec/minReplicas", 1))},
        {"MaxPods", CELL(numberAt(o, "/spec/maxReplicas"))},
        {"Replicas", CELL(numberAt(o, "/status/currentReplicas"))}, {"Age", age}};
}

std::vector<TableColumn> bindingColumns()
{
    return {{"Role", CELL(textAt(o, "/roleRef/kind") + '/' + textAt(o, "/roleRef/name"))}, {"Age", age},
        {"Users", CELL(subjects(o, "User")), 1}, {"Groups", CELL(subjects(o, "Group")), 1},
        {"ServiceAccounts", CELL(subjects(o, "ServiceAccount")), 1}};
}

/// ".spec.berth" as a JSON pointer; empty for paths with filters and the like.
std::string pointerOf(std::string path)
{
    if (path.find_first_of("[]*?@") != path.npos) {
        return {};
    }
    std::replace(path.begin(), path.end(), '.', '/');
    return path;
}

json cellOf(const json &object, const std::string &pointer, const std::string &type)
{
    const json &value = pointer.empty() ? json() : at(object, pointer);
    if (type == "date" && value.is_string()) {
        return shortAge(now() - parseTimestamp(value.get<std::string>()));
    }
    return value;
}

} // namespace

const std::vector<TableColumn> &clusterColumns(const std::string &kind)
{
    static const std::map<std::string, std::vector<TableColumn>> table{
        {"Node", nodeColumns()},
        {"Namespace", {{"Status", CELL(text(o, "/status/phase"))}, {"Age", age}}},
        {"PersistentVolumeClaim", claimColumns()},
        {"StorageClass", storageColumns()},
        {"Ingress", ingressColumns()},
        {"NetworkPolicy",
            {{"Pod-Selector", CELL(labelText(at(o, "/spec/podSelector/matchLabels")))}, {"Age", age}}},
        {"HorizontalPodAutoscaler", scalerColumns()},
        {"RoleBinding", bindingColumns()},
        {"ClusterRoleBinding", bindingColumns()},
        {"ControllerRevision",
            {{"Controller", CELL(textAt(o, "/metadata/ownerReferences/0/name"))},
                {"Revision", CELL(numberAt(o, "/revision"))}, {"Age", age}}},
    };
    static const std::vector<TableColumn> others{
        {"Created At", CELL(text(o, "/metadata/creationTimestamp"))},
    };
    const auto found = table.find(kind);
    return found == table.end() ? others : found->second;
}

std::vector<TableColumn> definedColumns(const ObjectStore &store, const ResourceType &type)
{
    const ObjectPtr definition
        = store.get(typeOfKind("CustomResourceDefinition"), "", type.plural + '.' + type.group);
    const json parsed = definition ? definition->parsed() : json::object();
    std::vector<TableColumn> columns;
    for (const json &column : at(parsed, "/spec/versions/0/additionalPrinterColumns")) {
        columns.push_back({textAt(column, "/name"),
            [pointer = pointerOf(textAt(column, "/jsonPath")), shape = textAt(column, "/type")](
                const json &object) { return cellOf(object, pointer, shape); },
            int(numberAt(column, "/priority"))});
    }
    if (columns.empty()) {
        columns.push_back({"Age", age});
    }
    return columns;
}

} // namespace tidewright::demo
