// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Base64.h"
#include "objects/ClusterScope.h"
#include "objects/Planter.h"
#include "objects/Refresh.h"
#include "objects/Seed.h"

namespace tidewright::demo {

namespace {

using enum PodState;

const ContainerSpec proxy{"mesh-proxy", "registry.example/mesh/proxy:1.22.1", 15001};
const ContainerSpec reloader{"config-reloader", "registry.example/tools/reloader:0.9"};

void plantDefault(ObjectStore &store)
{
    Planter planter(store, "default", 412 * days);
    planter.deployment(
        {"web", 3, 41 * days, {{"nginx", "nginx:1.25.3", 8080}, proxy}, {}, json::object(), 0, 3});
    planter.deployment({"greeter", 2, 6 * hours, {{"greeter", "registry.example/greeter:2.4.0", 9000}},
        {Running, NotReady}});
    planter.barePod({"debug-shell", 1, 95 * minutes, {{"shell", "busybox:1.36"}}});
    planter.barePod({"toolbox", 1, 12 * days, {{"toolbox", "registry.example/toolbox:12"}}, {Succeeded}});
    planter.service("web", 8080, 41 * days,
        {{"type", "LoadBalancer"},
            {"ports",
                json::array({{{"name", "http"}, {"port", 80}, {"targetPort", 8080}, {"nodePort", 31080},
                                 {"protocol", "TCP"}},
                    {{"name", "https"}, {"port", 443}, {"targetPort", 8443}, {"nodePort", 31443},
                        {"protocol", "TCP"}}})},
            {"ingress", json::array({{{"hostname", "web-1a2b3c.lb.example"}}})}});
    planter.service("greeter", 9000, 6 * hours);
    planter.service("kubernetes", 443, 412 * days, {{"selector", nullptr}, {"clusterIP", "10.96.0.1"}});
    planter.object("Endpoints", "kubernetes", 412 * days,
        {{"subsets",
            json::array({{{"addresses", json::array({{{"ip", "10.10.0.2"}}})},
                {"ports", json::array({{{"name", "https"}, {"port", 6443}, {"protocol", "TCP"}}})}}})}});
    planter.object("ConfigMap", "web-config", 41 * days,
        {{"data", {{"nginx.conf", "worker_processes auto;\nevents {}\n"}, {"LOG_LEVEL", "info"}}}});
    planter.object("ConfigMap", "empty-settings", 3 * hours);
    planter.object("Secret", "web-tls", 40 * days,
        {{"type", "kubernetes.io/tls"},
            {"data", {{"tls.crt", base64("demo certificate")}, {"tls.key", base64("demo key")}}}});
    planter.object("Secret", "placeholder", 2 * days, {{"type", "Opaque"}});
    planter.object("ServiceAccount", "deployer", 200 * days,
        {{"secrets", json::array({{{"name", "deployer-token"}}, {{"name", "deployer-pull"}}})}});
    planter.object("ServiceAccount", "reader", 31 * days);
}

void plantShop(ObjectStore &store)
{
    Planter planter(store, "shop", 203 * days);
    planter.deployment({"storefront", 4, 63 * days,
        {{"app", "registry.example/shop/storefront:5.12.0", 3000}, proxy}, {}, json::object(), 0, 4});
    planter.deployment(
        {"cart", 3, 19 * days, {{"cart", "registry.example/shop/cart:3.3.1", 8080}, proxy, reloader},
            {Running, CrashLoop}, json::object(), 17, 2});
    planter.deployment({"catalog-search-index-with-a-rather-long-name", 2, 8 * days,
        {{"search", "registry.example/shop/search:0.44.2", 9200}}});
    planter.deployment({"checkout", 2, 33 * minutes,
        {{"checkout", "registry.example/shop/checkout:7.0.0-rc1", 8080}}, {ImagePull, ImagePull}});
    planter.deployment(
        {"recommendations", 3, 22 * days, {{"model", "registry.example/shop/recommend:1.9", 8501}},
            {Running, Unschedulable, ContainerCreating}});
    planter.deployment(
        {"wishlist", 0, 120 * days, {{"wishlist", "registry.example/shop/wishlist:1.0.7", 8080}}});
    planter.cronJob({"nightly-price-sync", 1, 140 * days, {{"sync", "registry.example/shop/price-sync:2.2"}}},
        "15 2 * * *", false, 9 * hours);
    planter.cronJob({"rebuild-recommendation-features-weekly", 1, 88 * days,
                        {{"features", "registry.example/shop/features:0.3"}}},
        "0 4 * * 0", true);
    planter.job({"nightly-price-sync-28512345", 1, 9 * hours,
                    {{"sync", "registry.example/shop/price-sync:2.2"}}, {Succeeded}},
        "nightly-price-sync");
    planter.job(
        {"migrate-orders-v7", 1, 4 * hours, {{"migrate", "registry.example/shop/migrate:7"}}, {Failed}});
    planter.job(
        {"export-catalog", 3, 50, {{"export", "registry.example/shop/export:1.1"}}, {Succeeded, Running}});
    for (const char *name : {"storefront", "cart", "checkout", "recommendations"}) {
        planter.service(name, 8080, 60 * days);
    }
    planter.service("storefront-public", 80, 60 * days,
        {{"type", "NodePort"}, {"selector", {{"app", "storefront"}}},
            {"ports",
                json::array({{{"name", "http"}, {"port", 80}, {"targetPort", 3000}, {"nodePort", 30180},
                    {"protocol", "TCP"}}})}});
    planter.object(
        "ConfigMap", "feature-flags", 12 * days, {{"data", {{"flags.json", "{\"newCheckout\":true}"}}}});
    planter.object("Secret", "payment-gateway", 31 * days,
        {{"type", "Opaque"}, {"data", {{"apiKey", base64("demo-key-0001")}}}});
}

/// A deployment that uses every kind of thing that a pod can, and what it uses.
void plantFraudCheck(Planter &planter)
{
    const json probe{{"httpGet", {{"path", "/healthz"}, {"port", 5000}, {"scheme", "HTTP"}}},
        {"periodSeconds", 10}, {"timeoutSeconds", 1}, {"successThreshold", 1}, {"failureThreshold", 3}};
    const json environment
        = json::array({{{"name", "MODEL_KEY"},
                           {"valueFrom", {{"secretKeyRef", {{"name", "fraud-model"}, {"key", "key"}}}}}},
            {{"name", "THRESHOLD"},
                {"valueFrom", {{"configMapKeyRef", {{"name", "fraud-rules"}, {"key", "threshold"}}}}}}});
    const json volumes
        = json::array({{{"name", "rules"}, {"configMap", {{"name", "fraud-rules"}, {"defaultMode", 420}}}},
            {{"name", "models"}, {"persistentVolumeClaim", {{"claimName", "fraud-models"}}}}});
    const json mounts = json::array({{{"name", "rules"}, {"mountPath", "/etc/rules"}},
        {{"name", "models"}, {"mountPath", "/var/models"}}});
    planter.deployment({"fraud-check", 2, 15 * days,
        {{"scorer", "registry.example/pay/fraud:11.0", 5000,
            {{"livenessProbe", probe}, {"readinessProbe", probe}, {"env", environment},
                {"volumeMounts", mounts}}}},
        {CrashLoop}, {{"serviceAccountName", "fraud-check"}, {"volumes", volumes}}, 243});
    planter.object("ServiceAccount", "fraud-check", 15 * days);
    planter.object("ConfigMap", "fraud-rules", 15 * days, {{"data", {{"threshold", "0.83"}}}});
    planter.object("Secret", "fraud-model", 15 * days,
        {{"type", "Opaque"}, {"data", {{"key", base64("demo-key-0002")}}}});
    planter.object("PersistentVolumeClaim", "fraud-models", 15 * days,
        {{"spec",
             {{"volumeName", "pv-fraud-models"}, {"storageClassName", "fast-ssd"},
                 {"accessModes", {"ReadOnlyMany"}}, {"resources", {{"requests", {{"storage", "20Gi"}}}}}}},
            {"status", {{"phase", "Bound"}, {"capacity", {{"storage", "20Gi"}}}}}});
}

void plantPayments(ObjectStore &store)
{
    Planter planter(store, "payments", 188 * days);
    planter.deployment(
        {"ledger", 3, 77 * days, {{"ledger", "registry.example/pay/ledger:4.8.2", 8443}, proxy}});
    plantFraudCheck(planter);
    planter.deployment({"webhooks", 2, 54 * days, {{"webhooks", "registry.example/pay/webhooks:1.30", 8080}},
        {Running, Running, Evicted}});
    planter.statefulSet({"queue", 3, 101 * days, {{"broker", "registry.example/pay/broker:3.12", 5672}},
        {Running, Running, NotReady}, json::object(), 0, 3});
    planter.service("ledger", 8443, 77 * days);
    planter.service("queue", 5672, 101 * days, {{"clusterIP", "None"}});
    planter.service("legacy-bank", 443, 150 * days,
        {{"type", "ExternalName"}, {"externalName", "bank.example"}, {"clusterIP", nullptr},
            {"selector", nullptr}});
    planter.cronJob({"settle-accounts", 1, 90 * days, {{"settle", "registry.example/pay/settle:2.0"}}},
        "*/10 * * * *", false, 4 * minutes);
}

void plantData(ObjectStore &store)
{
    Planter planter(store, "data", 320 * days);
    planter.statefulSet({"orders-db", 2, 320 * days,
        {{"postgres", "postgres:15.4", 5432},
            {"exporter", "registry.example/tools/pg-exporter:0.15", 9187}}});
    planter.deployment({"stream-processor", 5, 7 * days, {{"worker", "registry.example/data/stream:2.2.0"}},
        {Running, Running, Running, Running, Terminating},
        {{"volumes", json::array({{{"name", "scratch"}, {"emptyDir", json::object()}}})}}});
    planter.service("orders-db", 5432, 320 * days, {{"clusterIP", "None"}});
    planter.cronJob({"vacuum", 1, 300 * days, {{"vacuum", "postgres:15.4"}}}, "@daily", false, 16 * hours);
    planter.object("PersistentVolumeClaim", "orders-db-0", 320 * days,
        {{"spec",
             {{"volumeName", "pv-orders-0"}, {"storageClassName", "fast-ssd"},
                 {"accessModes", {"ReadWriteOnce"}}, {"resources", {{"requests", {{"storage", "100Gi"}}}}}}},
            {"status", {{"phase", "Bound"}, {"capacity", {{"storage", "100Gi"}}}}}});
}

void plantMonitoring(ObjectStore &store)
{
    Planter planter(store, "monitoring", 277 * days);
    planter.deployment(
        {"dashboards", 1, 90 * days, {{"dashboards", "registry.example/mon/dashboards:10.2", 3000}}});
    planter.statefulSet(
        {"metrics", 2, 277 * days, {{"metrics", "registry.example/mon/metrics:2.48", 9090}, reloader}});
    planter.daemonSet({"node-probe", 5, 277 * days, {{"probe", "registry.example/mon/probe:1.7", 9100}},
                          {Running, Running, NotReady}, json::object(), 0, 2},
        5);
    planter.daemonSet({"gpu-probe", 0, 30 * days, {{"probe", "registry.example/mon/gpu-probe:0.2"}}, {},
                          {{"nodeSelector", {{"accelerator", "gpu"}, {"disk", "ssd"}}}}},
        0);
    planter.service("metrics", 9090, 277 * days);
    planter.object("ConfigMap", "alert-rules", 70 * days, {{"data", {{"rules.yaml", "groups: []\n"}}}});
}

void plantSystem(ObjectStore &store)
{
    Planter(store, "kube-public", 412 * days);
    Planter planter(store, "kube-system", 412 * days);
    planter.deployment(
        {"coredns", 2, 412 * days, {{"coredns", "registry.example/system/coredns:1.11.1", 53}}});
    planter.daemonSet(
        {"network-agent", 5, 412 * days, {{"agent", "registry.example/system/network:3.27"}}}, 5);
    planter.service("coredns", 53, 412 * days);
    planter.object("ConfigMap", "coredns", 412 * days, {{"data", {{"Corefile", ".:53 {\n  errors\n}\n"}}}});
}

void plantStaging(ObjectStore &store)
{
    Planter planter(store, "staging", 58 * days);
    planter.deployment({"storefront", 1, 25, {{"app", "registry.example/shop/storefront:5.13.0-rc4", 3000}},
        {ContainerCreating}});
    Planter(store, "empty", 11 * days);
}

void plantEvents(ObjectStore &store)
{
    for (const ObjectPtr &object : store.all(typeOfKind("Pod"))) {
        const json pod = object->parsed();
        const json &waiting = at(pod, "/status/containerStatuses").empty()
            ? at(pod, "/none")
            : at(at(pod, "/status/containerStatuses").back(), "/state/waiting");
        plantPodEvents(store, *object, pod, textAt(waiting, "/reason"));
    }
}

} // namespace

void seedHarbor(ObjectStore &store, int fleetPods)
{
    plantNodes(store, 412 * days);
    plantSystem(store);
    plantDefault(store);
    plantShop(store);
    plantPayments(store);
    plantData(store);
    plantMonitoring(store);
    plantStaging(store);
    plantVolumes(store);
    plantClusterRoles(store);
    seedNetwork(store);
    for (const char *ns : {"default", "shop", "payments", "data", "monitoring", "staging", "kube-system"}) {
        refreshEndpoints(store, ns);
    }
    plantEvents(store);
    if (fleetPods > 0) {
        seedFleet(store, fleetPods);
    }
}

} // namespace tidewright::demo
