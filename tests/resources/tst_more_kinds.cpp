// SPDX-License-Identifier: GPL-3.0-or-later
// What the rows of the further kinds show, and what their commands do to a demo cluster through real clients.
#include "AllKinds.h"
#include "core/kubeconfig/ContextPolicy.h"
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "platform/text/Timestamp.h"
#include "platform/threads/MainQueue.h"
#include "resources/controllers/DaemonSetController.h"
#include "resources/controllers/DeploymentController.h"
#include "resources/controllers/NodeController.h"
#include "resources/controllers/NodeDrain.h"
#include "resources/controllers/SecretController.h"
#include "resources/controllers/SecretWindow.h"
#include "resources/controllers/StatefulSetController.h"
#include "resources/controllers/StorageClassController.h"
#include "resources/listing/Merge.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/TableHeader.h"
#include "resources/usage/TopOutput.h"
#include "support/OpenQuestion.h"
#include "support/Patience.h"
#include "support/StubWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 30'000; // milliseconds

using MakeTable = SharedContentViewController *(*)(WindowState &);

template <typename Controller> SharedContentViewController *make(WindowState &window)
{
    return new Controller(window);
}

struct Command
{
    const char *name;
    MakeTable make;
    const char *nameSpace;
    const char *prepare; ///< kubectl's words before; may be empty
    QStringList rows;
    const char *title; ///< in the context menu
    const char *button; ///< of the question; empty where none is asked
    const char *asks; ///< a part of the question, as a pattern
    QStringList lines; ///< "@" stands for the context and the namespace, "*" for anything
    const char *query; ///< kubectl's words afterwards
    const char *result; ///< a pattern for what they print
};

const std::vector<Command> &commands()
{
    static const std::vector<Command> all{
        {"restart", make<DeploymentController>, "default", "", {u"greeter"_s, u"web"_s}, "Restart…",
            "Restart", "restart 2 deployments\\? All their pods",
            {u"rollout restart @ deployment/greeter deployment/web"_s},
            R"(get deploy greeter web -ojsonpath={.items[*].spec.template.metadata.annotations.kubectl\.kubernetes\.io/restartedAt})",
            "20\\S+ 20\\S+"},
        {"roll back", make<DeploymentController>, "default", "", {u"web"_s}, "Roll Back…", "Roll Back",
            "the deployment \"web\" back", {u"rollout undo @ deployment/web"_s},
            "get deploy web -ojsonpath={.spec.template.spec.containers[0].image}", "nginx:1.25.3-rc2"},
        {"pause", make<DeploymentController>, "default", "", {u"web"_s}, "Pause Roll-Out", "", "",
            {u"rollout pause @ deployment/web"_s}, "get deploy web -ojsonpath={.spec.paused}", "true"},
        {"resume", make<DeploymentController>, "default", "rollout pause deploy/web", {u"web"_s},
            "Resume Roll-Out", "", "", {u"rollout resume @ deployment/web"_s},
            "get deploy web -ojsonpath=<{.spec.paused}>", "<(false)?>"},
        {"scale a set", make<StatefulSetController>, "payments", "", {u"queue"_s}, "Scale…",
            "Scale Stateful Set", "\"queue\" to have\\? It has 3",
            {u"scale @ --replicas=5 statefulset/queue"_s}, "get pods -npayments -lapp=queue -oname",
            "(pod/queue-[0-4]\\s*){5}"},
        {"roll back a set", make<StatefulSetController>, "payments", "", {u"queue"_s}, "Roll Back…",
            "Roll Back", "the stateful set \"queue\" back", {u"rollout undo @ statefulset/queue"_s},
            "get pods -npayments -lapp=queue -ojsonpath={.items[*].spec.containers[0].image}",
            "(\\S+:3.12-rc2 ?){3}"},
        {"restart daemons", make<DaemonSetController>, "monitoring", "", {u"node-probe"_s}, "Restart…",
            "Restart", "the daemonset \"node-probe\"\\? All its pods",
            {u"rollout restart @ daemonset/node-probe"_s},
            R"(get po -nmonitoring -lapp=node-probe -ojsonpath={.items[*].metadata.annotations.kubectl\.kubernetes\.io/restartedAt})",
            "(20\\S+ ?){5}"},
        {"history", make<StatefulSetController>, "payments", "", {u"queue"_s}, "Roll-Out History", "", "",
            {u"rollout history @ statefulset/queue|*REVISION*"_s},
            "get sts queue -npayments -ojsonpath={.status.replicas}", "3"},
        {"cordon", make<NodeController>, "default", "", {u"node-amber-1"_s, u"node-amber-2"_s}, "Cordon", "",
            "", {u"cordon @ node-amber-1 node-amber-2"_s},
            "get no node-amber-1 node-amber-2 -ojsonpath={.items[*].spec.unschedulable}", "true true"},
        {"uncordon", make<NodeController>, "default", "", {u"node-cedar-2"_s}, "Uncordon", "", "",
            {u"uncordon @ node-cedar-2"_s}, "get no node-cedar-2 -ojsonpath=<{.spec.unschedulable}>",
            "<(false)?>"},
        {"drain", make<NodeController>, "default", "", {u"node-amber-2"_s}, "Drain…", "Drain",
            "drain the node \"node-amber-2\".*\\d+ pods have to leave it:\n    \\S+/\\S+\n.*stay: 2\\.",
            {u"drain @ --ignore-daemonsets --timeout=5m * node-amber-2"_s},
            "get po -A --field-selector=spec.nodeName=node-amber-2 "
            "-ojsonpath={.items[*].metadata.ownerReferences[0].kind}",
            "DaemonSet DaemonSet"},
        {"default class", make<StorageClassController>, "default", "", {u"fast-ssd"_s}, "Set as Default…",
            "Set as Default", "make \"fast-ssd\" the default.*\"standard\" is not the default any more",
            {u"annotate @ --overwrite storageclass standard storageclass.kubernetes.io/is-default-class=false"_s,
                u"annotate @ --overwrite storageclass fast-ssd storageclass.kubernetes.io/is-default-class=true"_s},
            R"(get sc fast-ssd standard -ojsonpath={.items[*].metadata.annotations.storageclass\.kubernetes\.io/is-default-class})",
            "true false"},
    };
    return all;
}

} // namespace

class TestMoreKinds : public QObject
{
    Q_OBJECT

    std::unique_ptr<StubWindow> m_window;
    std::unique_ptr<DemoProcess> m_demo;
    std::unique_ptr<SharedContentViewController> m_table;

    void enter(const QString &context)
    {
        m_window->context = context;
        const QByteArray contents = m_demo->kubectl({u"config"_s, u"view"_s, u"-ojson"_s}).output.toUtf8();
        m_window->facade.adopt(KubeConfigContents::parse(contents).value(), context);
    }
    void open(const QString &client, MakeTable makeTable, const QString &nameSpace, bool live = false)
    {
        setKubectlPath(client);
        m_demo = std::make_unique<DemoProcess>(QStringList{u"--still"_s, u"--pods=30"_s}, client);
        QVERIFY(m_demo->isReady());
        m_window = std::make_unique<StubWindow>();
        m_window->live = live;
        m_window->facade.configPath = m_demo->kubeconfig();
        m_window->nameSpace = nameSpace;
        enter(u"demo-harbor"_s);
        // What was chosen for the name in another kubeconfig would count here.
        ContextPolicies::shared().set({m_demo->kubeconfig(), u"demo-harbor"_s}, {});
        m_table.reset(makeTable(*m_window));
        m_table->resize(1100, 400);
        m_table->show();
    }
    void load()
    {
        QSignalSpy finished(m_table.get(), &SharedContentViewController::loadFinished);
        m_table->reloadLogging(false);
        QVERIFY(finished.wait(patience));
    }
    void select(const QStringList &names)
    {
        QItemSelectionModel &selection = *m_table->tableView().selectionModel();
        selection.clear();
        for (int row = 0; row < m_table->arrangedObjects().rowCount(); ++row) {
            if (names.contains(m_table->arrangedObjects().arrangedRow(row)->name)) {
                selection.select(m_table->arrangedObjects().index(row, 0),
                    QItemSelectionModel::Select | QItemSelectionModel::Rows);
            }
        }
        QCOMPARE(m_table->chosenCount(), int(names.size()));
    }
    /// Opens the menu that the keyboard asks for and triggers a command; returns the titles that are enabled.
    QStringList choose(const QString &title)
    {
        QStringList titles;
        QMetaObject::invokeMethod(
            this,
            [&titles, title] {
                auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
                QAction *chosen = nullptr;
                for (QAction *action : menu->actions()) {
                    if (action->isEnabled() && !action->isSeparator()) {
                        titles.append(action->text());
                    }
                    chosen = action->isEnabled() && action->text() == title ? action : chosen;
                }
                if (chosen) {
                    chosen->trigger();
                }
                menu->close();
            },
            Qt::QueuedConnection);
        QWidget &viewport = *m_table->tableView().viewport();
        QContextMenuEvent event(
            QContextMenuEvent::Keyboard, QPoint(5, 5), viewport.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(&viewport, &event);
        return titles;
    }
    OpenQuestion question() const { return OpenQuestion::over(*m_table); }
    void answer(const QString &button)
    {
        for (QCheckBox *box : question()->findChildren<QCheckBox *>()) {
            box->setChecked(true);
        }
        for (QSpinBox *field : question()->findChildren<QSpinBox *>()) {
            field->setValue(5);
        }
        for (QComboBox *keys : question()->findChildren<QComboBox *>()) {
            keys->setCurrentText(u"tls.key"_s);
        }
        for (QPushButton *candidate : question()->findChildren<QPushButton *>()) {
            if (candidate->text() == button) {
                candidate->click();
                return;
            }
        }
        QFAIL(qPrintable(button));
    }

    /// What the rows know, sorted.
    QStringList usageShown() const
    {
        QStringList rows;
        for (const Row &row : m_table->tableItems()) {
            const Usage usage = m_table->kind().usage(*row);
            rows += u"%1/%2 %3m %4Mi"_s.arg(row->nameSpace, row->name)
                        .arg(std::round(usage.cores * 1000))
                        .arg(usage.bytes / 0x1p20);
        }
        rows.sort();
        return rows.filter(QRegularExpression(u" \\d"_s));
    }
    /// What kubectl tells, in the same form.
    QStringList usageTold() const
    {
        const bool everywhere = m_window->nameSpace == allNamespaces;
        QStringList words{u"top"_s, m_table->kind().topWord, u"--no-headers"_s};
        if (m_table->kind().namespaced) {
            words += everywhere ? u"-A"_s : u"-n"_s + m_window->nameSpace;
        }
        QStringList rows;
        for (const QString &line : m_demo->kubectl(words).output.split(u'\n', Qt::SkipEmptyParts)) {
            QString figures = line.simplified().remove(QRegularExpression(u" \\d+%"_s));
            rows += everywhere ? figures.replace(figures.indexOf(u' '), 1, u"/"_s) : u'/' + figures;
        }
        rows.sort();
        return rows.filter(QRegularExpression(u" \\d"_s));
    }
    qint64 restarts() const
    {
        qint64 sum = 0;
        for (const Row &row : m_table->tableItems()) {
            sum += static_cast<const Pod &>(*row).restarts;
        }
        return sum;
    }

    static void eachClient(const std::function<void(const QString &client, const QByteArray &name)> &add)
    {
        for (const char *variable : {"TIDEWRIGHT_TEST_KUBECTL", "TIDEWRIGHT_TEST_KUBECTL_OLD"}) {
            if (const QString client = qEnvironmentVariable(variable); !client.isEmpty()) {
                add(client, QByteArray(variable).endsWith("OLD") ? "1.20" : "today's");
            }
        }
    }

private Q_SLOTS:
    void initTestCase() { mainQueue(); }
    void cleanup()
    {
        m_table.reset();
        m_window.reset();
        m_demo.reset();
        setClockForTesting(nullptr);
    }

    void linesBecomeRows_data()
    {
        QTest::addColumn<MakeKind>("makeKind");
        QTest::addColumn<QByteArray>("line"); // ends before the age
        QTest::addColumn<QString>("cells");
        const auto row
            = [](MakeKind makeKind, const char *name, const QByteArray &line, const QByteArray &cells) {
                  QTest::addRow("%s %s", qPrintable(makeKind().tableName), name)
                      << makeKind << line << QString::fromUtf8(cells);
              };
        row(statefulSetKind, "there", "q\t3\t3\t3\t3\tRollingUpdate\tq\ta:1,b:2,",
            "q|Available <NSStatusAvailable>|3|3|3|3|q|a:1, b:2");
        row(statefulSetKind, "rolling", "q\t3\t3\t2\t1\tRollingUpdate\tq\ta,",
            "q|Rolling out <NSStatusPartiallyAvailable>|3|3|2|1|q|a");
        row(statefulSetKind, "broken", "q\t2\t2\t<no value>\t2\tRollingUpdate\t<no value>\ta,",
            "q|Unavailable <NSStatusUnavailable>|2|2|0|2||a");
        row(statefulSetKind, "waits for a deletion", "q\t2\t2\t2\t<no value>\tOnDelete\tq\ta,",
            "q|Available <NSStatusAvailable>|2|2|2|0|q|a");
        row(statefulSetKind, "scaled to none", "q\t0\t1\t1\t1\tRollingUpdate\tq\ta,",
            "q|Scaling down <NSStatusPartiallyAvailable>|0|1|1|1|q|a");
        const char *const ready = "DiskPressure:False,Ready:True,";
        const char *const rest
            = "\tv1.30.0\tInternalIP:fd00::7,Hostname:n,\t7900m\t31Gi\t110\t2\tLinux\t6.1\tcontainerd://1.7";
        const auto node = [&](const char *name, const QByteArray &conditions, const char *labels,
                              const char *cells) {
            row(nodeKind, name, QByteArray("n\t").append(conditions).append('\t').append(labels).append(rest),
                QByteArray("n|").append(cells).append(
                    "|v1.30.0|7.9|–|31 Gi|–|110|2|fd00::7||Linux|6.1|containerd://1.7"));
        };
        node("ready", (QByteArray(ready) + "\t<no value>"), "map[node-role.kubernetes.io/worker: x:y]",
            "Ready <NSStatusAvailable>|worker");
        node("closed", (QByteArray(ready) + "\ttrue"),
            "map[kubernetes.io/role:old node-role.kubernetes.io/a: node-role.kubernetes.io/b:]",
            "Ready, SchedulingDisabled <NSStatusPartiallyAvailable>|a, b, old");
        node("under pressure", "DiskPressure:True,Ready:True,\t<no value>",
            "map[x:node-role.kubernetes.io/no]", "Ready, DiskPressure <NSStatusPartiallyAvailable>|");
        node("lost", "Ready:Unknown,\t<no value>", "<no value>", "NotReady <NSStatusUnavailable>|");
        node("new", "\t<no value>", "map[]", "Unknown <NSStatusUnavailable>|");
        row(ingressKind, "paths",
            "i\tedge\ta.x,<no value>,a.x,\t10.0.0.1,lb.x,\ttls\t/c cart,<no value> <no value>,\t<no value>",
            "i|edge|a.x, *|/c → cart, * → ?|10.0.0.1, lb.x|80, 443");
        row(ingressKind, "default backend", "i\t<no value>\t\t\t\t\tweb", "i||*|* → web||80");
        row(persistentVolumeClaimKind, "bound",
            "c\tBound\t\tpv\t10Gi\t5Gi\tReadWriteOnce,ReadWriteOncePod,\tfast\tBlock",
            "c|Bound <NSStatusAvailable>|pv|10Gi|5Gi|RWO, RWOP|fast|Block");
        row(persistentVolumeClaimKind, "waiting",
            "c\tPending\t\t<no value>\t<no value>\t5Gi\tReadOnlyMany,ReadWriteMany,\t<no value>\t<no value>",
            "c|Pending <NSStatusPartiallyAvailable>|||5Gi|ROX, RWX||");
        row(persistentVolumeClaimKind, "going", "c\tLost\tgoing\tpv\t\t1\t\t\t",
            "c|Terminating <NSStatusPartiallyAvailable>|pv||1|||");
        row(persistentVolumeClaimKind, "lost", "c\tLost\t\tpv\t\t1\t\t\t",
            "c|Lost <NSStatusUnavailable>|pv||1|||");
        row(storageClassKind, "default", "s\ttrue\t\tdisk\tDelete\tImmediate\ttrue",
            "s|Default <NSStatusAvailable>|disk|Delete|Immediate|Yes");
        row(storageClassKind, "default of old", "s\tfalse\ttrue\tdisk\tDelete\tImmediate\t",
            "s|Default <NSStatusAvailable>|disk|Delete|Immediate|No");
        row(storageClassKind, "usual", "s\tfalse\t\tdisk\tRetain\tImmediate\tfalse",
            "s||disk|Retain|Immediate|No");
        const char *const none = "<no value>\t<no value>";
        row(horizontalPodAutoscalerKind, "version 1", "h\tDeployment\tweb\t<no value>\t5\t2\t2\t80\t45\t\t\t",
            "h|Steady <NSStatusAvailable>|Deployment/web|cpu: 45%/80%|1|5|2|2");
        row(horizontalPodAutoscalerKind, "version 2",
            QByteArray("h\tStatefulSet\tq\t2\t5\t5\t5\t")
                .append(none)
                .append(
                    "\tcpu 80 <no value>,requests <no value> 10,memory <no value> 1Gi,queue 30 <no value>,\t"
                    "cpu 91 910m,requests <no value> 12,queue 4 <no value>,\t"
                    "ScalingLimited:True:TooManyReplicas,ScalingActive:True:ValidMetricFound,"),
            "h|At its limit <NSStatusPartiallyAvailable>|StatefulSet/q|cpu: 91%/80%, requests: 12/10, "
            "memory: ?/1Gi, "
            "queue: 4/30|2|5|5|5");
        row(horizontalPodAutoscalerKind, "nothing measured",
            QByteArray("h\tDeployment\tw\t1\t5\t1\t1\t")
                .append(none)
                .append("\tcpu 80 <no "
                        "value>,\t\tAbleToScale:True:ok,ScalingActive:False:FailedGetResourceMetric,"),
            "h|Cannot measure <NSStatusUnavailable>|Deployment/w|cpu: ?/80%|1|5|1|1");
        row(horizontalPodAutoscalerKind, "on its way",
            QByteArray("h\tDeployment\tw\t1\t5\t1\t4\t").append(none).append("\t\t\tScalingActive:True:ok,"),
            "h|Scaling <NSStatusPartiallyAvailable>|Deployment/w||1|5|1|4");
        row(networkPolicyKind, "all closed", "p\tmap[]\t\tIngress,Egress,\t\t",
            "p|All pods|Ingress, Egress|Closed|Closed");
        row(networkPolicyKind, "expressions",
            "p\tmap[app:web]\ttier In [a b],x Exists <no value>,y DoesNotExist [],\tIngress,\t2\t",
            "p|app=web, tier in (a, b), x, !y|Ingress|2|Open");
        row(roleBindingKind, "all sorts",
            "b\tClusterRole/view\tServiceAccount ci bot,Group <no value> system:masters,User <no value> a b,",
            "b|ClusterRole/view|a b|system:masters|ci/bot");
        row(customResourceDefinitionKind, "established",
            "c\tVessel\tx.y\tv1,v2,\tNamespaced\tvsl,\tNamesAccepted:True,Established:True,",
            "c|Established <NSStatusAvailable>|Vessel|x.y|v1, v2|Namespaced|vsl");
        row(customResourceDefinitionKind, "taken", "c\tVessel\tx.y\tv1,\tCluster\t\tNamesAccepted:False,",
            "c|Names taken <NSStatusUnavailable>|Vessel|x.y|v1|Cluster|");
    }
    void linesBecomeRows()
    {
        setClockForTesting([] { return 1'800'000'000.; });
        QFETCH(MakeKind, makeKind);
        QFETCH(QByteArray, line);
        QFETCH(QString, cells);
        const ResourceKind kind = makeKind();
        const MergeResult merged = mergeListing(kind, line + "\t2027-01-15T06:59:00Z", {});
        QCOMPARE(merged.skippedLines, 0U);
        QCOMPARE(cellsOf(kind, *merged.added.front()), cells + u"|1h 1m"_s);
    }

    void troubleComesFirst()
    {
        const ResourceKind kind = nodeKind();
        const Column &status = kind.columns[static_cast<std::size_t>(kind.indexOf("status"_L1))];
        std::vector<SortKey> keys;
        for (const char *state : {"Ready:False,\t", "Ready:True,\ttrue", "Ready:True,\t"}) {
            const QByteArray line = QByteArray("n\t") + state + "\t\t\t\t\t\t\t\t\t\t\t";
            keys.push_back(status.sortKey(*mergeListing(kind, line, {}).added.at(0)));
        }
        QVERIFY(keys[0] < keys[1] && keys[1] < keys[2]);
    }

    void commandsReachTheCluster_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<int>("number");
        eachClient([](const QString &client, const QByteArray &name) {
            for (std::size_t i = 0; i < commands().size(); ++i) {
                QTest::addRow("%s, %s", commands()[i].name, name.data()) << client << static_cast<int>(i);
            }
        });
    }
    void commandsReachTheCluster()
    {
        QFETCH(QString, client);
        QFETCH(int, number);
        const Command &command = commands()[static_cast<std::size_t>(number)];
        open(client, command.make, QString::fromLatin1(command.nameSpace));
        const auto kubectl = [this](const char *words) {
            return m_demo->kubectl(QString::fromUtf8(words).split(u' ')).output;
        };
        if (*command.prepare) {
            kubectl(command.prepare);
        }
        load();
        select(command.rows);
        choose(QString::fromUtf8(command.title));
        if (*command.button) {
            QTRY_VERIFY_WITH_TIMEOUT(question(), patience);
            const QRegularExpression asked(
                QString::fromUtf8(command.asks), QRegularExpression::DotMatchesEverythingOption);
            QVERIFY2(question().message().contains(asked), qPrintable(question().message()));
            QVERIFY(m_window->recorded.entries.isEmpty()); // nothing is done before
            answer(QString::fromUtf8(command.button));
        }
        const QStringList &entries = m_window->recorded.entries;
        QTRY_VERIFY_WITH_TIMEOUT(entries.size() >= command.lines.size(), patience);
        for (qsizetype i = 0; i < command.lines.size(); ++i) {
            QString wanted = QRegularExpression::escape(u"kubectl "_s + command.lines[i]);
            wanted.replace(u"\\@"_s,
                m_table->kind().namespaced ? u"--context=demo-harbor -n%1"_s.arg(m_window->nameSpace)
                                           : u"--context=demo-harbor"_s);
            wanted.replace(u"\\*"_s, u"[^|]*"_s);
            QVERIFY2(entries[i].contains(QRegularExpression(u'^' + wanted + u"(\\||$)"_s)),
                qPrintable(entries[i]));
        }
        const QString outcome = kubectl(command.query);
        QVERIFY2(outcome.contains(QRegularExpression(
                     QRegularExpression::anchoredPattern(QString::fromUtf8(command.result) + u"\\s*"_s))),
            qPrintable(outcome + entries.join(u'\n')));
    }

    void whatTopPrints_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<bool>("withNamespace");
        QTest::addColumn<QString>("read"); // namespace/name cores bytes
        const auto row = [](const char *line, bool withNamespace, const char *read) {
            QTest::newRow(line) << QByteArray(line) << withNamespace << QString::fromLatin1(read);
        };
        row("web-1   12m   34Mi  ", false, "/web-1 0.012 35651584");
        row("shop web-1 1250m 2Gi", true, "shop/web-1 1.25 2147483648");
        row("web 2 512Ki", false, "/web 2 524288");
        row("web 250u 0", false, "/web 0.00025 0");
        row("n-1 1935m 24% 5215Mi 16%", false, "/n-1 1.935 5468323840");
        row("n-1 <unknown> <unknown> 1Mi 1%", false, "/n-1 -1 1048576");
        row("n-1 <unknown> <unknown> <unknown> <unknown>", false, "");
        row("web nan inf", false, "");
        row("web -5m -1Mi", false, "");
        row("web 5m", false, "");
        row("W1123 some words in a line", false, "");
        row("", true, "");
    }
    void whatTopPrints()
    {
        QFETCH(QByteArray, line);
        QFETCH(bool, withNamespace);
        QString read;
        const Usages usages = usagesOf(line + '\n', withNamespace);
        for (auto usage = usages.cbegin(); usage != usages.cend(); ++usage) {
            read += u"%1/%2 %3 %4"_s.arg(usage.key().first, usage.key().second)
                        .arg(usage->cores)
                        .arg(usage->bytes, 0, 'f', 0);
        }
        QTEST(read, "read");
    }

    void whatObjectsUseIsShownWhileItIsKnown_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<QString>("nameSpace");
        QTest::addColumn<bool>("live");
        eachClient([](const QString &client, const QByteArray &name) {
            QTest::addRow("%s, one namespace", name.data()) << client << u"fleet"_s << false;
            QTest::addRow("%s, all, live", name.data()) << client << allNamespaces << true;
            QTest::addRow("%s, nodes", name.data()) << client << QString() << false;
        });
    }
    void whatObjectsUseIsShownWhileItIsKnown()
    {
        QFETCH(QString, client);
        QFETCH(QString, nameSpace);
        QFETCH(bool, live);
        const bool isOfNodes = nameSpace.isEmpty();
        const MakeTable makePods
            = [](WindowState &window) { return new SharedContentViewController(podKind(), window); };
        open(client, isOfNodes ? make<NodeController> : makePods, isOfNodes ? u"default"_s : nameSpace, live);
        m_window->recorded.entries.clear();
        load();
        const ResourceKind &kind = m_table->kind();
        const int cores = kind.indexOf(isOfNodes ? "usedCPU"_L1 : "cpu"_L1);
        const auto hasEntry
            = [this](const QString &part) { return m_window->recorded.entries.filter(part).size(); };
        QVERIFY(usageShown().isEmpty()); // nobody looks
        m_table->tableView().setColumnHidden(cores, false);
        m_table->arrangedObjects().sort(cores, Qt::DescendingOrder);
        const QStringList first = usageTold();
        QVERIFY(first.size() > 5);
        QTRY_COMPARE(usageShown(), first);
        QCOMPARE(hasEntry(u"kubectl top %1 --context=demo-harbor"_s.arg(kind.topWord)), 1);
        const ArrangingModel &model = m_table->arrangedObjects();
        const auto cell = [&](int row) { return model.index(row, cores).data().toString(); };
        QVERIFY(cell(0).toDouble() >= cell(1).toDouble() && cell(1).toDouble() > 0);

        if (!isOfNodes) { // what it becomes is shown with the next answer, whatever else is told meanwhile
            if (live) { // another stream makes all rows anew
                QSignalSpy finished(m_table.get(), &SharedContentViewController::loadFinished);
                for (const bool on : {false, true}) {
                    m_window->live = on;
                    Q_EMIT m_window->liveUpdatesChanged();
                }
                QVERIFY(finished.wait(patience));
                QTRY_COMPARE(usageShown(), first);
            }
            const qint64 before = restarts();
            QVERIFY(m_demo->control("{\"changePods\":9}"));
            if (!live) {
                load();
            }
            QTRY_VERIFY(restarts() > before);
            QCOMPARE(usageShown(), first);
            auto *timer = m_table->findChild<QTimer *>(u"usageTimer"_s);
            QVERIFY(QMetaObject::invokeMethod(timer, "timeout"));
            const QStringList second = usageTold();
            QVERIFY(second.size() < first.size());
            QTRY_COMPARE(usageShown(), second);
            QCOMPARE(cell(model.rowCount() - 1), u"–"_s); // at the end in this order too
            QVERIFY(QMetaObject::invokeMethod(timer, "timeout")); // the answer comes too late
        }
        QCOMPARE(hasEntry(u"kubectl top"_s), 1);

        enter(u"demo-lighthouse"_s);
        m_window->nameSpace = u"default"_s;
        m_table->clearAndReload({});
        const auto *header = static_cast<TableHeader *>(m_table->tableView().horizontalHeader());
        QTRY_VERIFY(header->explanation(cores).contains(u"Metrics API not available"_s));
        QVERIFY(!m_table->tableItems().empty() && usageShown().isEmpty());
        QCOMPARE(hasEntry(u"kubectl top"_s), 1);
        m_table->reload(); // the user wants to know
        QTRY_COMPARE(hasEntry(u"Metrics API not available"_s), 1);
    }

    void readOnlyContextsAreLeftAlone()
    {
        open(qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"), make<StatefulSetController>, u"payments"_s);
        const ContextKey context(m_demo->kubeconfig(), u"demo-harbor"_s);
        ContextPolicies::shared().set(context, {ContextAccess::ReadOnly, ContextColour::None});
        const auto freed = qScopeGuard([&context] { ContextPolicies::shared().set(context, {}); });
        load();
        select({u"queue"_s});
        QCOMPARE(choose(QString()),
            (QStringList{u"Copy Name"_s, u"Quick Look"_s, u"View Logs"_s, u"View Logs of All Pods"_s,
                u"Show Pods"_s, u"View Configuration"_s, u"Roll-Out History"_s, u"Reload"_s}));
        auto &table = static_cast<StatefulSetController &>(*m_table);
        table.scale(); // as by a key, whatever the menu says
        table.restart();
        QVERIFY(!question());
        QCOMPARE(m_window->recorded.entries.filter(u"is read-only"_s).size(), 2);
    }

    void whatANodeLosesIsToldApart()
    {
        const QByteArray pods = "shop\tRunning\tReplicaSet\t<no value><no value>\tcart\n"
                                "shop\tRunning\tReplicaSet\t<no value>map[sizeLimit:1Gi]\tscratch\n"
                                "dev\tRunning\t\t\tbare\ndev\tSucceeded\t\tmap[]\tdone\n"
                                "kube\tRunning\tDaemonSet\tmap[]\tagent\nkube\tRunning\tNode\t\tstatic";
        const DrainPlan plan = DrainPlan::read(pods);
        QCOMPARE(plan.leaving.join(u' '), u"shop/cart shop/scratch dev/bare dev/done"_s);
        QCOMPARE(plan.staying.join(u' '), u"kube/agent kube/static"_s);
        QCOMPARE(plan.unmanaged.join(u' '), u"dev/bare"_s);
        QCOMPARE(plan.withLocalData.join(u' '), u"shop/scratch"_s);
    }

    void aSecretIsShownForAMinute_data()
    {
        QTest::addColumn<QString>("client");
        eachClient(
            [](const QString &client, const QByteArray &name) { QTest::newRow(name.data()) << client; });
    }
    void aSecretIsShownForAMinute()
    {
        QFETCH(QString, client);
        open(client, make<SecretController>, u"default"_s);
        const QString patch = u"{\"data\":{\"tls.key\":\"%1\"}}"_s.arg(
            QString::fromLatin1(QByteArray(" two\n lines \n").toBase64()));
        QCOMPARE(m_demo->kubectl({u"patch"_s, u"secret"_s, u"web-tls"_s, u"-p"_s, patch}).exitCode, 0);
        load();
        select({u"web-tls"_s});
        choose(u"Decode Key…"_s);
        QTRY_VERIFY_WITH_TIMEOUT(question(), patience);
        answer(u"Show Value"_s);
        QPointer<SecretWindow> shown;
        QTRY_VERIFY_WITH_TIMEOUT(shown = m_table->findChild<SecretWindow *>(), patience);
        const auto *value = shown->findChild<QPlainTextEdit *>();
        QCOMPARE(value->toPlainText(), u" two\n lines \n"_s); // to the byte
        for (int second = 1; second < 60; ++second) {
            shown->passSecond();
        }
        QVERIFY(!value->toPlainText().isEmpty());
        shown->passSecond();
        QCOMPARE(value->toPlainText(), QString());
        shown->close();
        QTRY_VERIFY(!shown);
        QCOMPARE(m_window->recorded.entries, QStringList());
        SecretWindow bytes(u"s"_s, u"k"_s, "\xff\x01", nullptr);
        QCOMPARE(bytes.findChild<QPlainTextEdit *>()->toPlainText(), u"/wE="_s);
    }
};

QTEST_MAIN(TestMoreKinds)
#include "tst_more_kinds.moc"
