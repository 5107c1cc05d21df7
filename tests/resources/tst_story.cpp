// SPDX-License-Identifier: GPL-3.0-or-later
// What the preview panel tells of an object: read from its text, and with the real clients on the demo
// cluster.
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "pods/table/Pod.h"
#include "resources/preview/ContainersTable.h"
#include "resources/preview/EventsTable.h"
#include "resources/preview/PreviewFiles.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/preview/RelationsLine.h"
#include "resources/story/YamlObject.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/SharedContentViewController.h"
#include "support/Patience.h"
#include "support/StubWindow.h"
#include "support/Table.h"

#include <QHeaderView>
#include <QJsonDocument>
#include <QPlainTextEdit>
#include <QTextDocument>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

const auto podYaml = R"(
kind: Pod
metadata:
  name: web-1
  namespace: shop
  uid: u-1
  annotations: {kubernetes.io/config.mirror: from-the-node}
  ownerReferences: [{kind: ReplicaSet, name: web, controller: true}]
spec:
  nodeName: pier-1
  serviceAccountName: teller
  imagePullSecrets: [{name: pull}]
  volumes:
  - {name: a, persistentVolumeClaim: {claimName: disk}}
  - {name: b, configMap: {name: rules}}
  - {name: c, secret: {secretName: tls}}
  - {name: d, projected: {sources: [{secret: {name: "true"}}, {configMap: {name: root-ca}}]}}
  initContainers:
  - {name: wait, image: busybox, envFrom: [{secretRef: {name: first}}]}
  containers:
  - name: app
    image: app:1
    ports: [{name: http, containerPort: 8080}, {containerPort: 53, protocol: UDP}]
    livenessProbe: {httpGet: {path: /live, port: http, scheme: HTTPS}, periodSeconds: 10}
    readinessProbe: {exec: {command: [cat, /ready]}}
    env: [{name: E, valueFrom: {secretKeyRef: {name: tls, key: k}}}, {name: F, value: rules}]
  - {name: side, image: side:2, startupProbe: {tcpSocket: {port: 80}}}
status:
  initContainerStatuses:
  - {name: wait, restartCount: 0, state: {terminated: {exitCode: 0, reason: Completed}}}
  containerStatuses:
  - name: app
    restartCount: 12
    state: {waiting: {reason: CrashLoopBackOff, message: back-off}}
    lastState: {terminated: {exitCode: 137, reason: OOMKilled, finishedAt: "2027-01-15T07:55:00Z"}}
  - {name: side, ready: false, restartCount: 1, state: {running: {startedAt: "2027-01-15T06:00:00Z"}}}
)"_ba;
constexpr double now = 1'800'000'000; // 2027-01-15T08:00:00Z

QString textOf(const std::vector<Relation> &relations)
{
    QStringList texts;
    for (const Relation &each : relations) {
        texts.append(each.title + u':' + each.kind + u'/' + each.object.nameSpace + u'/' + each.object.name);
    }
    return texts.join(u' ').remove(u"shop/"_s);
}

QString shown(const QLabel &label)
{
    QTextDocument document;
    document.setHtml(label.text());
    return document.toPlainText();
}

} // namespace

class TestStory : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void relations_data()
    {
        const Table<QByteArray, QString> table;
        table.row("pod", podYaml,
            "Owner:replicaset/web Node:node//pier-1 Service Account:serviceaccount/teller "
            "Claims:persistentvolumeclaim/disk Config Maps:configmap/rules Config Maps:configmap/root-ca "
            "Secrets:secret/tls Secrets:secret/true Secrets:secret/first Secrets:secret/pull "
            "Namespace:namespace//shop");
        table.row("cron job",
            "kind: CronJob\nspec: {jobTemplate: {spec: {template: {spec: {serviceAccountName: a}}}}}",
            "Service Account:serviceaccount//a");
        table.row("role binding",
            "kind: RoleBinding\nmetadata: {namespace: shop}\nroleRef: {kind: ClusterRole, name: view}\n"
            "subjects: [{kind: User, name: ada}, {kind: ServiceAccount, name: b, namespace: data}]",
            "Role:clusterrole//view Subjects:serviceaccount/data/b Namespace:namespace//shop");
        table.row("volume", "kind: PersistentVolume\nspec: {claimRef: {namespace: data, name: c}}",
            "Claim:persistentvolumeclaim/data/c");
        table.row(
            "autoscaler", "spec: {scaleTargetRef: {kind: Deployment, name: d}}", "Scales:deployment//d");
        table.row("ingress",
            "spec: {tls: [{secretName: t}], rules: [{http: {paths: [{backend: {service: {name: s}}}]}}, {}]}",
            "Services:service//s Secrets:secret//t");
        table.row("of other shapes", "kind: [Pod]\nspec: 5\nmetadata: {ownerReferences: {kind: x}}", "");
        table.row("nameless", "kind: Pod\nspec: {nodeName: '', volumes: [null, 3, {secret: x}]}", "");
        table.row("no map", "- a\n- b", "unreadable");
        table.row("no YAML", "a: [b", "unreadable");
        table.row("text", "Error from server", "unreadable");
        table.row("deep", QByteArray(100'000, '['), "unreadable");
        QByteArray bomb = "a0: &a0 [x,x,x,x,x,x,x,x,x,x]\n";
        for (int i = 1; i < 12; ++i) {
            const QByteArray alias = "*a" + QByteArray::number(i - 1);
            bomb += "a" + QByteArray::number(i) + ": &a" + QByteArray::number(i) + " [" + alias
                + QByteArray(", " + alias).repeated(9) + "]\n";
        }
        table.row("aliases of aliases", bomb, "unreadable");
    }
    void relations()
    {
        const auto &[yaml, expected] = Table<QByteArray, QString>::current();
        const std::optional<QJsonObject> object = objectOfYaml(yaml);
        QCOMPARE(object ? textOf(storyOf(*object, now).relations) : u"unreadable"_s, expected);
    }

    void containers()
    {
        const ObjectStory story = storyOf(objectOfYaml(podYaml).value(), now);
        QCOMPARE(story.uid, u"from-the-node"_s);
        QStringList told;
        for (const ContainerFacts &each : story.containers) {
            told.append(QStringList{each.name, each.state, each.lastState, each.restarts, each.image,
                each.ports, each.probes, QString::number(each.isInTrouble * 2 + each.hadTrouble)}
                            .join(u'|'));
        }
        QCOMPARE(told,
            (QStringList{u"wait (init)|Completed, exit code 0||0|busybox|||0"_s,
                u"app|CrashLoopBackOff: back-off|OOMKilled, exit code 137, 5m ago|12|app:1|http "
                u"8080/TCP\n53/UDP|"
                "Liveness: https :http/live every 10 s\nReadiness: exec cat /ready|3"_s,
                u"side|Running for 2h 0m, not ready||1|side:2||Startup: tcp :80|0"_s}));
    }

    void eventsAreRead()
    {
        const auto at
            = [](const char *minute) -> QByteArray { return "2027-01-15T07:" + QByteArray(minute) + ":00Z"; };
        const auto events = parseEvents(at("10") + "\tNormal\tOld\t3\t\t\t" + at("20") + "\t<nil>\tonce\t\n"
            + at("10") + "\tWarning\tNew\t\t7\t2027-01-15T07:50:00.123456Z\t\t\tfirst line\n\tsecond\t\n"
            + at("40") + "\tNormal\tBare");
        QStringList told;
        for (const ObjectEvent &each : events) {
            told.append(QStringList{QString::number((qint64(now) - each.time.value_or(0)) / 60), each.type,
                each.reason, each.message, each.count}
                            .join(u'|'));
        }
        QCOMPARE(told,
            (QStringList{u"10|Warning|New|first line\n\tsecond|7"_s, u"20|Normal|Bare||1"_s,
                u"40|Normal|Old|once|3"_s}));
        QVERIFY(parseEvents({}).empty());
        ObjectStory aPod;
        aPod.kind = u"Pod"_s;
        aPod.uid = u"u"_s;
        const QStringList arguments = eventArguments(aPod, u"a,b=c"_s);
        QCOMPARE(arguments.first(),
            u"--field-selector=involvedObject.name=a\\,b\\=c,involvedObject.kind=Pod,involvedObject.uid=u"_s);
    }

    void initTestCase()
    {
        m_demo = std::make_unique<DemoProcess>(QStringList{u"--still"_s}, kubectl(false));
        QVERIFY(m_demo->isReady());
        setCacheDirectory(m_cache.path());
    }
    void cleanupTestCase() { m_demo.reset(); }

    void onTheCluster_data()
    {
        QTest::addColumn<bool>("old");
        QTest::addColumn<bool>("everywhere");
        QTest::newRow("one namespace") << false << false;
        QTest::newRow("all namespaces, 1.20") << true << true;
    }
    void onTheCluster()
    {
        QFETCH(bool, old);
        QFETCH(bool, everywhere);
        open(old, everywhere ? QString(allNamespaces) : u"payments"_s);
        select(u"fraud-check-"_s, u"41"_s);
        QTest::keyClick(&m_table->tableView(), Qt::Key_Return);
        PreviewPanel &panel = PreviewPanel::shared();
        QTRY_VERIFY(text().contains(u"kind: Pod"_s));
        const QString pod = m_table->selectedObjects().first().name;
        QVERIFY2(
            QRegularExpression(u"Owner\\Wfraud-check-\\w+.*Node\\Wnode-.*Service Account\\Wfraud-check.*"
                               "Claims\\Wfraud-models.*Config Maps\\Wfraud-rules.*Secrets\\Wfraud-model.*"
                               "Namespace\\Wpayments"_s)
                .match(shown(relationsLine()))
                .hasMatch(),
            qPrintable(shown(relationsLine())));
        QVERIFY(commands().isEmpty()); // the preview itself is no command of the user's

        QTest::keyClick(panel.focusWidget(), Qt::Key_F6);
        QTRY_VERIFY2(
            description().contains(QRegularExpression(u"^Name: +"_s + pod)), qPrintable(description()));
        QCOMPARE(commands(), QStringList{u"kubectl describe --context=demo-harbor -npayments po/"_s + pod});
        const auto *containers = panel.findChild<ContainersTable *>();
        QCOMPARE(containers->columnCount(), 1);
        QVERIFY(containers->item(1, 0)->text().startsWith(u"OOMKilled, exit code 137"_s));

        QTest::keyClick(panel.focusWidget(), Qt::Key_F6);
        const auto *events = panel.findChild<EventsTable *>();
        QTRY_VERIFY(events->rowCount() > 0);
        QCOMPARE(events->item(0, 2)->text(), u"BackOff"_s);
        QCOMPARE(events->item(0, 4)->text(), u"41"_s);
        QCOMPARE(commands().size(), 2);
        QVERIFY(commands().last().startsWith(u"kubectl get events --context=demo-harbor -npayments "_s));
        QVERIFY(commands().last().contains(u",involvedObject.uid="_s));

        const bool isFirst = m_table->tableView().selectedRowsInOrder().front() == 0;
        QTest::keyClick(
            panel.focusWidget(), isFirst ? Qt::Key_Down : Qt::Key_Up); // the face stays, what it showed goes
        QCOMPARE(events->rowCount(), 0);
        QVERIFY(text().isEmpty() && description().isEmpty() && shown(relationsLine()).isEmpty());
        QTRY_VERIFY(says(u"No events of this object are known"_s));
        QCOMPARE(commands().size(), 3);
        panel.close();
    }

    void whatIsGoneIsNotTakenForAnother()
    {
        for (const char *name : {"story", "story-2"}) {
            m_demo->kubectl({u"run"_s, QString::fromLatin1(name), u"--image=x"_s, u"-nempty"_s});
        }
        for (const bool old : {false, true}) {
            open(old, u"empty"_s);
            select(u"story"_s, {});
            QTest::mouseDClick(m_table->tableView().viewport(), Qt::LeftButton, {},
                m_table->tableView().visualRect(m_table->arrangedObjects().index(0, 0)).center());
            QTRY_VERIFY(text().contains(u"name: story\n"_s));
            m_demo->kubectl({u"delete"_s, u"pod"_s, u"story"_s, u"-nempty"_s, u"--force"_s});
            QTest::keyClick(PreviewPanel::shared().focusWidget(), Qt::Key_F6);
            QTRY_VERIFY2(description().contains(u"\"story\" not found"_s), qPrintable(description()));
            QVERIFY(says(u"No description"_s));
            PreviewPanel::shared().close();
            m_demo->kubectl({u"run"_s, u"story"_s, u"--image=x"_s, u"-nempty"_s});
        }
    }

private:
    static QString kubectl(bool old)
    {
        return qEnvironmentVariable(old ? "TIDEWRIGHT_TEST_KUBECTL_OLD" : "TIDEWRIGHT_TEST_KUBECTL");
    }
    static RelationsLine &relationsLine() { return *PreviewPanel::shared().findChild<RelationsLine *>(); }
    static QString textNamed(const QString &name)
    {
        for (const auto *each : PreviewPanel::shared().findChildren<QPlainTextEdit *>()) {
            if (each->accessibleName() == name) {
                return each->toPlainText();
            }
        }
        return {};
    }
    static QString text() { return textNamed(u"Preview"_s); }
    static QString description() { return textNamed(u"Description"_s); }
    static bool says(const QString &sentence)
    {
        const auto labels = PreviewPanel::shared().findChildren<QLabel *>();
        return std::any_of(labels.cbegin(), labels.cend(),
            [&](const QLabel *label) { return label->isVisible() && label->text().startsWith(sentence); });
    }
    QStringList commands() const
    {
        QStringList lines;
        for (const QString &entry : std::as_const(m_window->recorded.entries)) {
            lines.append(entry.section(u'|', 0, 0));
        }
        return lines;
    }

    void open(bool old, const QString &nameSpace)
    {
        m_table.reset();
        m_window = std::make_unique<StubWindow>();
        setKubectlPath(kubectl(old));
        m_window->facade.configPath = m_demo->kubeconfig();
        m_window->context = u"demo-harbor"_s;
        m_window->nameSpace = nameSpace;
        const QString config = m_demo->kubectl({u"config"_s, u"view"_s, u"-ojson"_s}).output;
        m_window->facade.adopt(KubeConfigContents::parse(config.toUtf8()).value(), m_window->context);
        m_table = std::make_unique<SharedContentViewController>(podKind(), *m_window);
        m_table->show();
        m_table->load({});
        QTRY_VERIFY(!m_table->tableItems().empty() && !m_table->isLoading());
        m_window->recorded.entries.clear();
    }

    /// The first of that beginning, of which an event tells so often.
    void select(const QString &beginning, const QString &count)
    {
        m_table->setFilter(beginning);
        m_table->tableView().sortByColumn(0, Qt::AscendingOrder);
        m_table->tableView().setFocus();
        const QString told = m_demo
                                 ->kubectl({u"get"_s, u"events"_s, u"-A"_s,
                                     u"-ojsonpath={range .items[*]}{.involvedObject.name}:{.count} {end}"_s})
                                 .output;
        for (int row = 0; row < m_table->arrangedObjects().rowCount(); ++row) {
            const QString name = m_table->objectAt(row).name;
            if (count.isEmpty() || told.contains(name + u':' + count)) {
                m_table->tableView().selectRow(row);
                return;
            }
        }
        QFAIL("no such pod");
    }

    QTemporaryDir m_cache;
    std::unique_ptr<DemoProcess> m_demo;
    std::unique_ptr<StubWindow> m_window;
    std::unique_ptr<SharedContentViewController> m_table;
};

QTEST_MAIN(TestStory)
#include "tst_story.moc"
