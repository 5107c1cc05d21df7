// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeCluster.h"
#include "app/KubeSplitViewController.h"
#include "app/UserKubeConfig.h"
#include "core/ApplicationRecord.h"
#include "platform/Notifications.h"
#include "resources/ClusterChange.h"
#include "support/Patience.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sys/stat.h>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

const auto ran = u"ran"_s;

/// One window on a fake cluster, with the user's file that follows it.
struct Window
{
    Window()
    {
        setMainConsoleLookup([this] { return &console; });
        state.setConsole(&console);
        QObject::connect(
            &state, &KubeSplitViewController::clusterSettingsChanged, &state, [this] { ++reloads; });
    }
    explicit Window(FakeCluster &cluster)
        : Window()
    {
        load(cluster.kubeConfig());
        cluster.forgetCalls();
    }
    ~Window() { setMainConsoleLookup({}); }

    void load(const QString &kubeConfig)
    {
        state.viewWillAppear(kubeConfig);
        QTRY_VERIFY(state.namespaceList().enabled);
        untilSettled();
    }

    void untilSettled() const { QTRY_COMPARE(place(), shown().replace(allNamespaces, u"default"_s)); }
    /// What becomes of a command: `ran`, or why it does not run.
    std::shared_ptr<QString> ask()
    {
        auto answer = std::make_shared<QString>();
        state.whenSettled(
            [answer](const QString &obstacle) { *answer = obstacle.isEmpty() ? ran : obstacle; });
        return answer;
    }
    QString answered()
    {
        const auto answer = ask();
        return QTest::qWaitFor([&] { return !answer->isEmpty(); }, 30'000) ? *answer : u"(no answer)"_s;
    }

    QString shown() const { return state.currentContext() + u'/' + state.currentNamespace(); }
    /// Where a child acts that is started now: what the first file of its KUBECONFIG says.
    QString place() const
    {
        const auto view = const_cast<KubeSplitViewController &>(state).kubeCtl().makeShell();
        QFile first(QFile::decodeName(view->environment.value("KUBECONFIG").split(':').first()));
        const auto contents
            = KubeConfigContents::parse(first.open(QIODevice::ReadOnly) ? first.readAll() : QByteArray());
        if (!contents || !first.fileName().contains(u"/views/"_s)) {
            return u"(no view)"_s;
        }
        return contents->hasContext(contents->current)
            ? contents->current + u'/' + contents->nameSpace(contents->current)
            : u"nowhere"_s;
    }

    UserKubeConfig file;
    FakeConsole console;
    KubeSplitViewController state{file};
    int reloads = 0;
};

UserDefaults::Dictionary remembered(const FakeCluster &cluster)
{
    return UserDefaults(cluster.settingsFile())
        .dictionary(u"lastNamespaces"_s)
        .value_or(UserDefaults::Dictionary());
}

} // namespace

class tst_window_state : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime.path()));
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"); // the fallback shows notifications
    }
    void firstLoad_data();
    void firstLoad();
    void withoutACurrentContextTheUserChooses();
    void withoutNamespacesTheTablesAreTold();
    void choosing();
    void failedSwitch_data();
    void failedSwitch();
    void lateAnswersAreDropped();
    void settling_data();
    void settling();
    void editedKubeConfig_data();
    void editedKubeConfig();
    void reloadedContextThatLeadsElsewhere();
    void userFileFollows_data();
    void userFileFollows();
    void spoiltUserFile_data();
    void spoiltUserFile();
    void leftOverCopies_data();
    void leftOverCopies();
    void closingEndsWhatWaits();
    void hangingKubeConfig();

private:
    QTemporaryDir m_runtime;
};

void tst_window_state::firstLoad_data()
{
    QTest::addColumn<QByteArray>("contexts");
    QTest::addColumn<QByteArray>("namespaces"); // with "!", the cluster's complaint
    QTest::addColumn<QString>("stored"); // the namespace remembered for context b
    QTest::addColumn<QByteArray>("own"); // the namespace that the kubeconfig names
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("place");
    const auto row = [](const char *name, const char *contexts, const char *namespaces, const char *stored,
                         const char *own, const char *shown, const char *place = nullptr) {
        QTest::newRow(name) << QByteArray(contexts) << QByteArray(namespaces) << QString::fromLatin1(stored)
                            << QByteArray(own) << QString::fromLatin1(shown)
                            << QString::fromLatin1(place ? place : shown);
    };
    const char *const all = "b\na\tb\t";
    const char *const three = "abc default shop";
    const char *const secret = "!Error: namespaces is forbidden";
    row("adopts", all, three, "", "default", "b/default");
    row("remembered", all, three, "shop", "default", "b/shop");
    row("vanished", all, three, "gone", "default", "b/default");
    row("the context's own", all, three, "", "shop", "b/shop");
    row("the first", all, three, "", "gone", "b/abc");
    row("all namespaces", all, three, "All Namespaces", "shop", "b/All Namespaces", "b/shop");
    row("a namespace of another context", "a\na\tb\t", three, "shop", "default", "a/default");
    row("a context that is not listed", "x\na\tb\t", three, "", "default", "x/default", "nowhere");
    row("secret, remembered", all, secret, "shop", "own", "b/shop");
    row("secret, own", all, secret, "", "own", "b/own");
    row("secret, none", all, secret, "", "", "b/default");
}

void tst_window_state::firstLoad()
{
    QFETCH(QByteArray, contexts);
    QFETCH(QByteArray, namespaces);
    QFETCH(QString, stored);
    QFETCH(QByteArray, own);
    QFETCH(QString, shown);
    FakeCluster cluster;
    cluster.answer(u"contexts"_s, contexts);
    cluster.edit("\"default\"", '"' + own + '"');
    const bool isSecret = namespaces.startsWith('!');
    if (isSecret) {
        cluster.fail(u"namespaces"_s, namespaces.mid(1));
    } else {
        cluster.answer(u"namespaces"_s, namespaces);
    }
    if (!stored.isEmpty()) {
        cluster.settings.set(
            u"lastNamespaces"_s, UserDefaults::Dictionary{{u"b"_s, stored}, {u"c"_s, u"other"_s}});
    }
    const QByteArray bytes = cluster.kubeConfigBytes();
    Window window;
    QCOMPARE(window.state.currentContext(), QString());
    window.state.viewWillAppear(cluster.kubeConfig());
    QVERIFY(window.state.contextList().loading && !window.state.contextList().enabled);
    QCOMPARE(window.place(), u"nowhere"_s);
    QCOMPARE(window.answered(), u"No context and namespace are chosen yet."_s);
    QTRY_VERIFY(window.state.namespaceList().enabled);
    // What the kubeconfig says is adopted: nothing is switched.
    QStringList expected{u"contexts"_s, u"namespaces"_s};
    if (!shown.endsWith(allNamespaces)) { // which no kubeconfig can name
        expected.append(u"set "_s + shown.section(u'/', 1));
    }
    QTRY_COMPARE(cluster.calls(), expected);
    QTEST(window.answered() == ran ? window.place() : u"nowhere"_s, "place");
    QCOMPARE(window.shown(), shown);
    const QString context = shown.section(u'/', 0, 0);
    QCOMPARE(window.state.contextList().entries, QStringList({u"a"_s, u"b"_s}));
    QCOMPARE(window.state.contextList().selected, context == u"x" ? QString() : context);
    QCOMPARE(window.state.namespaceList().entries.isEmpty(), isSecret);
    QCOMPARE(window.state.namespaceList().acceptsOthers, isSecret);
    QCOMPARE(window.state.namespaceList().selected, shown.section(u'/', 1));
    QCOMPARE(window.state.loadingHint(), QString());
    QCOMPARE(window.reloads, 1);
    QCOMPARE(remembered(cluster).value(context), shown.section(u'/', 1));
    QCOMPARE(remembered(cluster).value(u"c"_s), stored.isEmpty() ? QString() : u"other"_s);
    QCOMPARE(cluster.kubeConfigBytes(), bytes);
}

void tst_window_state::withoutACurrentContextTheUserChooses()
{
    FakeCluster cluster;
    cluster.answer(u"contexts"_s, "\na\tb\t");
    Window window;
    window.state.viewWillAppear(cluster.kubeConfig());
    QTRY_VERIFY(window.state.contextList().enabled);
    QCOMPARE(window.state.loadingHint(), u"Choose a context."_s);
    QVERIFY(!window.state.waitingSince().isValid()); // for the user, not the other way round
    QCOMPARE(cluster.calls(), QStringList{u"contexts"_s}); // nobody is asked for the namespaces of no context
    QCOMPARE(window.place(), u"nowhere"_s);
    window.state.chooseContext(u"a"_s);
    QTRY_COMPARE(window.place(), u"a/default"_s);
    QCOMPARE(window.state.loadingHint(), QString());
}

void tst_window_state::withoutNamespacesTheTablesAreTold()
{
    FakeCluster cluster;
    cluster.fail(u"namespaces"_s, "no route to host");
    Window window;
    window.state.viewWillAppear(cluster.kubeConfig());
    QTRY_COMPARE(window.reloads, 1);
    QCOMPARE(window.console.errors.last(),
        u"No namespaces could be found.  Please ensure you have a valid connection to the server and then "
        u"select the menu item `Cluster: Reload Namespace`."_s);
    QVERIFY(window.state.namespaceList().enabled && !window.state.namespaceList().acceptsOthers);
    QCOMPARE(window.state.currentNamespace(), QString());
    QCOMPARE(window.state.loadingHint(), u"The namespaces could not be loaded.\nno route to host"_s);
    QVERIFY(remembered(cluster).isEmpty());

    cluster.succeed(u"namespaces"_s);
    window.state.reloadNamespaces();
    QTRY_COMPARE(window.shown(), u"b/default"_s);
    window.untilSettled();
    QCOMPARE(window.state.loadingHint(), QString());
}

void tst_window_state::choosing()
{
    FakeCluster cluster;
    cluster.settings.set(u"lastNamespaces"_s, UserDefaults::Dictionary{{u"a"_s, u"shop"_s}});
    UserKubeConfig::setPreference(UserKubeConfig::Follows::Nothing);
    Window window(cluster);

    window.state.chooseContext(u"b"_s); // the same again: nothing
    window.state.chooseNamespace(u"default"_s); // the same again, which is set again
    QTRY_COMPARE(cluster.ended().count(u"set default"_s), 2);
    QCOMPARE(window.answered(), ran);
    window.state.chooseContext(u"a"_s);
    QCOMPARE(window.state.currentContext(), u"a"_s);
    QCOMPARE(window.place(), u"nowhere"_s);
    QVERIFY(!window.state.namespaceList().enabled);
    QTRY_COMPARE(window.place(), u"a/shop"_s);
    QTRY_COMPARE(applicationRecord().appNamespace, u"shop"_s);
    QCOMPARE(applicationRecord().appContext, u"a"_s);
    QCOMPARE(window.state.currentNamespace(), u"shop"_s);
    QCOMPARE(cluster.calls(), QStringList({u"set default"_s, u"use a"_s, u"namespaces"_s, u"set shop"_s}));
    QCOMPARE(window.reloads, 3);
    window.state.chooseNamespace(allNamespaces);
    QTRY_COMPARE(applicationRecord().appNamespace, allNamespaces);
    QCOMPARE(window.place(), u"a/shop"_s);
    QCOMPARE(cluster.calls().size(), 4);
    QCOMPARE(
        remembered(cluster), UserDefaults::Dictionary({{u"a"_s, allNamespaces}, {u"b"_s, u"default"_s}}));
}

void tst_window_state::failedSwitch_data()
{
    QTest::addColumn<QString>("context");
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("reason");
    QTest::newRow("words") << u"a"_s << u"words"_s << u"locked"_s;
    QTest::newRow("status") << u"a"_s << u"status"_s << u"failed with exit status 3"_s;
    QTest::newRow("killed") << u"a"_s << u"killed"_s << u"ended by signal 9"_s;
    QTest::newRow("nothing changed") << u"a"_s << u"idle"_s << u"what it was to set is not there"_s;
    QTest::newRow("a kubeconfig that cannot be read") << u"a"_s << u"read"_s << u"no such file"_s;
    QTest::newRow("what is no kubeconfig") << u"a"_s << u"words instead"_s << u"not a kubeconfig"_s;
    QTest::newRow("-h") << u"-h"_s << QString() << u"take the name for an option"_s;
    QTest::newRow("--help") << u"--help"_s << QString() << u"take the name for an option"_s;
}

void tst_window_state::failedSwitch()
{
    QFETCH(QString, context);
    QFETCH(QString, way);
    QFETCH(QString, reason);
    FakeCluster cluster;
    cluster.answer(u"contexts"_s, "b\na\tb\t-h\t--help\t");
    Window window(cluster);
    const QByteArray bytes = cluster.kubeConfigBytes();
    if (way == u"words"_s) {
        cluster.fail(u"use a"_s, "locked");
    } else if (way == u"status"_s) {
        cluster.endBadly(u"use a"_s);
    } else if (way == u"killed"_s) {
        cluster.killAfter(u"use a"_s);
    } else if (way == u"idle"_s) {
        cluster.doNothing(u"use a"_s);
    } else if (way == u"read"_s) {
        cluster.fail(u"read"_s, "no such file");
    } else if (way == u"words instead"_s) {
        cluster.edit(bytes, "hm");
    }
    window.state.chooseContext(context);
    QTRY_VERIFY(window.state.namespaceList().enabled);
    const QString said = u"The context %1 could not be switched to.\nThe console says why."_s.arg(context);
    QVERIFY(window.state.loadingHint().startsWith(said));
    QTRY_VERIFY(!window.console.errors.isEmpty());
    QVERIFY2(window.console.errors.last().contains(reason), qPrintable(window.console.errors.last()));
    QCOMPARE(window.state.namespaceList().entries.size(), 3);
    QCOMPARE(window.state.contextList().entries.size(), 4);
    // The tables still show context b: nothing may be changed in a by what the user sees.
    QVERIFY(window.answered().startsWith(u"The window is switching to the context "_s + context));
    QCOMPARE(window.place(), u"nowhere"_s);
    QCOMPARE(window.reloads, 1);
    QCOMPARE(cluster.kubeConfigBytes(), way == u"words instead"_s ? QByteArray("hm") : bytes);
    QVERIFY(applicationRecord().appContext.isEmpty());
    if (!way.isEmpty()) {
        cluster.succeed(u"use a"_s);
        cluster.succeed(u"read"_s);
        cluster.edit(cluster.kubeConfigBytes(), bytes);
        window.state.retryLoading();
        QTRY_COMPARE(window.place(), u"a/default"_s);
        QTRY_VERIFY(cluster.calls().contains(u"file use a"_s)); // as the user chose
    } else {
        QCOMPARE(cluster.calls(), QStringList());
    }
}

void tst_window_state::lateAnswersAreDropped()
{
    FakeCluster cluster;
    Window window(cluster);
    cluster.hold(u"namespaces"_s);
    window.state.chooseContext(u"a"_s);
    QTRY_COMPARE(cluster.calls().count(u"namespaces"_s), 1);
    cluster.hold(u"use c"_s);
    window.state.chooseContext(u"c"_s);
    QTRY_VERIFY(cluster.calls().contains(u"use c"_s));
    window.state.chooseContext(u"b"_s);
    cluster.answer(u"namespaces"_s, "default kube-system");
    cluster.release(u"use c"_s);
    cluster.release(u"namespaces"_s);
    QTRY_COMPARE(window.reloads, 2);
    window.untilSettled();
    QCOMPARE(window.shown(), u"b/default"_s);
    QCOMPARE(applicationRecord().appContext, u"b"_s);
    QCOMPARE(remembered(cluster).keys(), QStringList{u"b"_s}); // a and c never got a namespace
    QCOMPARE(window.state.namespaceList().entries.size(), 2);
    QCOMPARE(window.console.errors.filter(u"could"_s), QStringList());
}

void tst_window_state::settling_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("place");
    const QString failed = u"The window's namespace shop could not be set."_s;
    const auto row = [](const QString &what, const QString &answer, const QString &place) {
        QTest::newRow(qPrintable(what)) << what << answer << place;
    };
    row(u"nothing is under way"_s, ran, u"b/default"_s);
    row(u"a namespace is being set"_s, ran, u"b/shop"_s);
    row(u"a namespace cannot be set"_s, failed, u"b/default"_s);
    row(u"a namespace could not be set"_s, ran, u"b/shop"_s);
    row(u"a namespace could not be set twice"_s, failed, u"b/default"_s);
    row(u"a context is being set"_s,
        u"The window is switching to the context a; its tables do not show that context yet."_s,
        u"nowhere"_s);
    row(u"a context is chosen then"_s,
        u"The window is switching to the context a; its tables do not show that context yet."_s,
        u"nowhere"_s);
    row(u"the contexts are loaded again then"_s, failed, u"b/default"_s);
}

void tst_window_state::settling()
{
    QFETCH(QString, what);
    FakeCluster cluster;
    UserKubeConfig::setPreference(UserKubeConfig::Follows::Nothing);
    Window window(cluster);
    const bool waits
        = what.endsWith(u"then"_s) || what.contains(u"namespace is"_s) || what.contains(u"cannot"_s);
    if (what.contains(u"cannot"_s) || what.contains(u"could not"_s)) {
        cluster.fail(u"set shop"_s, "locked");
    }
    if (waits) {
        cluster.hold(u"set shop"_s);
    }
    if (waits || what.contains(u"namespace"_s)) {
        window.state.chooseNamespace(u"shop"_s);
        QTRY_VERIFY(cluster.calls().contains(u"set shop"_s));
    }
    if (what.contains(u"could not"_s)) {
        QTRY_VERIFY(!window.console.errors.isEmpty());
    }
    if (!what.endsWith(u"twice"_s) && !what.contains(u"cannot"_s)) {
        cluster.succeed(u"set shop"_s);
    }
    cluster.hold(u"use a"_s);
    if (what == u"a context is being set"_s) {
        window.state.chooseContext(u"a"_s);
    }
    const auto first = window.ask();
    const auto second = window.ask();
    if (waits) {
        QTest::qWait(50); // for the look at the kubeconfig; what follows holds without it too
        QVERIFY(first->isEmpty());
    }
    if (what == u"a context is chosen then"_s) {
        window.state.chooseContext(u"a"_s);
    } else if (what.startsWith(u"the contexts"_s)) {
        cluster.fail(u"namespaces"_s, "no route to host");
        cluster.fail(u"set shop"_s, "locked");
        window.state.reloadContexts();
    } else {
        cluster.release(u"set shop"_s);
    }
    QTRY_VERIFY(!second->isEmpty());
    QTEST(*first, "answer");
    QCOMPARE(*second, *first);
    QTEST(window.place(), "place");
    cluster.release(u"set shop"_s);
    cluster.succeed(u"set shop"_s);
    cluster.release(u"use a"_s);
    QTRY_COMPARE(window.answered(), ran); // and never stays stuck
}

void tst_window_state::editedKubeConfig_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<QString>("said");
    QTest::addColumn<QString>("reloaded"); // what the window shows after it has been loaded again
    QTest::newRow("another current context")
        << "\"current-context\": \"b\""_ba
        << "\"current-context\": \"a\""_ba << QString() << u"b/default"_s;
    QTest::newRow("another namespace") << "\"namespace\": \"default\""_ba
                                       << "\"namespace\": \"shop\""_ba << QString() << u"b/default"_s;
    QTest::newRow("removed") << "\"name\": \"b\""_ba
                             << "\"name\": \"z\""_ba << u"The kubeconfig has no context b any more."_s
                             << u"nowhere"_s;
    QTest::newRow("another cluster")
        << "\"cluster\": \"b\""_ba
        << "\"cluster\": \"z\""_ba << u"The context b of the kubeconfig names another cluster or user now."_s
        << u"b/default"_s;
}

void tst_window_state::editedKubeConfig()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    QFETCH(QString, said);
    QFETCH(QString, reloaded);
    FakeCluster cluster;
    UserKubeConfig::setPreference(UserKubeConfig::Follows::Nothing);
    Window window(cluster);
    for (int round = 0; round < 2; ++round) {
        cluster.edit(before, after);
        if (round == 0) { // once by turning to the window, once by the next command
            window.state.windowDidBecomeMain();
        }
        QCOMPARE(window.answered(), said.isEmpty() ? ran : said);
        QCOMPARE(window.state.loadingHint(),
            said.isEmpty() ? QString() : said + u"\nReload shows what is there now."_s);
        if (round == 0) {
            cluster.edit(after, before);
            QCOMPARE(window.answered(), ran);
            QCOMPARE(window.reloads, said.isEmpty() ? 1 : 2); // the tables start again
            QCOMPARE(window.state.loadingHint(), QString());
        }
    }
    QVERIFY(!cluster.calls().contains(u"namespaces"_s));
    window.state.reloadNamespaces();
    QTRY_VERIFY(window.state.namespaceList().enabled);
    QTRY_COMPARE(window.place(), reloaded);
    QCOMPARE(cluster.calls().contains(u"use b"_s), !said.isEmpty()); // another place, the usual way
    QCOMPARE(window.answered() == ran, reloaded != u"nowhere"_s);
}

/// The name is the same, the rows are those of the old cluster until the new one's have come.
void tst_window_state::reloadedContextThatLeadsElsewhere()
{
    FakeCluster cluster;
    Window window(cluster);
    cluster.edit("\"cluster\": \"b\"", "\"cluster\": \"z\"");
    cluster.hold(u"namespaces"_s);
    window.state.reloadContexts();
    QTRY_VERIFY(cluster.calls().contains(u"namespaces"_s));
    QVERIFY(window.answered().startsWith(u"The window is switching"_s));
    cluster.release(u"namespaces"_s);
    QTRY_COMPARE(window.answered(), ran);
}

void tst_window_state::userFileFollows_data()
{
    QTest::addColumn<int>("preference");
    QTest::addColumn<QString>("event");
    QTest::addColumn<QStringList>("written");
    using Follows = UserKubeConfig::Follows;
    const auto row = [](Follows follows, const QString &event, const QStringList &written) {
        const QStringList names{u"window"_s, u"choice"_s, u"nothing"_s};
        QTest::newRow(qPrintable(names.at(int(follows)) + u": "_s + event))
            << int(follows) << event << written;
    };
    for (const auto follows : {Follows::WindowInFront, Follows::Choice, Follows::Nothing}) {
        const auto unlessNothing = [&](const QString &run) {
            return follows == Follows::Nothing ? QStringList() : QStringList{run};
        };
        row(follows, u"looking"_s, {});
        row(follows, u"closing"_s, {});
        row(follows, u"another context"_s, unlessNothing(u"file use a"_s));
        row(follows, u"another namespace"_s, unlessNothing(u"file set shop"_s));
        row(follows, u"all namespaces"_s, {});
        row(follows, u"another namespace, file elsewhere"_s, {});
        row(follows, u"in front, file elsewhere"_s,
            follows == Follows::WindowInFront ? QStringList{u"file use b"_s} : QStringList());
    }
}

void tst_window_state::userFileFollows()
{
    QFETCH(int, preference);
    QFETCH(QString, event);
    QFETCH(QStringList, written);
    FakeCluster cluster;
    UserKubeConfig::setPreference(UserKubeConfig::Follows(preference));
    auto window = std::make_unique<Window>(cluster);
    if (event.endsWith(u"file elsewhere"_s)) {
        cluster.edit("\"current-context\": \"b\"", "\"current-context\": \"c\"");
    }
    const QByteArray bytes = cluster.kubeConfigBytes();
    if (event == u"looking"_s) {
        window->state.reloadContexts();
        QTRY_COMPARE(window->reloads, 2);
        window->state.windowDidBecomeMain();
    } else if (event.startsWith(u"in front"_s)) {
        window->state.windowDidBecomeMain();
    } else if (event == u"another context"_s) {
        window->state.chooseContext(u"a"_s);
        QTRY_COMPARE(window->reloads, 2);
    } else if (event != u"closing"_s) {
        window->state.chooseNamespace(event == u"all namespaces"_s ? QString(allNamespaces) : u"shop"_s);
    }
    window->untilSettled();
    QTRY_VERIFY(!window->file.isBusy());
    QVERIFY2(window->console.errors.isEmpty(), qPrintable(window->console.errors.join(u'\n')));
    window.reset();
    QCOMPARE(cluster.calls().filter(u"file "_s), written);
    QCOMPARE(cluster.kubeConfigBytes() == bytes, written.isEmpty());
    QCOMPARE(QDir(cluster.path(QString())).entryList({u"*.tidewright-copy"_s}), QStringList());
}

void tst_window_state::spoiltUserFile_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("reason");
    QTest::newRow("locked") << u"locked"_s << u"config.lock: file exists"_s;
    QTest::newRow("killed half-way") << u"cut killed"_s << u"ended by signal 9"_s;
    QTest::newRow("failed half-way") << u"cut status"_s << u"failed with exit status 3"_s;
    QTest::newRow("left empty") << u"cut"_s << u"what it was to set is not there"_s;
    QTest::newRow("nothing done") << u"idle"_s << u"what it was to set is not there"_s;
    QTest::newRow("no copy") << u"folder"_s << u"No copy of"_s;
}

/// Through a link, as people keep their kubeconfigs elsewhere.
void tst_window_state::spoiltUserFile()
{
    QFETCH(QString, way);
    QFETCH(QString, reason);
    FakeCluster cluster;
    const QString run = u"file use a"_s;
    const QString link = cluster.path(u"link"_s);
    const QString copy = cluster.kubeConfig() + u".tidewright-copy"_s;
    QVERIFY(QFile::link(cluster.kubeConfig(), link));
    const QByteArray bytes = cluster.kubeConfigBytes();
    if (way == u"locked"_s) {
        cluster.fail(run, "error: open config.lock: file exists");
    } else if (way == u"folder"_s) {
        QVERIFY(QDir().mkpath(copy + u"/full"_s));
    } else if (way == u"idle"_s) {
        cluster.doNothing(run);
    }
    if (way.startsWith(u"cut"_s)) {
        cluster.empty(run);
    }
    if (way.endsWith(u"killed"_s)) {
        cluster.killAfter(run);
    } else if (way.endsWith(u"status"_s)) {
        cluster.endBadly(run);
    }
    Window window;
    window.load(link);
    window.state.chooseContext(u"a"_s);
    QTRY_COMPARE(window.reloads, 2);
    window.untilSettled();
    QTRY_VERIFY(!window.file.isBusy());
    QCOMPARE(cluster.kubeConfigBytes(), bytes);
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(QFileInfo::exists(copy), way == u"folder"_s);
    const QStringList notes
        = window.console.responses.filter(u"Note: your own kubeconfig was left as it was"_s);
    QCOMPARE(notes.size(), 1);
    QVERIFY2(notes.first().contains(reason), qPrintable(notes.first()));
    QVERIFY(window.console.errors.isEmpty());
    QCOMPARE(window.answered(), ran);
    QCOMPARE(window.place(), u"a/default"_s);
}

void tst_window_state::leftOverCopies_data()
{
    QTest::addColumn<bool>("isEmpty");
    QTest::newRow("beside a file that is well") << false;
    QTest::newRow("beside a file that was lost") << true;
}

void tst_window_state::leftOverCopies()
{
    QFETCH(bool, isEmpty);
    FakeCluster cluster;
    Window window(cluster);
    const QByteArray bytes = cluster.kubeConfigBytes();
    QFile copy(cluster.kubeConfig() + u".tidewright-copy"_s);
    QVERIFY(copy.open(QIODevice::WriteOnly) && copy.write(isEmpty ? bytes : "old") > 0);
    copy.close();
    if (isEmpty) {
        cluster.edit(bytes, QByteArray());
    }
    window.file.namespaceChosen(cluster.kubeConfig(), u"b"_s, u"shop"_s);
    QTRY_VERIFY(!window.file.isBusy());
    QCOMPARE(
        cluster.kubeConfigBytes().trimmed(), QByteArray(bytes).replace("\"default\"", "\"shop\"").trimmed());
    QVERIFY(!copy.exists());
}

void tst_window_state::closingEndsWhatWaits()
{
    FakeCluster cluster;
    UserKubeConfig::setPreference(UserKubeConfig::Follows::Nothing);
    FakeConsole other;
    QStringList notified;
    setNotificationFallback([&](const QString &title, const QString &text) { notified = {title, text}; });
    auto window = std::make_unique<Window>(cluster);
    cluster.hold(u"namespaces"_s);
    cluster.hold(u"set shop"_s);
    window->state.reloadNamespaces();
    window->state.chooseNamespace(u"shop"_s);
    QTRY_COMPARE(cluster.calls().size(), 2);
    runChange(ChangePlace(window->state), {u"kubectl"_s, u"delete"_s, u"po"_s}, u"Nothing was deleted"_s);
    window.reset();
    setMainConsoleLookup([&other] { return &other; });
    QTRY_COMPARE(notified,
        QStringList(
            {u"A change was not made"_s, u"Context: b\nNamespace: shop\n"_s + other.errors.value(0)}));
    QVERIFY(other.errors.value(0).startsWith(u"Nothing was deleted: its window was closed"_s));
    cluster.release(u"set shop"_s);
    cluster.release(u"namespaces"_s);
    Window next(cluster); // by then the runs of the first window would have come to their own end
    QCOMPARE(cluster.ended().count(u"set shop"_s), 1); // its own
    QCOMPARE(cluster.ended().count(u"namespaces"_s), 2);
    QCOMPARE(cluster.tableReads(), QStringList());
    setMainConsoleLookup({});
    setNotificationFallback({});
}

/// A pipe that nobody fills stands for a disk that does not answer.
void tst_window_state::hangingKubeConfig()
{
    FakeCluster cluster;
    const QString pipe = cluster.path(u"pipe"_s);
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    Window window;
    window.state.viewWillAppear(pipe);
    QTRY_VERIFY(cluster.ended().contains(u"contexts"_s));
    QCOMPARE(window.place(), u"nowhere"_s);
    window.state.stopWaiting();
    QCOMPARE(window.state.loadingHint(), u"No contexts could be loaded.\nLoading was stopped."_s);
    window.load(cluster.kubeConfig());
    QCOMPARE(window.answered(), ran);
}

QTEST_GUILESS_MAIN(tst_window_state)
#include "tst_window_state.moc"
