// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TablePrinter.h"

#include "api/TableColumns.h"
#include "base/Time.h"

#include <map>

namespace tidewright::demo {

namespace {

json keyCount(const json &object)
{
    return at(object, "/data").size();
}

json podReady(const json &object)
{
    int ready = 0;
    for (const json &status : at(object, "/status/containerStatuses")) {
        ready += flagAt(status, "/ready");
    }
    return std::to_string(ready) + '/' + std::to_string(at(object, "/spec/containers").size());
}

json podStatus(const json &object)
{
    if (at(object, "/metadata/deletionTimestamp").is_string()) {
        return "Terminating";
    }
    for (const json &status : at(object, "/status/containerStatuses")) {
        for (const char *state : {"/state/waiting/reason", "/state/terminated/reason"}) {
            if (const std::string reason = textAt(status, state); !reason.empty()) {
                return reason;
            }
        }
    }
    return textAt(object, "/status/reason", textAt(object, "/status/phase", "Unknown"));
}

json podRestarts(const json &object)
{
    long long restarts = 0;
    for (const json &status : at(object, "/status/containerStatuses")) {
        restarts += numberAt(status, "/restartCount");
    }
    return std::to_string(restarts);
}

json servicePorts(const json &object)
{
    std::string result;
    for (const json &port : at(object, "/spec/ports")) {
        result += (result.empty() ? "" : ",") + std::to_string(numberAt(port, "/port"));
        if (const long long nodePort = numberAt(port, "/nodePort")) {
            result += ':' + std::to_string(nodePort);
        }
        result += '/' + textAt(port, "/protocol", "TCP");
    }
    return result.empty() ? "<none>" : result;
}

json externalAddress(const json &object)
{
    const std::string ip = textAt(object, "/status/loadBalancer/ingress/0/ip", "<none>");
    return textAt(object, "/status/loadBalancer/ingress/0/hostname", ip);
}

json endpointAddresses(const json &object)
{
    std::string result;
    for (const json &subset : at(object, "/subsets")) {
        for (const json &address : at(subset, "/addresses")) {
            result += (result.empty() ? "" : ",") + textAt(address, "/ip") + ':'
                + std::to_string(numberAt(subset, "/ports/0/port"));
        }
    }
    return result.empty() ? "<none>" : result;
}

json replicas(const json &object)
{
    return std::to_string(numberAt(object, "/status/readyReplicas")) + '/'
        + std::to_string(numberAt(object, "/spec/replicas"));
}

json claim(const json &object)
{
    const std::string name = textAt(object, "/spec/claimRef/name");
    return name.empty() ? name : textAt(object, "/spec/claimRef/namespace") + '/' + name;
}

json jobDuration(const json &object)
{
    const Seconds start = parseTimestamp(textAt(object, "/status/startTime"));
    const Seconds end = parseTimestamp(textAt(object, "/status/completionTime"));
    return start == 0 ? "" : shortAge((end == 0 ? now() : end) - start);
}

std::vector<TableColumn> podColumns()
{
    return {{"Ready", podReady}, {"Status", podStatus}, {"Restarts", podRestarts}, {"Age", age}};
}

std::vector<TableColumn> replicatedColumns()
{
    return {{"Ready", replicas}, {"Up-to-date", CELL(numberAt(o, "/status/updatedReplicas"))},
        {"Available", CELL(numberAt(o, "/status/availableReplicas"))}, {"Age", age}};
}

std::vector<TableColumn> replicaSetColumns()
{
    return {{"Desired", CELL(numberAt(o, "/spec/replicas"))},
        {"Current", CELL(numberAt(o, "/status/replicas"))},
        {"Ready", CELL(numberAt(o, "/status/readyReplicas"))}, {"Age", age}};
}

std::vector<TableColumn> daemonSetColumns()
{
    return {{"Desired", CELL(numberAt(o, "/status/desiredNumberScheduled"))},
        {"Current", CELL(numberAt(o, "/status/currentNumberScheduled"))},
        {"Ready", CELL(numberAt(o, "/status/numberReady"))},
        {"Available", CELL(numberAt(o, "/status/numberAvailable"))}, {"Age", age}};
}

std::vector<TableColumn> jobColumns()
{
    return {{"Completions",
                CELL(std::to_string(numberAt(o, "/status/succeeded")) + '/'
                    + std::to_string(numberAt(o, "/spec/completions", 1)))},
        {"Duration", jobDuration}, {"Age", age}};
}

std::vector<TableColumn> cronJobColumns()
{
    return {{"Schedule", CELL(text(o, "/spec/schedule"))},
        {"Suspend", CELL(flagAt(o, "/spec/suspend") ? "True" : "False")},
        {"Active", CELL(at(o, "/status/active").size())},
        {"Last Schedule", CELL(text(o, "/status/lastScheduleTime"))}, {"Age", age}};
}

std::vector<TableColumn> serviceColumns()
{
    return {{"Type", CELL(text(o, "/spec/type"))}, {"Cluster-IP", CELL(text(o, "/spec/clusterIP"))},
        {"External-IP", externalAddress}, {"Port(s)", servicePorts}, {"Age", age}};
}

std::vector<TableColumn> volumeColumns()
{
    return {{"Capacity", CELL(text(o, "/spec/capacity/storage", ""))},
        {"Access Modes", CELL(joined(at(o, "/spec/accessModes"), ""))},
        {"Reclaim Policy", CELL(text(o, "/spec/persistentVolumeReclaimPolicy", ""))},
        {"Status", CELL(text(o, "/status/phase", ""))}, {"Claim", claim},
        {"StorageClass", CELL(text(o, "/spec/storageClassName", ""))}, {"Age", age}};
}

std::vector<TableColumn> eventColumns()
{
    return {{"Last Seen", CELL(shortAge(now() - parseTimestamp(textAt(o, "/lastTimestamp"))))},
        {"Type", CELL(text(o, "/type"))}, {"Reason", CELL(text(o, "/reason"))},
        {"Object", CELL(textAt(o, "/involvedObject/kind") + '/' + textAt(o, "/involvedObject/name"))},
        {"Message", CELL(text(o, "/message"))}};
}

const std::vector<TableColumn> &columnsOf(const std::string &kind)
{
    static const std::map<std::string, std::vector<TableColumn>> table{
        {"Pod", podColumns()},
        {"Deployment", replicatedColumns()},
        {"StatefulSet", {{"Ready", replicas}, {"Age", age}}},
        {"ReplicaSet", replicaSetColumns()},
        {"DaemonSet", daemonSetColumns()},
        {"Job", jobColumns()},
        {"CronJob", cronJobColumns()},
        {"Service", serviceColumns()},
        {"Endpoints", {{"Endpoints", endpointAddresses}, {"Age", age}}},
        {"ConfigMap", {{"Data", keyCount}, {"Age", age}}},
        {"Secret", {{"Type", CELL(text(o, "/type"))}, {"Data", keyCount}, {"Age", age}}},
        {"ServiceAccount", {{"Secrets", CELL(at(o, "/secrets").size())}, {"Age", age}}},
        {"PersistentVolume", volumeColumns()},
        {"Event", eventColumns()},
    };
    const auto found = table.find(kind);
    return found == table.end() ? clusterColumns(kind) : found->second;
}

json definition(const std::string &title, int priority = 0)
{
    return {{"name", title}, {"type", "string"}, {"format", title == "Name" ? "name" : ""},
        {"description", title}, {"priority", priority}};
}

json rowOf(const std::vector<TableColumn> &columns, const json &object, const std::string &includeObject)
{
    json cells = json::array({textAt(object, "/metadata/name")});
    for (const TableColumn &column : columns) {
        cells.push_back(column.cell(object));
    }
    json row{{"cells", std::move(cells)}};
    if (includeObject == "Object") {
        row["object"] = object;
    } else if (includeObject != "None") {
        row["object"] = {{"kind", "PartialObjectMetadata"}, {"apiVersion", "meta.k8s.io/v1"},
            {"metadata", at(object, "/metadata")}};
    }
    return row;
}

} // namespace

std::string tableText(const ObjectStore &store, const ResourceType &type,
    const std::vector<ObjectPtr> &objects, const json &listMetadata, const TableForm &form)
{
    const std::vector<TableColumn> columns
        = type.isCustom ? definedColumns(store, type) : columnsOf(type.kind);
    json definitions;
    if (form.hasColumns) {
        definitions = json::array({definition("Name")});
        for (const TableColumn &column : columns) {
            definitions.push_back(definition(column.title, column.priority));
        }
    }
    json rows = json::array();
    for (const ObjectPtr &object : objects) {
        rows.push_back(rowOf(columns, object->parsed(), form.includeObject));
    }
    return toText({{"kind", "Table"}, {"apiVersion", "meta.k8s.io/v1"}, {"metadata", listMetadata},
        {"columnDefinitions", std::move(definitions)}, {"rows", std::move(rows)}});
}

} // namespace tidewright::demo
