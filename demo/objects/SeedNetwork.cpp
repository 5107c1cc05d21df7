// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Definitions.h"
#include "objects/Planter.h"
#include "objects/Seed.h"

namespace tidewright::demo {

namespace {

json path(const char *prefix, const char *service, int port)
{
    return {{"path", prefix}, {"pathType", "Prefix"},
        {"backend", {{"service", {{"name", service}, {"port", {{"number", port}}}}}}}};
}

json ingressRule(const char *host, json paths)
{
    return {{"host", host}, {"http", {{"paths", std::move(paths)}}}};
}

void plantIngresses(ObjectStore &store)
{
    const json balancer{
        {"loadBalancer", {{"ingress", json::array({{{"hostname", "edge-9f8e7d.lb.example"}}})}}}};
    Planter(store, "shop", 203 * days)
        .object("Ingress", "shop", 60 * days,
            {{"spec",
                 {{"ingressClassName", "edge"},
                     {"tls", json::array({{{"hosts", {"shop.example"}}, {"secretName", "shop-tls"}}})},
                     {"rules",
                         json::array({ingressRule("shop.example",
                                          json::array(
                                              {path("/", "storefront", 8080), path("/cart", "cart", 8080)})),
                             ingressRule("api.shop.example", json::array({path("/", "checkout", 8080)}))})}}},
                {"status", balancer}});
    Planter(store, "default", 412 * days)
        .object("Ingress", "web", 41 * days,
            {{"spec", {{"defaultBackend", {{"service", {{"name", "web"}, {"port", {{"name", "http"}}}}}}}}},
                {"status", {{"loadBalancer", json::object()}}}});
}

void plantPolicies(ObjectStore &store)
{
    Planter payments(store, "payments", 188 * days);
    payments.object("NetworkPolicy", "deny-all", 188 * days,
        {{"spec", {{"podSelector", json::object()}, {"policyTypes", {"Ingress", "Egress"}}}}});
    payments.object("NetworkPolicy", "ledger-from-shop", 70 * days,
        {{"spec",
            {{"podSelector",
                 {{"matchLabels", {{"app", "ledger"}}},
                     {"matchExpressions",
                         json::array(
                             {{{"key", "tier"}, {"operator", "NotIn"}, {"values", {"test", "trial"}}}})}}},
                {"policyTypes", json::array({"Ingress"})},
                {"ingress",
                    json::array({{{"from",
                                      json::array({{{"namespaceSelector",
                                          {{"matchLabels", {{"kubernetes.io/metadata.name", "shop"}}}}}}})},
                        {"ports", json::array({{{"port", 8443}, {"protocol", "TCP"}}})}}})}}}});
}

struct Scaler
{
    std::string name;
    int least;
    int most;
    int current;
    json measured; ///< percent of the wanted CPU; null while nothing is measured
};

json scalerBody(const Scaler &scaler)
{
    const bool isMeasured = scaler.measured.is_number();
    const bool isLimited = scaler.current == scaler.most;
    const auto condition = [](const char *type, bool holds, const char *reason) {
        return json{{"type", type}, {"status", holds ? "True" : "False"}, {"reason", reason},
            {"lastTransitionTime", timestamp(now() - 3 * hours)}};
    };
    json status{{"currentReplicas", scaler.current}, {"desiredReplicas", scaler.current},
        {"conditions",
            json::array({condition("AbleToScale", true, "ReadyForNewScale"),
                condition(
                    "ScalingActive", isMeasured, isMeasured ? "ValidMetricFound" : "FailedGetResourceMetric"),
                condition(
                    "ScalingLimited", isLimited, isLimited ? "TooManyReplicas" : "DesiredWithinRange")})}};
    if (isMeasured) {
        status["currentMetrics"] = json::array({{{"type", "Resource"},
            {"resource",
                {{"name", "cpu"},
                    {"current", {{"averageUtilization", scaler.measured}, {"averageValue", "38m"}}}}}}});
    }
    return {
        {"spec",
            {{"scaleTargetRef", {{"apiVersion", "apps/v1"}, {"kind", "Deployment"}, {"name", scaler.name}}},
                {"minReplicas", scaler.least}, {"maxReplicas", scaler.most},
                {"metrics",
                    json::array({{{"type", "Resource"},
                        {"resource",
                            {{"name", "cpu"},
                                {"target", {{"type", "Utilization"}, {"averageUtilization", 80}}}}}}})}}},
        {"status", status}};
}

void plantScalers(ObjectStore &store)
{
    Planter shop(store, "shop", 203 * days);
    for (const Scaler &scaler :
        {Scaler{"storefront", 2, 10, 4, 38}, {"cart", 1, 3, 3, 131}, {"checkout", 2, 6, 2, nullptr}}) {
        shop.object("HorizontalPodAutoscaler", scaler.name, 19 * days, scalerBody(scaler));
    }
}

void plantAccess(ObjectStore &store)
{
    const auto subject = [](const char *kind, const char *name, const char *ns = nullptr) {
        json entry{{"kind", kind}, {"name", name}};
        if (ns) {
            entry["namespace"] = ns;
        } else {
            entry["apiGroup"] = "rbac.authorization.k8s.io";
        }
        return entry;
    };
    const auto roleRef = [](const char *kind, const char *name) {
        return json{{"apiGroup", "rbac.authorization.k8s.io"}, {"kind", kind}, {"name", name}};
    };
    Planter shop(store, "shop", 203 * days);
    shop.object("Role", "deployer", 63 * days,
        {{"rules",
            json::array(
                {{{"apiGroups", {"apps"}}, {"resources", {"deployments"}}, {"verbs", {"get", "patch"}}},
                    {{"apiGroups", json::array({""})}, {"resources", {"pods", "pods/log"}},
                        {"verbs", {"get", "list"}}}})}});
    shop.object("RoleBinding", "deployers", 63 * days,
        {{"roleRef", roleRef("Role", "deployer")},
            {"subjects",
                json::array({subject("User", "robin@shop.example"),
                    subject("ServiceAccount", "deployer", "default")})}});
    shop.object("RoleBinding", "readers", 203 * days,
        {{"roleRef", roleRef("ClusterRole", "view")},
            {"subjects", json::array({subject("Group", "shop-team")})}});
    shop.object("ClusterRoleBinding", "cluster-admins", 412 * days,
        {{"roleRef", roleRef("ClusterRole", "cluster-admin")},
            {"subjects",
                json::array({subject("Group", "platform"), subject("User", "alex@platform.example")})}});
    shop.object("ClusterRoleBinding", "nobody-yet", 5 * days, {{"roleRef", roleRef("ClusterRole", "view")}});
}

void plantStorage(ObjectStore &store)
{
    Planter data(store, "data", 320 * days);
    const auto storageClass
        = [&data](const char *name, bool isDefault, const char *policy, const char *binding) {
              json body{{"provisioner", "disk.csi.example"}, {"reclaimPolicy", policy},
                  {"volumeBindingMode", binding}, {"allowVolumeExpansion", std::string(policy) == "Delete"}};
              if (isDefault) {
                  body["metadata"]["annotations"]["storageclass.kubernetes.io/is-default-class"] = "true";
              }
              data.object("StorageClass", name, 412 * days, std::move(body));
          };
    storageClass("standard", true, "Delete", "WaitForFirstConsumer");
    storageClass("fast-ssd", false, "Delete", "WaitForFirstConsumer");
    storageClass("archive", false, "Retain", "Immediate");
    data.object("PersistentVolumeClaim", "reports-scratch", 3 * days,
        {{"spec",
             {{"storageClassName", "archive"}, {"accessModes", {"ReadWriteMany"}},
                 {"volumeMode", "Filesystem"}, {"resources", {{"requests", {{"storage", "500Gi"}}}}}}},
            {"status", {{"phase", "Pending"}}}});
    data.object("PersistentVolumeClaim", "orders-db-1", 101 * days,
        {{"spec",
             {{"volumeName", "pv-orders-1"}, {"storageClassName", "fast-ssd"},
                 {"accessModes", {"ReadWriteOnce"}}, {"volumeMode", "Filesystem"},
                 {"resources", {{"requests", {{"storage", "100Gi"}}}}}}},
            {"status", {{"phase", "Lost"}}}});
}

json printerColumn(const char *name, const char *type, const char *path, int priority = 0)
{
    return {{"name", name}, {"type", type}, {"jsonPath", path}, {"priority", priority}};
}

const ResourceType &plantDefinition(
    ObjectStore &store, const std::string &group, const json &names, const char *scope, json columns)
{
    const json schema{
        {"openAPIV3Schema", {{"type", "object"}, {"x-kubernetes-preserve-unknown-fields", true}}}};
    const ObjectPtr definition
        = Planter(store, "data", 320 * days)
              .object("CustomResourceDefinition", textAt(names, "/plural") + '.' + group, 30 * days,
                  {{"spec",
                      {{"group", group}, {"names", names}, {"scope", scope},
                          {"versions",
                              json::array({{{"name", "v1"}, {"served", true}, {"storage", true},
                                  {"schema", schema}, {"subresources", {{"status", json::object()}}},
                                  {"additionalPrinterColumns", std::move(columns)}}})}}}});
    return serveDefined(store, *definition);
}

void plantCustomObjects(ObjectStore &store)
{
    const std::string group = "harbor.example";
    const ResourceType &vessels = plantDefinition(store, group,
        {{"plural", "vessels"}, {"singular", "vessel"}, {"kind", "Vessel"}, {"listKind", "VesselList"},
            {"shortNames", json::array({"vsl"})}},
        "Namespaced",
        json::array({printerColumn("Berth", "string", ".spec.berth"),
            printerColumn("Length", "integer", ".spec.length"),
            printerColumn("State", "string", ".status.state"),
            printerColumn("Flag", "string", ".spec.flag", 1),
            printerColumn("Age", "date", ".metadata.creationTimestamp")}));
    const ResourceType &lights = plantDefinition(store, group,
        {{"plural", "lights"}, {"singular", "light"}, {"kind", "Light"}, {"listKind", "LightList"}},
        "Cluster", json::array({printerColumn("Colour", "string", ".spec.colour")}));
    const auto plant = [&store](const ResourceType &type, const char *ns, const char *name, json body) {
        body["metadata"]["name"] = name;
        if (type.namespaced) {
            body["metadata"]["namespace"] = ns;
        }
        body["metadata"]["creationTimestamp"] = timestamp(now() - 4 * days);
        store.create(type, std::move(body));
    };
    const auto vessel
        = [&](const char *ns, const char *name, const char *berth, int length, const char *state) {
              plant(vessels, ns, name,
                  {{"spec", {{"berth", berth}, {"length", length}, {"flag", "DK"}}},
                      {"status", {{"state", state}}}});
          };
    vessel("data", "albatross", "north-1", 182, "Moored");
    vessel("data", "kittiwake", "north-2", 96, "Loading");
    vessel("data", "petrel", "roads", 240, "Waiting");
    vessel("default", "petrel", "south-1", 31, "Moored");
    plant(lights, "", "north-pier", {{"spec", {{"colour", "green"}}}});
    plant(lights, "", "south-pier", {{"spec", {{"colour", "red"}}}});
}

} // namespace

void seedNetwork(ObjectStore &store)
{
    plantIngresses(store);
    plantPolicies(store);
    plantScalers(store);
    plantAccess(store);
    plantStorage(store);
    plantCustomObjects(store);
}

} // namespace tidewright::demo
