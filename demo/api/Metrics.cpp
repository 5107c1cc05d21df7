// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Metrics.h"

#include "api/Reads.h"
#include "base/Json.h"
#include "base/Time.h"
#include "store/ApiError.h"

#include <map>

namespace tidewright::demo {

namespace {

constexpr const char *metricsGroup = "metrics.k8s.io";
constexpr const char *metricsVersion = "v1beta1";
constexpr Seconds metricsWindow = 15;

ResourceType measured(const std::string &plural, const std::string &kind, bool isNamespaced)
{
    ResourceType type{metricsGroup, metricsVersion, plural, "", kind, {}, isNamespaced, false, {}, ""};
    type.isReadOnly = true;
    return type;
}

const ResourceType &podMetrics()
{
    static const ResourceType type = measured("pods", "PodMetrics", true);
    return type;
}

const ResourceType &nodeMetrics()
{
    static const ResourceType type = measured("nodes", "NodeMetrics", false);
    return type;
}

struct Amount
{
    std::uint64_t nanocores = 0;
    std::uint64_t kibibytes = 0;

    void add(const Amount &other)
    {
        nanocores += other.nanocores;
        kibibytes += other.kibibytes;
    }
    json usage() const
    {
        return {{"cpu", std::to_string(nanocores) + 'n'}, {"memory", std::to_string(kibibytes) + "Ki"}};
    }
};

// The same in every run (FNV-1a).
std::uint64_t hashOf(const std::string &text)
{
    std::uint64_t hash = 14695981039346656037U;
    for (const unsigned char c : text) {
        hash = (hash ^ c) * 1099511628211U;
    }
    return hash ^ (hash >> 29);
}

/// What something of that name uses: from one to 250 millicores, from eight to 520 MiB, and up to a tenth
/// more.
Amount amountOf(const std::string &name, bool still)
{
    const std::uint64_t hash = hashOf(name);
    const std::uint64_t turn = still ? 0 : hashOf(name + std::to_string(now() / metricsWindow)) % 11;
    Amount amount{(1 + hash % 250) * 1000000, (8 + hash / 251 % 512) * 1024};
    amount.nanocores += amount.nanocores * turn / 100;
    amount.kibibytes += amount.kibibytes * turn / 100;
    return amount;
}

bool isMeasured(const json &object, bool isPod)
{
    if (isPod) {
        return textAt(object, "/status/phase") == "Running";
    }
    for (const json &condition : at(object, "/status/conditions")) {
        if (textAt(condition, "/type") == "Ready") {
            return textAt(condition, "/status") == "True";
        }
    }
    return false;
}

Amount amountOfContainer(const json &pod, const json &container, bool still)
{
    return amountOf(textAt(pod, "/metadata/namespace") + '/' + textAt(pod, "/metadata/name") + '/'
            + textAt(container, "/name"),
        still);
}

json podFigures(const json &pod, bool still)
{
    json containers = json::array();
    for (const json &container : at(pod, "/spec/containers")) {
        containers.push_back({{"name", textAt(container, "/name")},
            {"usage", amountOfContainer(pod, container, still).usage()}});
    }
    return {{"containers", containers}};
}

// By node, what its pods use together.
std::map<std::string, Amount> amountsOfNodes(const Cluster &cluster)
{
    std::map<std::string, Amount> amounts;
    for (const ObjectPtr &object : cluster.store.all(typeOfKind("Pod"))) {
        const json pod = object->parsed();
        if (isMeasured(pod, true)) {
            for (const json &container : at(pod, "/spec/containers")) {
                amounts[textAt(pod, "/spec/nodeName")].add(
                    amountOfContainer(pod, container, cluster.isStill));
            }
        }
    }
    return amounts;
}

json figuresOf(const ResourceType &type, const StoredObject &object, const json &figures)
{
    json result{{"kind", type.kind}, {"apiVersion", type.apiVersion()},
        {"metadata", {{"name", object.name}, {"creationTimestamp", timestamp(now())}}},
        {"timestamp", timestamp(now())}, {"window", std::to_string(metricsWindow) + 's'}};
    if (!object.ns.empty()) {
        result["metadata"]["namespace"] = object.ns;
    }
    for (const auto &[label, value] : object.labels) {
        result["metadata"]["labels"][label] = value;
    }
    result.update(figures);
    return result;
}

json listOf(const ApiCall &call, const std::vector<ObjectPtr> &objects)
{
    const bool isPod = &call.type() == &podMetrics();
    const bool still = call.cluster.isStill;
    const std::map<std::string, Amount> nodes
        = isPod ? std::map<std::string, Amount>() : amountsOfNodes(call.cluster);
    json list = json::array();
    for (const ObjectPtr &object : objects) {
        const json parsed = object->parsed();
        if (!isMeasured(parsed, isPod)) {
            continue;
        }
        if (isPod) {
            list.push_back(figuresOf(call.type(), *object, podFigures(parsed, still)));
        } else {
            Amount amount = amountOf("kubelet/" + object->name, still);
            if (const auto ofPods = nodes.find(object->name); ofPods != nodes.end()) {
                amount.add(ofPods->second);
            }
            list.push_back(figuresOf(call.type(), *object, {{"usage", amount.usage()}}));
        }
    }
    return list;
}

} // namespace

std::vector<const ResourceType *> servedTypes(const Cluster &cluster)
{
    std::vector<const ResourceType *> types = cluster.store.types();
    if (cluster.isMeasured) {
        types.push_back(&nodeMetrics());
        types.push_back(&podMetrics());
    }
    return types;
}

std::optional<ResourcePath> parseMetricsPath(const std::vector<std::string> &parts, const Cluster &cluster)
{
    constexpr size_t prefix = 3;
    if (!cluster.isMeasured || parts.size() <= prefix || parts[0] != "apis" || parts[1] != metricsGroup
        || parts[2] != metricsVersion) {
        return std::nullopt;
    }
    ResourcePath path;
    path.version = metricsVersion;
    const bool hasNamespace = parts[prefix] == "namespaces" && parts.size() > prefix + 2;
    path.ns = hasNamespace ? parts[prefix + 1] : std::string();
    const size_t next = hasNamespace ? prefix + 2 : prefix;
    for (const ResourceType *type : {&podMetrics(), &nodeMetrics()}) {
        if (parts[next] == type->plural && (type->namespaced || !hasNamespace)) {
            path.type = type;
        }
    }
    if (!path.type || parts.size() > next + 2) {
        return std::nullopt;
    }
    path.name = parts.size() > next + 1 ? parts[next + 1] : std::string();
    return path;
}

void readMetrics(const ApiCall &call)
{
    if (call.request.method != "GET") {
        throw ApiError(
            405, "MethodNotAllowed", "the server does not allow this method on the requested resource");
    }
    const ResourceType &type = typeOfKind(&call.type() == &podMetrics() ? "Pod" : "Node");
    if (!call.path.name.empty()) {
        const ObjectPtr object = call.cluster.store.get(type, call.path.ns, call.path.name);
        const json found = object ? listOf(call, {object}) : json::array();
        if (found.empty()) {
            throw ApiError::notFound(call.type(), call.path.name);
        }
        answer(call.response, toText(found.front()));
        return;
    }
    const ListPage page = call.cluster.store.list(type, {call.path.ns, filterOf(call)});
    answer(call.response,
        toText({{"kind", call.type().kind + "List"}, {"apiVersion", call.type().apiVersion()},
            {"metadata", json::object()}, {"items", listOf(call, page.objects)}}));
}

} // namespace tidewright::demo
