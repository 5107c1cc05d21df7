// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ApplicationRecord.h"
#include "core/KubeCtl.h"
#include "platform/MainQueue.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

using namespace tidewright;
using namespace tidewright::test;

namespace {

#define CONTEXTS                                                                                             \
    "\"config\"\n\"view\"\n\"-ojsonpath={.current-context}\n{range .contexts[*]}{.name}\t{end}\"\n"
#define NAMESPACES "\"get\"\n\"ns\"\n\"-o=jsonpath={.items[*].metadata.name}\"\n"
#define LOGGED "kubectl get ns -o=jsonpath={.items[*].metadata.name}|"
#define USE(name) "\"config\"\n\"use-context\"\n\"" name "\"\n"
#define SET(name) "\"config\"\n\"set-context\"\n\"--current\"\n\"--namespace=" name "\"\n"
#define GOT " could be loaded.  Please ensure you have access and try again. \n\nGot error: "
#define NOT_LOADED " could not be loaded.  Please ensure you have access and try again. \n\nGot error: "
#define NOTHING                                                                                              \
    "No contexts could be found when running `kubectl config view`.  Please ensure you have access to a "    \
    "context and "                                                                                           \
    "try again."

/// One facade operation, its shell, and what its completion was given, with the thread:
/// "a,b/current@background".
struct Operation
{
    std::weak_ptr<Shell> shell;
    std::shared_ptr<std::promise<QString>> answer = std::make_shared<std::promise<QString>>();
    std::shared_future<QString> answered = answer->get_future().share();

    Operation(const KubeCtl &kubeCtl, const QString &name, const QString &argument)
    {
        const auto say = [answer = answer](const QString &text) {
            const bool onMain = QThread::currentThread() == QCoreApplication::instance()->thread();
            answer->set_value(text + (onMain ? u"@main" : u"@background"));
        };
        const auto sayWhether
            = [say](bool success) { say(success ? QStringLiteral("yes") : QStringLiteral("no")); };
        if (name == u"loadContexts") {
            shell = kubeCtl.loadContexts([say](const QStringList &contexts, const QString &current) {
                say(contexts.join(u',') + u'/' + current);
            });
        } else if (name == u"loadNamespaces") {
            shell = kubeCtl.loadNamespaces(
                [say](const QStringList &namespaces) { say(namespaces.join(u',')); });
        } else if (name == u"useContext") {
            shell = kubeCtl.useContext(argument, sayWhether);
        } else {
            shell = kubeCtl.setNamespace(argument, sayWhether);
        }
    }

    /// After the run, and whatever it posted to the main thread: the answer, empty when there was none.
    QString finish()
    {
        if (!QTest::qWaitFor([this] { return shell.expired(); }, 20'000)) {
            return QStringLiteral("(still running)");
        }
        bool posted = false;
        mainQueue().post([&posted] { posted = true; });
        if (!QTest::qWaitFor([&posted] { return posted; })) {
            return QStringLiteral("(no main queue)");
        }
        const bool there = answered.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        return there ? answered.get() : QString();
    }
};

} // namespace

class TestKubeCtl : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { mainQueue(); }
    void init()
    {
        setKubectlPath(fakeToolPath());
        m_folder = std::make_unique<QTemporaryDir>();
        m_console = std::make_unique<RecordingConsole>();
        setMainConsoleLookup([this] { return m_console.get(); });
        applicationRecord() = {QStringLiteral("old"), QStringLiteral("old")};
        qputenv("FAKE_TOOL_RECORD", m_folder->filePath(QStringLiteral("record")).toUtf8());
        m_kubeCtl.configPath = QStringLiteral("/k\u00e4se/config");
    }
    void cleanup() { setMainConsoleLookup({}); }

    void operations_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("ran"); // the arguments that kubectl got
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("console");
        QTest::addColumn<QString>("record");
        const auto row = [](const char *name, const char *operation, const char *argument, const char *script,
                             const char *ran, const char *answer, const char *console,
                             const char *record = "old/old") {
            QTest::newRow(name) << QString::fromUtf8(operation) << QString::fromUtf8(argument)
                                << QByteArray(script) << QString::fromUtf8(ran) << QString::fromUtf8(answer)
                                << QString::fromUtf8(console) << QString::fromUtf8(record);
        };
        const char *const contexts = "loadContexts";
        const char *const namespaces = "loadNamespaces";
        row("contexts", contexts, "", "out\nb\\na\\tb\\t", CONTEXTS, "a,b/b@background", "");
        row("contexts with spaces, none empty", contexts, "", "out\nmy b\\n\\ta x\\t\\tmy b\\t", CONTEXTS,
            "a x,my b/my b@background", "");
        row("further lines", contexts, "", "out\nb\\n\\na\\tb\\nx\\ty", CONTEXTS, "a,b/b@background", "");
        row("no current context", contexts, "", "out\n\\na\\tb\\t", CONTEXTS, "a,b/@background", "");
        row("no contexts", contexts, "", "out\n\\n", CONTEXTS, "", "||" NOTHING);
        row("contexts with a warning", contexts, "", "out\nb\\na\\tb\\t\nerr\nhm", CONTEXTS,
            "a,b/b@background", "||No contexts" GOT "hm");
        row("contexts failed", contexts, "", "err\nno such file\\n", CONTEXTS, "",
            "||No contexts" GOT "no such file\n\n||" NOTHING);
        row("contexts cancelled", contexts, "", "hang", CONTEXTS, "", "");
        row("namespaces", namespaces, "", "out\nkube-system default  dev", NAMESPACES,
            "kube-system,default,dev@background", LOGGED "kube-system default  dev|");
        row("namespaces failed", namespaces, "", "err\nrefused", NAMESPACES, "@background",
            LOGGED "|refused\n||No namespaces" GOT "refused");
        row("namespaces cancelled", namespaces, "", "hang", NAMESPACES, "@background",
            LOGGED "|The command was stopped before it had finished.");
        row("context", "useContext", "my b", "out\nSwitched", USE("my b"), "yes@main", "", "my b/old");
        row("context failed", "useContext", "b", "err\nno", USE("b"), "no@background",
            "||Context b" NOT_LOADED "no");
        row("context cancelled", "useContext", "b", "hang", USE("b"), "no@background", "");
        row("no context name", "useContext", "", "out\nx", "", "", "");
        row("namespace", "setNamespace", "dev", "out\nModified", SET("dev"), "yes@main", "", "old/dev");
        row("namespace failed", "setNamespace", "dev", "err\nno", SET("dev"), "no@main",
            "||Namespace dev" NOT_LOADED "no");
        row("namespace cancelled", "setNamespace", "dev", "hang", SET("dev"), "no@main", "");
        row("all namespaces", "setNamespace", "All Namespaces", "err\nno", "", "yes@main", "",
            "old/All Namespaces");
    }
    void operations()
    {
        QFETCH(QString, operation);
        QFETCH(QString, argument);
        QFETCH(QByteArray, script);
        QFETCH(QString, ran);
        qputenv("FAKE_TOOL_SCRIPT", script);
        Operation pending(m_kubeCtl, operation, argument);
        if (script == "hang") {
            QTRY_COMPARE(recorded(), ran + QStringLiteral("KUBECONFIG=/k\u00e4se/config\n"));
            pending.shell.lock()->cancel();
        }
        QTEST(pending.finish(), "answer");
        QCOMPARE(
            recorded(), ran.isEmpty() ? QString() : ran + QStringLiteral("KUBECONFIG=/k\u00e4se/config\n"));
        QTEST(m_console->entries.join(u'\n'), "console");
        const QString record = applicationRecord().appContext + u'/' + applicationRecord().appNamespace;
        QTEST(record, "record");
    }

    void kubeconfigIsLeftAloneWithoutAPath()
    {
        qputenv("KUBECONFIG", "/inherited");
        m_kubeCtl.configPath.clear();
        QCOMPARE(m_kubeCtl.makeShell()->environment.value("KUBECONFIG"), QByteArray("/inherited"));
        qunsetenv("KUBECONFIG");
        QVERIFY(!m_kubeCtl.makeShell()->environment.contains("KUBECONFIG"));
    }

    void arguments()
    {
        QCOMPARE(namespaceArgument(QStringLiteral("default")), QStringLiteral("-ndefault"));
        QCOMPARE(namespaceArgument(QStringLiteral("All Namespaces")), QStringLiteral("--all-namespaces"));
        QCOMPARE(contextArgument(QStringLiteral("my b")), QStringLiteral("--context=my b"));
    }

    void realKubectl()
    {
        const QString kubectl = qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL");
        QVERIFY2(QFile::exists(kubectl), "no kubectl in the package tree");
        setKubectlPath(kubectl);
        m_kubeCtl.configPath = m_folder->filePath(QStringLiteral("two words"));
        QFile config(m_kubeCtl.configPath);
        QVERIFY(config.open(QIODevice::WriteOnly));
        config.write(
            "apiVersion: v1\nkind: Config\nclusters: []\nusers: []\ncontexts:\n"
            "- {name: a, context: {cluster: c, user: u}}\n- {name: my b, context: {cluster: c, user: u}}\n");
        config.close();
        const auto answer = [this](const char *operation, const char *argument = "") {
            return Operation(m_kubeCtl, QString::fromLatin1(operation), QString::fromLatin1(argument))
                .finish();
        };
        QCOMPARE(answer("loadContexts"), QStringLiteral("a,my b/@background"));
        QCOMPARE(answer("useContext", "nowhere"), QStringLiteral("no@background"));
        QCOMPARE(answer("useContext", "my b"), QStringLiteral("yes@main"));
        QCOMPARE(answer("setNamespace", "dev"), QStringLiteral("yes@main"));
        QCOMPARE(answer("loadContexts"), QStringLiteral("a,my b/my b@background"));
        QVERIFY(config.open(QIODevice::ReadOnly));
        QVERIFY(config.readAll().contains("namespace: dev"));
        QCOMPARE(m_console->entries,
            QStringList{QStringLiteral(
                "||Context nowhere" NOT_LOADED "error: no context exists with the name: \"nowhere\"\n")});
    }

private:
    QString recorded() const
    {
        QFile file(m_folder->filePath(QStringLiteral("record")));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<RecordingConsole> m_console;
    KubeCtl m_kubeCtl;
};

QTEST_GUILESS_MAIN(TestKubeCtl)
#include "tst_kubectl.moc"
