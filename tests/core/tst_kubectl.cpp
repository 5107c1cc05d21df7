// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/CommandGate.h"
#include "core/KubeCtl.h"
#include "core/running/ApplicationRecord.h"
#include "core/running/KubectlArguments.h"
#include "core/running/PackagedKubectl.h"
#include "platform/settings/UserDefaults.h"
#include "platform/threads/MainQueue.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

#define CURRENT_VIEW "KUBECONFIG=VIEW:/k\u00e4se/config\n"
#define LOGGED "kubectl get ns -o=jsonpath={.items[*].metadata.name}|"
#define CONFIG(current, nameSpace)                                                                           \
    "{\"kind\":\"Config\",\"current-context\":\"" current "\",\"contexts\":["                                \
    "{\"name\":\"a\",\"context\":{\"cluster\":\"c\",\"namespace\":\"" nameSpace "\"}},"                      \
    "{\"name\":\"my b\",\"context\":{\"cluster\":\"c\"}}]}"
#define IN_VAIN "kubectl ended well, but what it was to set is not there."
#define GOT " could be loaded.  Please ensure you have access and try again. \n\nGot error: "
#define NOT_LOADED " could not be loaded.  Please ensure you have access and try again. \n\nGot error: "
#define NOTHING                                                                                              \
    "No contexts could be found when running `kubectl config view`.  Please ensure you have access to a "    \
    "context and "                                                                                           \
    "try again."

/// Settings that hold such a value of "contextPolicies", in the place of the user's own.
struct Policies
{
    Policies(const QString &folder, const char *stored)
        : settings(writeSettings(folder + QStringLiteral("/settings.json"), stored))
    {
        setUserDefaultsForTesting(&settings);
    }
    ~Policies() { setUserDefaultsForTesting(nullptr); }
    Q_DISABLE_COPY_MOVE(Policies)

    static QString writeSettings(const QString &path, const QByteArray &stored)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write("{\"contextPolicies\": " + stored + '}') > 0
            ? path
            : QString();
    }

    UserDefaults settings;
};

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
        const auto sayWhether = [say](bool success) { say(success ? u"yes"_s : u"no"_s); };
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
        bool posted = false;
        if (!QTest::qWaitFor([this] { return shell.expired(); }, 20'000)) {
            return u"(still running)"_s;
        }
        mainQueue().post([&posted] { posted = true; });
        [&posted] { QTRY_VERIFY(posted); }();
        const bool there = answered.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        return there ? answered.get() : QString();
    }
};

} // namespace

class TestKubeCtl : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void anotherKubectlIsTold()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"kubectl"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("abc") == 3 && file.flush());
        const QByteArray sum = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
        const auto packaged
            = PackagedKubectl::read(R"({"kubectl": {"version": "v1.33.1", "sha256": ")" + sum + R"("}})");
        QVERIFY(packaged);
        QCOMPARE(packaged->difference(path), QString());
        QVERIFY(file.write("d") == 1 && file.flush());
        QVERIFY(packaged->difference(path).startsWith(path + u" is not the kubectl"_s));
        QVERIFY(packaged->difference(folder.path()).contains(u"could not be compared"_s));
        for (const char *bad : {"", "[]", R"({"kubectl": {"version": "v1.33.1", "sha256": 1}})"}) {
            QVERIFY(!PackagedKubectl::read(bad));
        }
    }

    void initTestCase() { mainQueue(); }
    void init()
    {
        setKubectlPath(fakeToolPath());
        m_folder = std::make_unique<QTemporaryDir>();
        m_console = std::make_unique<RecordingConsole>();
        setMainConsoleLookup([this] { return m_console.get(); });
        applicationRecord() = {u"old"_s, u"old"_s};
        qputenv("FAKE_TOOL_RECORD", m_folder->filePath(u"record"_s).toUtf8());
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder->path()));
        m_kubeCtl.configPath = u"/k\u00e4se/config"_s;
        m_kubeCtl.adopt(*KubeConfigContents::parse(CONFIG("a", "shop")), u"a"_s);
    }
    void cleanup() { setMainConsoleLookup({}); }

    void operations_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<int>("runs"); // of kubectl
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("console");
        const auto row = [](const char *name, const char *operation, const char *argument, const char *script,
                             int runs, const char *answer, const char *console) {
            QTest::newRow(name) << QString::fromUtf8(operation) << QString::fromUtf8(argument)
                                << QByteArray(script) << runs << QString::fromUtf8(answer)
                                << QString::fromUtf8(console);
        };
        const char *const contexts = "loadContexts";
        row("contexts, further lines", contexts, "", "out\nb\\n\\na\\tb\\nx\\ty", 1, "a,b/b@background", "");
        row("no contexts", contexts, "", "out\n\\n", 1, "", "||" NOTHING);
        row("contexts failed", contexts, "", "err\nno such file\\n", 1, "",
            "||No contexts" GOT "no such file\n\n||" NOTHING);
        row("contexts cancelled", contexts, "", "hang", 1, "", "");
        row("namespaces", "loadNamespaces", "", "out\nkube-system default  dev", 1,
            "kube-system,default,dev@background", LOGGED "kube-system default  dev|");
        row("namespaces cancelled", "loadNamespaces", "", "hang", 1, "@background",
            LOGGED "|The command was stopped before it had finished.");
        const char *const use = "useContext";
        const char *const set = "setNamespace";
        row("no kubeconfig", use, "my b", "out\nSwitched", 1, "no@background",
            "||Context my b" NOT_LOADED "What kubectl printed is not a kubeconfig.");
        row("context cancelled", use, "b", "hang", 1, "no@background", "");
        row("namespace not set", set, "dev", "out\n" CONFIG("a", "shop"), 2, "no@main",
            "||Namespace dev" NOT_LOADED IN_VAIN);
        row("namespace elsewhere", set, "dev", "out\n{\"kind\":\"Config\",\"current-context\":\"a\"}", 3,
            "no@main", "||Namespace dev" NOT_LOADED IN_VAIN);
        row("namespace cancelled", set, "dev", "hang", 1, "no@main", "");
    }
    void operations()
    {
        QFETCH(QString, operation);
        QFETCH(QString, argument);
        QFETCH(QByteArray, script);
        QFETCH(int, runs);
        qputenv("FAKE_TOOL_SCRIPT", script);
        Operation pending(m_kubeCtl, operation, argument);
        if (script == "hang") {
            QTRY_COMPARE(recorded().count(u"KUBECONFIG="), runs);
            pending.shell.lock()->cancel();
        }
        QTEST(pending.finish(), "answer");
        QCOMPARE(recorded().count(u"KUBECONFIG="), runs);
        QTEST(m_console->entries.join(u'\n'), "console");
        QCOMPARE(applicationRecord().appContext + applicationRecord().appNamespace, u"oldold");
    }

    void kubeconfigIsLeftAloneWithoutAPath()
    {
        KubeCtl kubeCtl;
        qputenv("KUBECONFIG", "/inherited");
        QCOMPARE(kubeCtl.makeShell()->environment.value("KUBECONFIG"), QByteArray("/inherited"));
        qunsetenv("KUBECONFIG");
        QVERIFY(!kubeCtl.makeShell()->environment.contains("KUBECONFIG"));
        QCOMPARE(kubeCtl.makeShell()->environment.value("KUBERC"), QByteArray("off"));
        QVERIFY(!kubeCtl.makeForeignShell()->environment.contains("KUBERC"));
    }

    void argumentsAndLines_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("read"); // "local", "writes"
        QTest::addColumn<QString>("line");
        const auto row
            = [](const char *words, const char *read, const char *line, const QStringList &more = {}) {
                  QTest::newRow(words) << QString::fromLatin1(words).split(u' ') + more
                                       << QString::fromLatin1(read) << QString::fromLatin1(line);
              };
        row("kubectl get po", "", "kubectl '--context=my b' --namespace=shop get po");
        row("kubectl get po -nx", "", "kubectl '--context=my b' get po -nx");
        row("kubectl get po --namespace x", "", "kubectl '--context=my b' get po --namespace x");
        row("kubectl -A get po", "", "kubectl '--context=my b' -A get po");
        row("kubectl delete po --context c x", "", "kubectl delete po --context c x");
        row("kubectl --kubeconfig=/x get po", "", "kubectl --kubeconfig=/x get po");
        row("kubectl exec p -- k --context=c", "",
            "kubectl '--context=my b' --namespace=shop exec p -- k --context=c");
        row("kubectl -v 6 config view", "local", "kubectl -v 6 config view");
        row("kubectl -v6 delete po x", "", "kubectl '--context=my b' --namespace=shop -v6 delete po x");
        row("kubectl --odd config x", "", "kubectl '--context=my b' --namespace=shop --odd config x");
        row("kubectl --user=u config use-context x", "local writes", "kubectl --user=u config use-context x");
        row("kubectl version --namespace=x", "local", "kubectl version --namespace=x");
        row("kubectl -n config delete po x", "", "kubectl '--context=my b' -n config delete po x");
        row("kubectl -h", "local", "kubectl -h");
        row("kubectl", "local", "kubectl");
        row("helm list", "", "helm list");
        row("touch", "", "touch $'a\\015b\\047\\302\\233'", {u"a\rb'\u009b"_s}); // as pasted
    }
    void argumentsAndLines()
    {
        QFETCH(QStringList, words);
        const auto read = KubectlArguments::read(words.mid(1));
        if (words.first() == u"kubectl") {
            const QStringList told{
                read.isLocal() ? u"local"_s : QString(), read.writesKubeConfig() ? u"writes"_s : QString()};
            QTEST(told.join(u' ').trimmed(), "read");
        }
        const CommandLine command{words, {u"/it's"_s, u"my b"_s, u"shop"_s}};
        QTEST(command.shellLine().remove(u"KUBECONFIG='/it'\\''s' "_s), "line");
        QVERIFY(command.shellLine().startsWith(u"KUBECONFIG="));
    }

    void theGateLetsThroughWhatReads_data()
    {
        QTest::addColumn<bool>("reads");
        for (const char *line : {"kubectl", "kubectl -h", "kubectl get po -A",
                 "kubectl -v6 -n shop logs -f web", "kubectl --context=free describe po", "kubectl top pods",
                 "kubectl diff -f x", "kubectl config view --raw", "kubectl auth can-i delete po",
                 "kubectl rollout status deploy/x", "kubectl get --raw /api/v1/nodes",
                 "kubectl get po delete", "/the/kubectl get --context=shut --raw /api/v1/pods?limit=500"}) {
            QTest::newRow(line) << true;
        }
        for (const char *line :
            {"kubectl delete po x", "kubectl -n get delete po x", "kubectl --odd get delete",
                "kubectl -A get delete po", "kubectl config use-context x", "kubectl config", "kubectl auth",
                "kubectl rollout -w restart status", "kubectl rollout undo x", "kubectl exec p -- get",
                "kubectl get --raw /api/v1/nodes/n/proxy/run", "kubectl get --raw=/a/%70roxy/",
                "kubectl gets", "kubectl -- get", "helm list", "/bin/kubectl get", "sh -c kubectl get",
                "kubectl edit po x", "kubectl -h delete po x", "/the/kubectl delete po x"}) {
            QTest::newRow(line) << false;
        }
    }
    void theGateLetsThroughWhatReads()
    {
        QFETCH(bool, reads);
        const QStringList words = QString::fromUtf8(QTest::currentDataTag()).split(u' ');
        const Policies policies(m_folder->path(), R"({"shut": "read-only", "asks": "protected;none"})");
        const auto restored = qScopeGuard([path = kubectlPath()] { setKubectlPath(path); });
        setKubectlPath(u"/the/kubectl"_s); // streams start it by its path
        QCOMPARE(gateReason(words, {{}, u"shut"_s, {}}).isEmpty(), reads);
        QCOMPARE(gateReason(words, {{}, u"asks"_s, {}}), QString());
        QCOMPARE(judgeCommand(words, {{}, u"asks"_s, {}}).needsConsent(), !reads);
    }

    void theStrictestContextWithinReachCounts_data()
    {
        QTest::addColumn<QString>("place");
        QTest::addColumn<QString>("counts");
        const auto lines
            = [](const char *place, const char *counts, std::initializer_list<const char *> all) {
                  for (const char *line : all) {
                      QTest::addRow("%s: %s", place, line)
                          << QString::fromLatin1(place) << QString::fromLatin1(counts);
                  }
              };
        lines("free", "free",
            {"kubectl delete po x", "helm uninstall shut-x", "sh -c kubectl", "kubectl --token=t delete po x",
                "kubectl apply --server-side -fs.yaml", "kubectl delete -nshop po x",
                "kubectl exec p -- x --server=y"});
        lines("shut", "free", {"kubectl --context=free delete po x", "kubectl delete po x --context free"});
        lines("free", "shut",
            {"kubectl --context=shut delete po x", "kubectl delete po x --force --context shut",
                "kubectl delete -l -- po --context=shut", "kubectl --context=free --context=shut apply -f x",
                "kubectl --server https://s delete po x", "kubectl delete po x -shttps://s",
                "kubectl delete po x -As https://s", "kubectl --cluster=c delete po x",
                "sh -c kubectl;--context=shut", "kubectl --kubeconfig f delete po x",
                "kubectl --kubeconfig=f --context=free delete po x"});
        lines("shut", "shut",
            {"helm uninstall x", "kubectl delete -l --context=free po", "kubectl --context= delete po x",
                "kubectl --context=free --context=asks delete po x", "kubectl exec p -- x --context=free"});
        lines("twin", "twin", {"kubectl delete po x", "kubectl --user-x=y delete po x"});
        lines("twin", "shut", {"kubectl --token=t delete po x", "kubectl delete po x --as admin"});
        lines("free", "asks", {"kubectl --context=asks delete po x", "helm --kube-context asks uninstall x"});
        lines("", "shut", {"helm uninstall x", "kubectl delete po x"}); // the place is not known yet
    }
    void theStrictestContextWithinReachCounts()
    {
        QFETCH(QString, place);
        QFETCH(QString, counts);
        const Policies policies(m_folder->path(), R"({"shut": "read-only", "asks": "protected"})");
        KubeConfigContents contents;
        for (const QString &name : {u"free"_s, u"shut"_s, u"twin"_s, u"asks"_s}) {
            const QString cluster = name == u"twin" ? u"shut"_s : name;
            contents.contexts.insert(name, {{u"cluster"_s, cluster}});
            contents.servers.insert(cluster, u"https://"_s + cluster);
        }
        const QString line = QString::fromUtf8(QTest::currentDataTag()).section(u": "_s, 1);
        const CommandVerdict verdict = judgeCommand(line.split(u' '), {{}, place, contents});
        QVERIFY(!verdict.reads);
        QCOMPARE(verdict.context.name, counts);
        QCOMPARE(verdict.isRefused(), counts == u"shut");
        QCOMPARE(verdict.needsConsent(), counts == u"asks");
    }

    void policiesAreRead_data()
    {
        QTest::addColumn<QString>("read"); // for "prod" of the kubeconfig /a
        QTest::addColumn<bool>("isReadable");
        const auto row = [](const char *stored, const char *read, bool isReadable = true) {
            QTest::newRow(stored) << QString::fromLatin1(read) << isReadable;
        };
        row("{}", "free;red"); // the colour is suggested
        row(R"({"prod\n/a": "read-only;blue"})", "read-only;blue");
        row(R"({"prod\n/a": "Protected"})", "protected;red");
        row(R"({"prod\n/a": "free;none", "prod\n/b": "read-only;red"})", "free;none");
        row(R"({"prod\n/b": "free;none", "prod\n/c": "protected;blue"})", "protected;blue");
        row(R"({"prod": "read-only;blue"})", "read-only;blue");
        row(R"({"*": "protected", "test\n/a": "read-only"})", "protected;red");
        for (const char *stored : {R"({"prod\n/a": 1})", R"({"prod\n/a": ""})",
                 R"({"prod\n/a": "frree;red"})", R"({"prod\n/a": "free;mauve"})",
                 R"({"prod\n/a": "free;red;x"})", R"({"prod\n/b": {}})", "[]", "null", "{"}) {
            row(stored, "read-only;red", false);
        }
    }
    void policiesAreRead()
    {
        QFETCH(bool, isReadable);
        const ContextKey prod(u"/a"_s, u"prod"_s);
        Policies policies(m_folder->path(), QTest::currentDataTag());
        const ContextPolicy policy = ContextPolicies::policy(prod);
        QTEST(policy.word(), "read");
        QCOMPARE(policy.isReadable, isReadable);
        ContextPolicies::shared().keepWhatWasLost();
        QVERIFY(policies.settings.flush());
        policies.settings = UserDefaults(m_folder->filePath(u"settings.json"_s)); // the next start
        QCOMPARE(ContextPolicies::policy(prod), policy);
        QCOMPARE(readOnlyReason(prod).contains(u"cannot be read"), !isReadable);
        // Another choice makes none freer that is not meant.
        const ContextPolicy namesake = ContextPolicies::policy({u"/z"_s, u"prod"_s});
        ContextPolicies::shared().set({u"/z"_s, u"other"_s}, {ContextAccess::Protected, ContextColour::None});
        ContextPolicies::shared().set(prod, {ContextAccess::Free, ContextColour::Violet});
        QCOMPARE(ContextPolicies::policy(prod).word(), u"free;violet"_s);
        if (!QByteArray(QTest::currentDataTag()).contains("/a")) {
            QCOMPARE(ContextPolicies::policy({u"/z"_s, u"prod"_s}), namesake);
        }
    }

    void policiesAreSuggested()
    {
        for (const auto &[name, word] : {std::pair("eu-live-2", "protected;red"), {"pre-prod", "free;amber"},
                 {"nonprod", "free;none"}, {"shop_DEV1", "free;green"}, {"latest", "free;none"}}) {
            QCOMPARE(suggestedPolicy(QString::fromLatin1(name)).word(), QString::fromLatin1(word));
        }
    }

    void viewsArePrivateAndGoWithTheirHolders()
    {
        m_kubeCtl = KubeCtl(); // which has one too
        QString problem;
        auto view = KubeConfigView::make({}, u"a"_s, u"shop"_s, problem, {});
        QVERIFY2(view, qPrintable(problem));
        const QFileInfo file(view->path());
        const QDir folder = file.dir();
        QVERIFY(folder.path().startsWith(m_folder->path()));
        QCOMPARE(QFile::permissions(file.path()) & QFile::Permissions(0x00ff), QFile::Permissions());
        QCOMPARE(QFile::permissions(folder.path()) & QFile::Permissions(0x00ff), QFile::Permissions());
        for (const char *name : {"view-fresh", "view-left", "other"}) {
            QVERIFY(QFile(folder.filePath(QString::fromLatin1(name))).open(QIODevice::WriteOnly));
        }
        for (const QString &old : {file.fileName(), u"view-left"_s, u"other"_s}) {
            QFile aged(folder.filePath(old));
            QVERIFY(aged.open(QIODevice::ReadWrite));
            QVERIFY(aged.setFileTime(
                QDateTime::currentDateTime().addSecs(-3600), QFileDevice::FileModificationTime));
        }
        KubeConfigView::sweep();
        QStringList left{u"other"_s, file.fileName(), u"view-fresh"_s};
        left.sort();
        QCOMPARE(folder.entryList(QDir::Files, QDir::Name), left);
        QVERIFY(QFile(view->path() + u".lock"_s).open(QIODevice::WriteOnly));
        auto holder = view;
        view.reset();
        QVERIFY(QFile::exists(file.filePath()));
        holder.reset();
        QCOMPARE(folder.entryList(QDir::Files, QDir::Name), (QStringList{u"other"_s, u"view-fresh"_s}));
    }

    /// What cannot be fixed on a context is not run in the user's current one instead.
    void withoutAViewNothingRuns()
    {
        qputenv("FAKE_TOOL_SCRIPT", "out\n" CONFIG("my b", "shop"));
        const QTemporaryDir runtime;
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
        const QString inTheWay = runtime.filePath(u"com.brindle.Tidewright"_s);
        QVERIFY(QFile(inTheWay).open(QIODevice::WriteOnly));
        m_kubeCtl.adopt(m_kubeCtl.contents(), u"a"_s);
        const QString reason = u"The window could not fix the context for the command: no file "
                               "could be written in "_s
            + inTheWay + u"/views: Not a directory."_s;
        const QStringList command{u"kubectl"_s, u"delete"_s};
        for (const auto &shell : {m_kubeCtl.makeShell(), m_kubeCtl.makeForeignShell()}) {
            QCOMPARE(runToEnd(shell, command).failure(), reason);
        }
        QCOMPARE(m_kubeCtl.makeCopy().problem, reason);
        Operation refused(m_kubeCtl, u"setNamespace"_s, u"dev"_s);
        QCOMPARE(refused.finish(), u"no@main"_s);
        QCOMPARE(recorded(), QString());

        QVERIFY(QFile::remove(inTheWay));
        Operation mended(m_kubeCtl, u"useContext"_s, u"my b"_s);
        QCOMPARE(mended.finish(), u"yes@main"_s);
        QCOMPARE(runToEnd(m_kubeCtl.makeShell(), command).failure(), QString());
        QVERIFY(recorded().endsWith(QStringLiteral("\"delete\"\n" CURRENT_VIEW)));
    }

    void realKubectl_data()
    {
        QTest::addColumn<QString>("kubectl");
        QTest::newRow("packaged") << qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL");
        if (const QString old = qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL_OLD"); !old.isEmpty()) {
            QTest::newRow("old") << old;
        }
    }
    /// A file behind a link and one of several that is missing; nothing of it is ever written.
    void realKubectl()
    {
        QFETCH(QString, kubectl);
        QVERIFY2(QFile::exists(kubectl), "no kubectl");
        setKubectlPath(kubectl);
        QFile config(m_folder->filePath(u"two words"_s));
        const QByteArray bytes
            = "apiVersion: v1\nkind: Config\nclusters: [{name: c, cluster: {server: "
              "'http://[::1]:9'}}]\nusers: [{name: u, user: {}}]\ncontexts:\n"
              "- {name: a, context: {cluster: c, user: u}}\n- {name: my b, context: {cluster: c, user: u}}\n";
        QVERIFY(config.open(QIODevice::ReadWrite) && config.write(bytes) && config.flush());
        QVERIFY(config.link(m_folder->filePath(u"link"_s)));
        m_kubeCtl = KubeCtl();
        m_kubeCtl.configPath = m_folder->filePath(u"missing"_s) + u':'
            + QDir::current().relativeFilePath(m_folder->filePath(u"link"_s));
        const auto answer = [this](const char *operation, const char *argument = "") {
            return Operation(m_kubeCtl, QString::fromLatin1(operation), QString::fromLatin1(argument))
                .finish();
        };
        const auto says = [](const std::shared_ptr<Shell> &shell, const QString &arguments) {
            const ShellResult result = runToEnd(shell, QStringList{u"kubectl"_s} + arguments.split(u' '));
            return QString(QString::fromUtf8(result.output) + result.failure());
        };
        const QString place = u"config view --minify -ojsonpath={.current-context}/{..namespace}"_s;
        QCOMPARE(answer("loadContexts"), u"a,my b/@background"_s);
        QCOMPARE(answer("useContext", "nowhere"), u"no@background"_s);
        QCOMPARE(answer("useContext", "my b"), u"yes@main"_s);
        QCOMPARE(answer("setNamespace", "dev"), u"yes@main"_s);
        QCOMPARE(applicationRecord().appContext + u'/' + applicationRecord().appNamespace, u"my b/dev"_s);
        QCOMPARE(answer("loadContexts"), u"a,my b/@background"_s);
        QCOMPARE(says(m_kubeCtl.makeShell(), place), u"my b/dev"_s);

        auto foreign = m_kubeCtl.makeForeignShell();
        says(foreign, u"config use-context a"_s);
        says(foreign, u"config set-context --current --namespace=x"_s);
        QCOMPARE(says(foreign, place), u"a/x"_s);
        QCOMPARE(says(m_kubeCtl.makeForeignShell(), place), u"my b/dev"_s);
        QCOMPARE(says(m_kubeCtl.makeShell(), place), u"my b/dev"_s);
        const auto leftBehind = Shell::create();
        leftBehind->environment = foreign->environment;
        foreign.reset();
        KubeConfigView::sweep();
        QTRY_VERIFY(says(leftBehind, u"get ns"_s).contains(u"has ended"));
        m_kubeCtl.adopt(m_kubeCtl.contents(), QString());
        QVERIFY(says(m_kubeCtl.makeShell(), u"get ns"_s).contains(u"no context is chosen"));

        QVERIFY(config.seek(0));
        QCOMPARE(config.readAll(), bytes);
        QVERIFY(!QFile::exists(m_folder->filePath(u"missing"_s)));
        QCOMPARE(m_console->entries,
            QStringList{QStringLiteral(
                "||Context nowhere" NOT_LOADED "error: no context exists with the name: \"nowhere\"\n")});
    }

private:
    QString recorded() const
    {
        QFile file(m_folder->filePath(u"record"_s));
        QString text = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        return text.replace(QRegularExpression(u"=[^:\n]*/views/view-[^:/\n]{6}"_s), u"=VIEW"_s);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<RecordingConsole> m_console;
    KubeCtl m_kubeCtl;
};

QTEST_GUILESS_MAIN(TestKubeCtl)
#include "tst_kubectl.moc"
