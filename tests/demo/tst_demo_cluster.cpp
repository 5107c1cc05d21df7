// SPDX-License-Identifier: GPL-3.0-or-later
#include "DemoProcess.h"
#include "support/Patience.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

// The demo cluster as the real clients see it. Every case runs once per client that the build names.
class TestDemoCluster : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void listsEveryKind_data();
    void listsEveryKind();
    void createsOrRefuses_data();
    void createsOrRefuses();
    void deleteReturnsAndThePodIsReplaced_data() { clientRows(); }
    void deleteReturnsAndThePodIsReplaced();
    void scaleMovesOverTime_data() { clientRows(); }
    void scaleMovesOverTime();
    void crashLoopGoesOn();
    void scaleOfStillClusterIsThereAtOnce_data() { clientRows(); }
    void scaleOfStillClusterIsThereAtOnce();
    void editGoesThroughTheEditor_data() { clientRows(); }
    void editGoesThroughTheEditor();
    void cronJobRunsAndItsLogIsFound_data() { clientRows(); }
    void cronJobRunsAndItsLogIsFound();
    void rolloutUndoBringsTheOldImageBack_data() { clientRows(); }
    void rolloutUndoBringsTheOldImageBack();
    void followedLogsLoseNothing_data() { clientRows(); }
    void followedLogsLoseNothing();
    void logsNeedAStartedContainer_data();
    void logsNeedAStartedContainer();
    void failuresAreToldAtOnce_data();
    void failuresAreToldAtOnce();
    void brokenServerIsMended_data() { clientRows(); }
    void brokenServerIsMended();
    void pagesOfALargeListAreComplete_data() { clientRows(); }
    void pagesOfALargeListAreComplete();
    void contextsHaveObjectsOfTheirOwn_data() { clientRows(); }
    void contextsHaveObjectsOfTheirOwn();
    void badOptionsAreRefused_data();
    void badOptionsAreRefused();
    void endsAtOnceWithOpenStreams_data() { clientRows(); }
    void endsAtOnceWithOpenStreams();

private:
    void clientRows() const;
    DemoProcess &stillCluster(const QString &client);

    QStringList m_clients;
    std::map<QString, std::unique_ptr<DemoProcess>> m_still;
};

namespace {

QStringList lines(const QString &text)
{
    return text.split(u'\n', Qt::SkipEmptyParts);
}

QString clientName(const QString &path)
{
    return path.section(u'/', -4);
}

qsizetype runningPods(const DemoProcess &demo, const QString &app)
{
    const auto output = demo.kubectl({u"get"_s, u"po"_s, u"-lapp="_s + app, u"--no-headers"_s}).output;
    return lines(output).filter(u" Running "_s).size();
}

// Numbers of a log's lines; the last line may be cut short by the end of the client.
QList<qulonglong> sequence(const QString &log)
{
    static const QRegularExpression number(u"^(?:\x1b\\[33m)?seq=(\\d+) "_s);
    QList<qulonglong> numbers;
    const QStringList all = log.split(u'\n').mid(0, log.count(u'\n'));
    for (const QString &line : all)
        numbers << number.match(line).captured(1).toULongLong();
    return numbers;
}

} // namespace

void TestDemoCluster::initTestCase()
{
    m_clients = {
        qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"), qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL_OLD")};
    QVERIFY2(QFile::exists(m_clients[0]), "TIDEWRIGHT_TEST_KUBECTL must name a kubectl");
    if (m_clients[1].isEmpty())
        m_clients.removeLast();
}

void TestDemoCluster::clientRows() const
{
    QTest::addColumn<QString>("client");
    for (const QString &client : m_clients)
        QTest::newRow(qPrintable(clientName(client))) << client;
}

DemoProcess &TestDemoCluster::stillCluster(const QString &client)
{
    auto &demo = m_still[client];
    if (!demo)
        demo = std::make_unique<DemoProcess>(QStringList{u"--still"_s}, client);
    return *demo;
}

// The listings that the tables read, with the fields of known objects. "*" stands for a timestamp.
void TestDemoCluster::listsEveryKind_data()
{
    struct Case
    {
        const char *name;
        const char *ns;
        QStringList arguments; // word after "get", then output arguments
        int fields;
        QStringList expected;
    };
    const QString podTemplate
        = u"-o=jsonpath={range "
          u".items[*]}{.metadata.name}\t{.status.containerStatuses[*].ready}\t{.status.phase}\t"
          "{.status.containerStatuses[*].restartCount}\t{.status.containerStatuses[*].state.*.reason}\t"
          "{.status.startTime}\t{.spec.containers[*].name}\n{end}"_s;
    const QString goTemplate = u"-ogo-template"_s;
    const std::vector<Case> cases{
        {"pod", "default", {u"po"_s, podTemplate}, 7,
            {u"debug-shell\ttrue\tRunning\t0\t\t*\tshell"_s,
                u"toolbox\tfalse\tSucceeded\t0\tCompleted\t*\ttoolbox"_s}},
        {"sidecars", "shop", {u"po"_s, podTemplate}, 7,
            {u"cart-?\ttrue true false\tRunning\t0 0 17\tCrashLoopBackOff\t*\tcart mesh-proxy config-reloader"_s,
                u"recommendations-?\t\tPending\t\t\t\tmodel"_s,
                u"checkout-?\tfalse\tPending\t0\tImagePullBackOff\t*\tcheckout"_s}},
        {"evicted pod", "payments", {u"po"_s, podTemplate}, 7, {u"webhooks-?\t\tFailed\t\t\t*\twebhooks"_s}},
        {"deployment", "shop",
            {u"deploy"_s,
                u"-o=jsonpath={range "
                u".items[*]}{.metadata.name}\t{.status.replicas}\t{.status.readyReplicas}\t"
                "{.status.updatedReplicas}\t{.status.availableReplicas}\t{.metadata.creationTimestamp}\n"_s},
            6, {u"storefront\t4\t4\t4\t4\t*"_s, u"checkout\t2\t\t2\t\t*"_s, u"wishlist\t0\t\t\t\t*"_s}},
        {"replica set", "shop",
            {u"rs"_s, goTemplate,
                u"--template={{range.items}}{{.metadata.name}}\t{{.status.replicas}}\t{{.status."
                u"availableReplicas}}\t"
                "{{.status.readyReplicas}}\t{{.metadata.creationTimestamp}}\n{{end}}"_s},
            5, {u"storefront-?\t4\t4\t4\t*"_s, u"storefront-?\t0\t<no value>\t<no value>\t*"_s}},
        {"daemon set", "monitoring",
            {u"ds"_s, goTemplate,
                u"--template={{range.items}}{{.metadata.name}}\t{{.status.desiredNumberScheduled}}\t"
                "{{.status.currentNumberScheduled}}\t{{.status.numberReady}}\t{{.status."
                "updatedNumberScheduled}}\t"
                "{{.status.numberAvailable}}\t{{.spec.template.spec.nodeSelector}}\t{{.metadata."
                "creationTimestamp}}"
                "\n{{end}}"_s},
            8,
            {u"node-probe\t5\t5\t4\t5\t4\t<no value>\t*"_s,
                u"gpu-probe\t0\t0\t0\t0\t<no value>\tmap[accelerator:gpu disk:ssd]\t*"_s}},
        {"job", "shop",
            {u"job"_s, goTemplate,
                u"--template={{range.items}}{{.metadata.name}}\t{{.spec.completions}}\t{{.status.succeeded}}"
                u"\t"
                "{{.status.startTime}}\t{{.status.completionTime}}\t{{range .status.conditions}}{{.type}}:"
                "{{if .reason}}{{.reason}}{{end}},{{end}}\t{{.metadata.creationTimestamp}}\n{{end}}"_s},
            7,
            {u"export-catalog\t3\t1\t*\t<no value>\t\t*"_s,
                u"migrate-orders-v7\t1\t<no value>\t*\t<no value>\tFailed:BackoffLimitExceeded,\t*"_s,
                u"nightly-price-sync-28512345\t1\t1\t*\t*\tComplete:,\t*"_s}},
        {"cron job", "shop",
            {u"cj"_s,
                u"-o=jsonpath={range .items[*]}{.metadata.name}\t{.spec.schedule}\t{.spec.suspend}\t"
                "{.status.active[*].name}\t{.status.lastScheduleTime}\t{.metadata.creationTimestamp}\n"_s},
            6,
            {u"nightly-price-sync\t15 2 * * *\tfalse\t\t*\t*"_s,
                u"rebuild-recommendation-features-weekly\t0 4 * * 0\ttrue\t\t\t*"_s}},
        {"service", "default",
            {u"services"_s,
                u"-o=jsonpath={range .items[*]}{.metadata.name}\t{.spec.type}\t{.spec.clusterIP}\t"
                "{.status.loadBalancer.ingress[0].hostname}\t{.spec.ports[*].port}:{.spec.ports[*].nodePort}"
                "\t"
                "{.metadata.creationTimestamp}\n"_s},
            6,
            {u"web\tLoadBalancer\t#\tweb-1a2b3c.lb.example\t80 443:31080 31443\t*"_s,
                u"greeter\tClusterIP\t#\t\t9000:\t*"_s}},
        {"endpoints", "default",
            {u"ep"_s, goTemplate,
                u"--template={{range.items}}{{.metadata.name}}\t{{range.subsets}}{{range.addresses}}{{.ip}},{"
                u"{end}}"
                "{{end}}\t{{range.subsets}}{{range.addresses}}{{.targetRef.kind}}/"
                "{{.targetRef.name}},{{end}}{{end}}\t"
                "{{range.subsets}}{{range.ports}}{{.name}}:{{.port}}/{{.protocol}},{{end}}{{end}}\t"
                "{{.metadata.creationTimestamp}}\n{{end}}"_s},
            5, {u"greeter\t#,\tPod/greeter-?,\tmain:9000/TCP,\t*"_s}},
        {"config map", "default",
            {u"configmaps"_s,
                u"-o=jsonpath={range .items[*]}{.metadata.name}\t{.metadata.creationTimestamp}\n"_s},
            2, {u"web-config\t*"_s, u"empty-settings\t*"_s}},
        {"secret", "default",
            {u"secrets"_s, goTemplate,
                u"--template={{range .items}}{{.metadata.name}}\t{{.type}}\t{{if "
                u".data}}{{.data|len}}{{end}}\t"
                "{{.metadata.creationTimestamp}}\n{{end}}"_s},
            4, {u"web-tls\tkubernetes.io/tls\t2\t*"_s, u"placeholder\tOpaque\t\t*"_s}},
        {"persistent volume", "default",
            {u"persistentvolumes"_s, goTemplate,
                u"--template={{range.items}}{{.metadata.name}}\t{{.spec.capacity.storage}}\t"
                "{{range "
                ".spec.accessModes}}{{.}},{{end}}\t{{.spec.persistentVolumeReclaimPolicy}}\t{{.status.phase}}"
                "\t"
                "{{.spec.claimRef.namespace}}/{{.spec.claimRef.name}}\t{{.spec.storageClassName}}\t"
                "{{.metadata.creationTimestamp}}\n{{end}}"_s},
            8,
            {u"pv-orders-0\t100Gi\tReadWriteOnce,\tRetain\tBound\tdata/orders-db-0\tfast-ssd\t*"_s,
                u"pv-spare\t20Gi\tReadWriteOnce,ReadOnlyMany,\tDelete\tAvailable\t<no value>/<no value>\tstandard\t*"_s}},
        {"service account", "default",
            {u"serviceaccounts"_s, goTemplate,
                u"--template={{range.items}}{{.metadata.name}}\t{{.secrets|len}}\t{{.metadata."
                u"creationTimestamp}}\n"
                "{{end}}"_s},
            3, {u"default\t1\t*"_s, u"deployer\t2\t*"_s, u"reader\t0\t*"_s}},
        {"cluster role", "default",
            {u"clusterroles"_s, goTemplate,
                u"--template={{range.items}}{{.metadata.name}}\t{{if .rules}}{{.rules|len}}{{end}} \t"
                "{{.metadata.creationTimestamp}}\n{{end}}"_s},
            3, {u"view\t12 \t*"_s, u"aggregate-nothing\t \t*"_s}},
        {"event", "shop",
            {u"events"_s, u"--sort-by"_s, u".lastTimestamp"_s, goTemplate,
                u"--template={{range "
                u".items}}{{.metadata.name}}\t{{.type}}\t{{.reason}}\t{{.involvedObject.kind}}\t"
                "{{.involvedObject.name}}\t{{.message}}\t{{.metadata.creationTimestamp}}\n{{end}}"_s},
            7, {u"cart-?\tWarning\tBackOff\tPod\tcart-?\tBack-off restarting failed container\t*"_s}},
    };
    QTest::addColumn<QString>("client");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("fields");
    QTest::addColumn<QStringList>("expected");
    for (const QString &client : std::as_const(m_clients)) {
        for (const Case &entry : cases) {
            const QStringList scope{u"--context=demo-harbor"_s, u"-n"_s + QString::fromLatin1(entry.ns)};
            QTest::addRow("%s %s", qPrintable(clientName(client)), entry.name)
                << client << QStringList{u"get"_s, entry.arguments.first()} + scope + entry.arguments.mid(1)
                << entry.fields << entry.expected;
        }
    }
}

void TestDemoCluster::listsEveryKind()
{
    QFETCH(QString, client);
    QFETCH(QStringList, arguments);
    QFETCH(int, fields);
    QFETCH(QStringList, expected);
    const Outcome outcome = stillCluster(client).kubectl(arguments);
    QCOMPARE(outcome.errors, QString());
    const QStringList rows = lines(outcome.output);
    for (const QString &row : rows)
        QVERIFY2(row.count(u'\t') == fields - 1, qPrintable(row));
    for (const QString &wanted : std::as_const(expected)) {
        // "?" is a generated name, "#" an address, a lone "*" a timestamp.
        QString pattern = QRegularExpression::escape(wanted);
        pattern.replace(QRegularExpression(u"\\\\\t\\\\\\*(?=\\\\\t|$)"_s),
            u"\t\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ"_s);
        pattern.replace(u"\\?"_s, u"[a-z0-9.-]+"_s).replace(u"\\#"_s, u"10(\\.\\d+){3}"_s);
        const QRegularExpression expression(QRegularExpression::anchoredPattern(pattern));
        QVERIFY2(!rows.filter(expression).isEmpty(), qPrintable(wanted + u"\nnot in:\n"_s + outcome.output));
    }
}

void TestDemoCluster::createsOrRefuses_data()
{
    struct Case
    {
        const char *name;
        QByteArray yaml;
        const char *expected; // on standard output for a created object, else in the error
        bool good;
    };
    const std::vector<Case> cases{
        {"good",
            "apiVersion: v1\nkind: Pod\nmetadata: {name: made}\nspec: {containers: [{name: c, image: i}]}\n",
            "pod/made created", true},
        {"generated name", "apiVersion: v1\nkind: ConfigMap\nmetadata: {generateName: made-}\ndata: {a: b}\n",
            "configmap/made-", true},
        {"quantities and ports",
            "apiVersion: v1\nkind: Service\nmetadata: {name: made}\nspec: {ports: [{port: 80, targetPort: "
            "http}]}\n",
            "service/made created", true},
        {"unknown field",
            "apiVersion: v1\nkind: Pod\nmetadata: {name: bad}\nspec: {contaners: [], containers: [{name: c, "
            "image: i}]}\n",
            "contaners", false},
        {"wrong type",
            "apiVersion: apps/v1\nkind: Deployment\nmetadata: {name: bad}\nspec: {replicas: two, selector: "
            "{matchLabels: {a: b}}, template: {spec: {containers: [{name: c, image: i}]}}}\n",
            "replicas", false},
        {"missing containers", "apiVersion: v1\nkind: Pod\nmetadata: {name: bad}\nspec: {}\n", "containers",
            false},
        {"no name", "apiVersion: v1\nkind: ConfigMap\nmetadata: {}\n", "name or generateName is required",
            false},
        {"bad name", "apiVersion: v1\nkind: ConfigMap\nmetadata: {name: Not_A_Name}\n", "RFC 1123", false},
        {"taken name", "apiVersion: v1\nkind: ConfigMap\nmetadata: {name: web-config}\n", "already exists",
            false},
        {"unknown kind", "apiVersion: v1\nkind: Ship\nmetadata: {name: bad}\n", "no matches for kind", false},
    };
    QTest::addColumn<QString>("client");
    QTest::addColumn<QByteArray>("yaml");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("good");
    for (const QString &client : std::as_const(m_clients)) {
        for (const Case &entry : cases)
            QTest::addRow("%s %s", qPrintable(clientName(client)), entry.name)
                << client << entry.yaml << QString::fromLatin1(entry.expected) << entry.good;
    }
}

void TestDemoCluster::createsOrRefuses()
{
    QFETCH(QString, client);
    QFETCH(QByteArray, yaml);
    QFETCH(QString, expected);
    QFETCH(bool, good);
    DemoProcess &demo = stillCluster(client);
    const QString file = demo.writeFile(u"object.yaml"_s, yaml);
    const Outcome outcome = demo.kubectl(
        {u"create"_s, u"--context"_s, u"demo-harbor"_s, u"-n"_s, u"default"_s, u"-R"_s, u"-f"_s, file});
    QVERIFY2((good ? outcome.output : outcome.errors).contains(expected),
        qPrintable(outcome.output + outcome.errors));
    QCOMPARE(outcome.exitCode == 0, good);
    if (good)
        QCOMPARE(demo.kubectl({u"delete"_s, u"-f"_s, file, u"--ignore-not-found"_s}).exitCode == 0,
            !yaml.contains("generateName"));
}

void TestDemoCluster::deleteReturnsAndThePodIsReplaced()
{
    QFETCH(QString, client);
    DemoProcess demo({}, client);
    const auto pods = [&demo] {
        return lines(demo.kubectl({u"get"_s, u"po"_s, u"-lapp=web"_s, u"-oname"_s}).output);
    };
    const QStringList before = pods();
    QCOMPARE(before.size(), 3);
    const Outcome outcome
        = demo.kubectl({u"delete"_s, u"pod"_s, before[0].section(u'/', 1), before[1].section(u'/', 1)});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(lines(outcome.output).size(), 2);
    QVERIFY(!pods().contains(before[0]));
    QTRY_COMPARE_WITH_TIMEOUT(runningPods(demo, u"web"_s), 3, 10000);
}

void TestDemoCluster::scaleMovesOverTime()
{
    QFETCH(QString, client);
    DemoProcess demo({}, client);
    QCOMPARE(demo.kubectl({u"scale"_s, u"--context=demo-harbor"_s, u"-ndefault"_s, u"--replicas=6"_s,
                              u"deployment/web"_s})
                 .exitCode,
        0);
    QVERIFY(runningPods(demo, u"web"_s) < 6);
    QTRY_COMPARE_WITH_TIMEOUT(runningPods(demo, u"web"_s), 6, 10000);
    const auto ready = [&demo] {
        return demo.kubectl({u"get"_s, u"deploy"_s, u"web"_s, u"-ojsonpath={.status.readyReplicas}"_s})
            .output;
    };
    QTRY_COMPARE(ready(), u"6"_s);
    demo.kubectl({u"scale"_s, u"--replicas=1"_s, u"deployment/web"_s});
    QTRY_COMPARE_WITH_TIMEOUT(runningPods(demo, u"web"_s), 1, 10000);
    QTRY_COMPARE(ready(), u"1"_s);
}

void TestDemoCluster::crashLoopGoesOn()
{
    const DemoProcess demo({}, m_clients[0]);
    const auto restarts = [&demo] {
        return demo
            .kubectl({u"get"_s, u"po"_s, u"-nshop"_s, u"-lapp=cart"_s,
                u"-ojsonpath={.items[*].status.containerStatuses[?(@.restartCount>0)].restartCount}"_s})
            .output;
    };
    QTRY_COMPARE_WITH_TIMEOUT(restarts(), u"18"_s, 15000);
}

void TestDemoCluster::scaleOfStillClusterIsThereAtOnce()
{
    QFETCH(QString, client);
    DemoProcess &demo = stillCluster(client);
    demo.kubectl({u"scale"_s, u"--replicas=4"_s, u"deployment/web"_s});
    QCOMPARE(runningPods(demo, u"web"_s), 4);
    demo.kubectl({u"scale"_s, u"--replicas=3"_s, u"deployment/web"_s});
    QCOMPARE(runningPods(demo, u"web"_s), 3);
}

void TestDemoCluster::editGoesThroughTheEditor()
{
    QFETCH(QString, client);
    DemoProcess &demo = stillCluster(client);
    const QString editor
        = demo.writeFile(u"editor"_s, "#!/bin/sh\nsed -i 's/LOG_LEVEL: .*/LOG_LEVEL: trace/' \"$1\"\n");
    const QStringList edit{
        u"edit"_s, u"-n"_s, u"default"_s, u"configmap"_s, u"web-config"_s, u"-o"_s, u"yaml"_s};
    const Outcome outcome = demo.kubectl(edit, 20000, editor);
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(demo.kubectl({u"get"_s, u"cm"_s, u"web-config"_s, u"-ojsonpath={.data.LOG_LEVEL}"_s}).output,
        u"trace"_s);
    const QString spoiler = demo.writeFile(u"spoiler"_s, "#!/bin/sh\nsed -i 's/^data:/dat:/' \"$1\"\n");
    QVERIFY(!demo.kubectl(edit, 20000, spoiler).errors.isEmpty());
}

void TestDemoCluster::cronJobRunsAndItsLogIsFound()
{
    QFETCH(QString, client);
    DemoProcess &demo = stillCluster(client);
    const Outcome outcome = demo.kubectl({u"create"_s, u"job"_s, u"--context=demo-harbor"_s, u"-ndata"_s,
        u"--from=cronjob/vacuum"_s, u"by-hand"_s});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(demo.kubectl({u"get"_s, u"job"_s, u"-ndata"_s, u"by-hand"_s,
                              u"-ojsonpath={.status.succeeded} {.spec.template.spec.containers[0].image}"_s})
                 .output,
        u"1 postgres:15.4"_s);
    for (const QString &target : {u"job/by-hand"_s, u"svc/orders-db"_s, u"deploy/stream-processor"_s}) {
        const Outcome log
            = demo.kubectl({u"logs"_s, u"--tail=3"_s, u"-ndata"_s, target, u"--all-containers"_s});
        QVERIFY2(sequence(log.output).size() >= 3 && !sequence(log.output).contains(0),
            qPrintable(target + log.errors));
    }
}

void TestDemoCluster::rolloutUndoBringsTheOldImageBack()
{
    QFETCH(QString, client);
    DemoProcess &demo = stillCluster(client);
    const auto image = [&demo] {
        return demo
            .kubectl({u"get"_s, u"po"_s, u"-nshop"_s, u"-lapp=storefront"_s,
                u"-ojsonpath={.items[*].spec.containers[0].image}"_s})
            .output;
    };
    QVERIFY(!image().contains(u"-rc3"_s));
    QCOMPARE(demo.kubectl({u"rollout"_s, u"undo"_s, u"-nshop"_s, u"deploy/storefront"_s}).exitCode, 0);
    QCOMPARE(image().count(u"-rc3"_s), 4);
    QCOMPARE(demo.kubectl({u"rollout"_s, u"status"_s, u"-nshop"_s, u"deploy/storefront"_s}).exitCode, 0);
}

void TestDemoCluster::followedLogsLoseNothing()
{
    QFETCH(QString, client);
    DemoProcess demo({u"--still"_s, u"--log-rate=20000"_s}, client);
    const QStringList pods = lines(demo.kubectl({u"get"_s, u"po"_s, u"-lapp=web"_s, u"-oname"_s}).output);
    QCOMPARE(pods.size(), 3);
    std::vector<std::unique_ptr<QProcess>> streams;
    for (const QString &pod : pods) {
        streams.push_back(std::make_unique<QProcess>());
        demo.prepareKubectl(*streams.back(),
            {u"logs"_s, u"-f"_s, u"--tail=50"_s, u"--context=demo-harbor"_s, u"-ndefault"_s, pod,
                u"nginx"_s});
        streams.back()->start();
    }
    qsizetype received = 0;
    QElapsedTimer timer;
    timer.start();
    for (const auto &stream : streams) {
        QTRY_VERIFY_WITH_TIMEOUT(stream->bytesAvailable() > 1000000, 20000);
        stream->kill();
        QVERIFY(stream->waitForFinished());
        const QList<qulonglong> numbers = sequence(QString::fromUtf8(stream->readAllStandardOutput()));
        for (qsizetype i = 1; i < numbers.size(); ++i)
            QCOMPARE(numbers[i], numbers[i - 1] + 1);
        received += numbers.size();
    }
    QVERIFY2(received > 10000, qPrintable(QString::number(received)));
}

void TestDemoCluster::logsNeedAStartedContainer_data()
{
    QTest::addColumn<QString>("client");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("expected");
    for (const QString &client : std::as_const(m_clients)) {
        const auto row = [&client](const char *name, const QStringList &arguments, const QString &expected) {
            QTest::addRow("%s %s", qPrintable(clientName(client)), name) << client << arguments << expected;
        };
        row("image cannot be pulled", {u"-nshop"_s, u"deploy/checkout"_s},
            u"waiting to start: ImagePullBackOff"_s);
        row("no such pod", {u"-nshop"_s, u"nothing"_s}, u"\"nothing\" not found"_s);
        row("no such container", {u"debug-shell"_s, u"-cnone"_s}, u"none is not valid for pod"_s);
        row("never restarted", {u"debug-shell"_s, u"-p"_s}, u"previous terminated container"_s);
        row("silent", {u"debug-shell"_s}, QString());
    }
}

void TestDemoCluster::logsNeedAStartedContainer()
{
    QFETCH(QString, client);
    QFETCH(QStringList, arguments);
    QFETCH(QString, expected);
    const Outcome outcome = stillCluster(client).kubectl(QStringList{u"logs"_s} + arguments);
    QCOMPARE(outcome.output, QString());
    QVERIFY2(expected.isEmpty() ? outcome.errors.isEmpty() : outcome.errors.contains(expected),
        qPrintable(outcome.errors));
}

void TestDemoCluster::failuresAreToldAtOnce_data()
{
    QTest::addColumn<QString>("client");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("expected");
    const QStringList pods{u"get"_s, u"po"_s};
    for (const QString &client : std::as_const(m_clients)) {
        const auto row
            = [&client](const QString &options, const QStringList &arguments, const QString &expected) {
                  QTest::addRow("%s %s %s", qPrintable(clientName(client)), qPrintable(options),
                      qPrintable(arguments[0]))
                      << client << options.split(u' ') << arguments << expected;
              };
        row(u"--fail 401"_s, pods, u"(Unauthorized|provide credentials)"_s);
        row(u"--fail 403"_s, pods, u"(Forbidden|have a resource type)"_s);
        row(u"--fail 503"_s, pods, u"unable to handle the request"_s);
        row(u"--wrong-ca"_s, pods, u"certificate"_s);
        row(u"--still"_s, {u"exec"_s, u"debug-shell"_s, u"--"_s, u"ls"_s},
            u"does not serve connections into containers"_s);
        row(u"--still"_s,
            {u"cp"_s, QStringLiteral(DEMO_CLUSTER_PATH), u"debug-shell:/tmp/"_s, u"-c"_s, u"shell"_s},
            u"does not serve connections into containers"_s);
        row(u"--tls"_s, {u"get"_s, u"po"_s, u"none"_s}, u"pods \"none\" not found"_s);
    }
}

void TestDemoCluster::failuresAreToldAtOnce()
{
    QFETCH(QString, client);
    QFETCH(QStringList, options);
    QFETCH(QStringList, arguments);
    QFETCH(QString, expected);
    const DemoProcess demo(options, client);
    const Outcome outcome = demo.kubectl(arguments, 10000);
    QCOMPARE(outcome.exitCode, 1);
    QVERIFY2(outcome.errors.contains(QRegularExpression(expected)), qPrintable(outcome.errors));
}

void TestDemoCluster::brokenServerIsMended()
{
    QFETCH(QString, client);
    const DemoProcess demo({u"--still"_s, u"--hang"_s}, client);
    QCOMPARE(demo.kubectl({u"get"_s, u"ns"_s}, 1500).exitCode, -1);
    QVERIFY(!demo.control("{\"fail\": 200}"));
    QVERIFY(demo.control("{\"hang\": false, \"fail\": 500}"));
    QCOMPARE(demo.kubectl({u"get"_s, u"ns"_s}).exitCode, 1);
    QVERIFY(demo.control("{\"fail\": 0}"));
    QCOMPARE(demo.kubectl({u"get"_s, u"ns"_s}).exitCode, 0);
}

void TestDemoCluster::pagesOfALargeListAreComplete()
{
    QFETCH(QString, client);
    const DemoProcess demo({u"--still"_s, u"--pods=1234"_s}, client);
    QStringList names = lines(demo.kubectl({u"get"_s, u"po"_s, u"-nfleet"_s, u"-oname"_s}).output);
    QCOMPARE(names.size(), 1234);
    QCOMPARE(names.removeDuplicates(), 0);
}

void TestDemoCluster::contextsHaveObjectsOfTheirOwn()
{
    QFETCH(QString, client);
    const DemoProcess &demo = stillCluster(client);
    const auto names = [&demo](const QString &context) {
        return demo
            .kubectl(
                {u"get"_s, u"ns"_s, u"--context="_s + context, u"-o=jsonpath={.items[*].metadata.name}"_s})
            .output.split(u' ');
    };
    QVERIFY(names(u"demo-harbor"_s).contains(u"shop"_s));
    QVERIFY(names(u"demo-lighthouse"_s).contains(u"beacons"_s));
    QVERIFY(!names(u"demo-lighthouse"_s).contains(u"shop"_s));
}

void TestDemoCluster::badOptionsAreRefused_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("unknown") << QStringList{u"--fast"_s};
    QTest::newRow("no value") << QStringList{u"--pods"_s};
    QTest::newRow("not a number") << QStringList{u"--port"_s, u"12x"_s};
    QTest::newRow("out of range") << QStringList{u"--fail=200"_s};
}

void TestDemoCluster::badOptionsAreRefused()
{
    QFETCH(QStringList, options);
    QProcess process;
    process.start(QStringLiteral(DEMO_CLUSTER_PATH), options);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 2);
    QVERIFY(process.readAllStandardError().contains(options[0].section(u'=', 0, 0).toUtf8()));
}

void TestDemoCluster::endsAtOnceWithOpenStreams()
{
    QFETCH(QString, client);
    DemoProcess demo({}, client);
    QProcess stream;
    demo.prepareKubectl(stream, {u"logs"_s, u"-f"_s, u"deploy/web"_s, u"-c"_s, u"nginx"_s});
    stream.start();
    QVERIFY(stream.waitForReadyRead(10000));
    demo.server().terminate();
    QVERIFY(demo.server().waitForFinished(2000));
    QVERIFY(stream.waitForFinished(5000));
    QVERIFY(!QFile::exists(demo.kubeconfig()));
}

QTEST_GUILESS_MAIN(TestDemoCluster)
#include "tst_demo_cluster.moc"
