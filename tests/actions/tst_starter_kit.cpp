// SPDX-License-Identifier: GPL-3.0-or-later
#include "ActionBench.h"
#include "actions/ActionForm.h"
#include "actions/ActionTerminal.h"
#include "demo/DemoProcess.h"
#include "external/TerminalQuoting.h"
#include "support/Patience.h"
#include "support/Table.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRegularExpression>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

void collect(
    const std::vector<ActionNode> &nodes, std::map<QString, std::shared_ptr<CustomActionItem>> &found)
{
    for (const ActionNode &node : nodes) {
        if (node.item) {
            found[node.title] = node.item;
        }
        collect(node.children, found);
    }
}

} // namespace

/// Every action of the starter kit, as it is after the first start, and of the guide, against the demo
/// cluster.
class TestStarterKit : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        const QString kubectl = QString::fromUtf8(qgetenv("TIDEWRIGHT_TEST_KUBECTL"));
        setKubectlPath(kubectl);
        m_demo = std::make_unique<DemoProcess>(QStringList{u"--still"_s}, kubectl);
        QVERIFY(m_demo->isReady());
        m_bench = std::make_unique<ActionBench>();
        qputenv("HOME", m_bench->path(u"home"_s).toUtf8());
        SharedActionTree tree;
        loadActionsInBackground(&m_receiver, [&tree](const auto &loaded) { tree = loaded; });
        QTRY_VERIFY(tree);
        QVERIFY(tree->problems.isEmpty());
        collect(tree->nodes, m_actions);
        QCOMPARE(m_actions.size(), 11U);
        for (const auto &[title, item] : m_actions) {
            const QString folder = QFileInfo(item->scriptURL()).path();
            QVERIFY2(item->configURL(), qPrintable(title));
            QCOMPARE(QImage(folder + u"/icon.png"_s).size(), QSize(64, 64));
            QCOMPARE(QImage(folder + u"/menu.png"_s).size(), QSize(32, 32));
        }
        takeExamplesOfTheGuide();
        QCOMPARE(m_demo
                     ->kubectl({u"create"_s, u"-f"_s,
                         m_demo->writeFile(u"event.json"_s, R"({"apiVersion": "v1", "kind": "Event",
                             "metadata": {"name": "bare", "namespace": "shop"}, "involvedObject": {}})")})
                     .exitCode,
            0);
        setActionTerminal([this](const QString &line, const QString & /*shown*/, const QString & /*used*/) {
            const QString command = u"( "_s + withoutLiteralEscapes(line) + u" ) 2>&1"_s;
            const auto result = runToEnd(Shell::create(), {u"sh"_s, u"-c"_s, command});
            mainQueue().post([this, result] { m_terminal = result.output; });
        });
    }
    void cleanupTestCase()
    {
        m_bench.reset();
        m_demo.reset();
    }

    void run_data()
    {
        // Title, resource (NAME=value; "%web" stands for a restarted pod of web), namespace, answers
        // ("field=value", a button, or "?" and what is asked), what is shown (in the console, the terminal or
        // a notification), effect (arguments of kubectl after it, and what it then prints).
        const Table<QString, QString, QString, QStringList, QString, QString> table;
        const auto row
            = [&table](const QByteArray &title, const QByteArray &resource, const QStringList &answers,
                  const char *shown, const char *effect = "", const QByteArray &nameSpace = "default") {
                  table.row(title + ", " + nameSpace + ' ' + resource, title.constData(),
                      resource.constData(), nameSpace.constData(), answers, shown, effect);
              };
        const char *const everywhere = "All Namespaces";
        const QStringList accepted{u"OK"_s};
        row("Describe Pod", "POD=debug-shell", {}, "Name:         debug-shell");
        row("Previous Logs", "POD=%fraud-check CONTAINER=scorer", {}, "seq=", "", "payments");
        for (const auto &[title, resource] :
            {std::pair("Describe Pod", "POD=--help"), {"Previous Logs", "POD=--help CONTAINER=x"},
                {"Shell in Container", "POD=--help CONTAINER=x"}}) {
            row(title, resource, {}, "\"--help\" not found");
        }
        row("Decode Secret", "SECRET=--help", accepted, "\"--help\" not found");
        // The demo cluster refuses to connect to containers; that it is asked to shows in what it answers.
        row("Shell in Container", "POD=debug-shell CONTAINER=shell", {},
            "the demo cluster does not serve connections");
        row("Forward Port", "SERVICE=web", {}, "port 80 will be at http://localhost:8080");
        row("Restart Deployment", "DEPLOYMENT=greeter", accepted, "deployment.apps/greeter restarted",
            "rollout history deployment/greeter -n default|2         <none>");
        row("Roll Back Deployment", "DEPLOYMENT=greeter", accepted, "deployment.apps/greeter rolled back",
            "rollout history deployment/greeter -n default|3         <none>");
        row("Decode Secret", "SECRET=web-tls", accepted,
            "tls.key: demo key\nPress Return to clear the screen.\n\033[H\033[2J\033[3J");
        row("Summarise Events", "", {}, "-             1  - (-)\n", "", everywhere);
        row("Summarise Events", "", {}, "SuccessfulCreate (ReplicaSet)", "", everywhere);
        row("Scale by Pattern", "", {u"pattern=w?b*"_s, u"replicas=5"_s, u"Continue"_s, u"Scale"_s},
            "deployment.apps/web scaled", "get deploy web -n default -o jsonpath={.spec.replicas}|5");
        row("Scale by Pattern", "",
            {u"?*,,deployments,false: The pattern may hold"_s, u"pattern=w*"_s, u"replicas=²"_s,
                u"Continue"_s, u"?w*,²,deployments,false: The number of replicas must be a whole number"_s,
                u"pattern=z*"_s, u"replicas=2"_s, u"Continue"_s,
                u"?z*,2,deployments,false: No name of the deployments here matches \"z*\"."_s,
                u"pattern=w*"_s, u"replicas=9999999999"_s, u"Continue"_s, u"Scale"_s,
                u"?w*,9999999999,deployments,false: "_s, u"Cancel"_s},
            "kubectl get deployments -o name --context=demo-harbor -n default");
        row("Delete Finished Pods", "", {u"?: Choose a namespace first."_s, u"OK"_s}, "", "", everywhere);
        row("Delete Finished Pods", "", {u"show=no"_s, u"OK"_s, u"?: pod/toolbox"_s, u"Delete"_s},
            "pod \"toolbox\" deleted", "get po toolbox -n default|NotFound");
        row("Count Restarts", "DEPLOYMENT=fraud-check", {}, "|243 restarts", "", "payments");
        row("Restart and Watch", "DEPLOYMENT=nowhere",
            {u"Restart"_s, u"?: Error from server (NotFound)"_s, u"OK"_s},
            "kubectl rollout restart deployment/nowhere");
        row("Restart and Watch", "DEPLOYMENT=web", {u"Restart"_s, u"Tell Me"_s},
            "web|demo-harbor\ndeployment \"web\" successfully",
            "rollout history deployment/web -n default|2         <none>");
        row("Notify When Rolled Out", "DEPLOYMENT=web", {},
            "web|demo-harbor\ndeployment \"web\" successfully");
        row("Notify When Rolled Out", "DEPLOYMENT=nowhere", {},
            "The rollout has not ended: Error from server (NotFound)");
    }
    void run()
    {
        const auto [title, resource, nameSpace, answers, shown, effect]
            = Table<QString, QString, QString, QStringList, QString, QString>::current();
        ActionEnvironment environment{{u"KUBECONFIG"_s, m_demo->kubeconfig()},
            {u"CONTEXT"_s, u"demo-harbor"_s}, {u"NAMESPACE"_s, nameSpace}};
        for (const QString &entry : resource.split(u' ', Qt::SkipEmptyParts)) {
            const QString value = entry.section(u'=', 1);
            environment.insert(
                entry.section(u'=', 0, 0), value.startsWith(u'%') ? restartedPod(value.mid(1)) : value);
        }
        m_bench->console.entries.clear();
        m_bench->notifications.clear();
        m_terminal.clear();
        const auto action = m_actions.find(title);
        QVERIFY(action != m_actions.end());
        action->second->performAction(environment);
        for (const QString &answer : answers) {
            QTRY_VERIFY_WITH_TIMEOUT(m_bench->dialog(), 15'000);
            const auto fields = m_bench->dialog()->findChildren<QLineEdit *>();
            auto *kind = m_bench->dialog()->findChild<QComboBox *>();
            auto *show = m_bench->dialog()->findChild<QCheckBox *>();
            if (answer.startsWith(u'?')) {
                QStringList texts;
                for (const QLineEdit *field : fields) {
                    texts.append(field->text());
                }
                if (kind && show) {
                    texts += {kind->currentText(), QVariant(show->isChecked()).toString()};
                }
                const QString asked = texts.join(u',') + u": "_s + m_bench->dialog().message();
                QVERIFY2(asked.startsWith(answer.mid(1)), qPrintable(asked));
            } else if (answer.contains(u'=')) {
                QVERIFY(kind && show);
                const QString value = answer.section(u'=', 1);
                if (answer.startsWith(u"kind")) {
                    kind->setCurrentText(value);
                } else if (answer.startsWith(u"show")) {
                    show->setChecked(value == u"yes");
                } else {
                    fields[answer.startsWith(u"pattern") ? 0 : 1]->setText(value);
                }
            } else {
                m_bench->press(answer);
            }
        }
        const auto all = [this]() -> QString {
            return m_bench->console.entries.join(u'\n') + u'\n' + m_bench->notifications.join(u'\n') + u'\n'
                + QString::fromUtf8(m_terminal);
        };
        const bool isShown = QTest::qWaitFor([&] { return all().contains(shown); }, 20'000);
        QVERIFY2(isShown, qPrintable(all()));
        QTRY_VERIFY(m_bench->isIdle());
        QVERIFY2(!all().contains(u"Recieved"), qPrintable(all()));
        QVERIFY(!m_bench->dialog());
        if (!effect.isEmpty()) {
            const Outcome outcome = m_demo->kubectl(effect.section(u'|', 0, 0).split(u' '));
            const QString told = outcome.output + outcome.errors;
            QVERIFY2(told.contains(effect.section(u'|', 1)), qPrintable(told));
        }
    }

    void saysNothing()
    {
        const QString kubectl = kubectlPath();
        m_bench->write(u"quiet.sh"_s, "#!/bin/sh\n");
        setKubectlPath(m_bench->path(u"quiet.sh"_s));
        m_bench->notifications.clear();
        m_actions.at(u"Notify When Rolled Out"_s)
            ->performAction({{u"CONTEXT"_s, u"here"_s}, {u"DEPLOYMENT"_s, u"web"_s}});
        QTRY_COMPARE(m_bench->notifications, QStringList{u"web|here\nThe rollout has ended."_s});
        const QByteArray cleared = "\033[H\033[2J\033[3J";
        for (const auto &[script, shown] :
            {std::pair("echo secret; kill -INT $PPID"_ba, QByteArray()), // as Ctrl+C does
                std::pair("printf 'a\\033]52;x\\007\\302\\233m\\303\\244'"_ba,
                    "a?]52;x??m\xc3\xa4\nPress Return to clear the screen.\n"_ba)}) {
            m_bench->write(u"quiet.sh"_s, "#!/bin/sh\n" + script + '\n');
            m_actions.at(u"Decode Secret"_s)->performAction({{u"SECRET"_s, u"s"_s}});
            QTRY_VERIFY(m_bench->dialog());
            m_bench->press(u"OK"_s);
            QTRY_COMPARE(m_terminal, shown + cleared);
            m_terminal.clear();
        }
        setKubectlPath(kubectl);
    }

private:
    /// What a reader of docs/actions.md would write by it.
    void takeExamplesOfTheGuide()
    {
        QFile guide(QStringLiteral(ACTIONS_GUIDE));
        QVERIFY(guide.open(QIODevice::ReadOnly));
        static const QRegularExpression file(u"\n`Actions/([^`]+)`.*:\n\n```\\w+\n([^`]+)```"_s);
        for (const auto &match : file.globalMatch(QString::fromUtf8(guide.readAll()))) {
            m_bench->write(match.captured(1), match.captured(2).toUtf8());
        }
        collect(loadActionFolders({m_bench->path(u"Pods of Mine"_s)}).nodes, m_actions);
    }

    /// A pod of a deployment, one that has been restarted.
    QString restartedPod(const QString &deployment) const
    {
        const QString listed = m_demo->kubectl({u"get"_s, u"po"_s, u"-A"_s, u"--no-headers"_s}).output;
        for (const QString &line : listed.split(u'\n')) {
            const QStringList words = line.simplified().split(u' ');
            if (words.value(1).startsWith(deployment + u'-') && words.value(4).toInt() > 0) {
                return words[1];
            }
        }
        return {};
    }

    std::unique_ptr<DemoProcess> m_demo;
    std::unique_ptr<ActionBench> m_bench;
    QObject m_receiver;
    std::map<QString, std::shared_ptr<CustomActionItem>> m_actions;
    QByteArray m_terminal;
};

QTEST_MAIN(TestStarterKit)
#include "tst_starter_kit.moc"
