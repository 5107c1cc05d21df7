// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeCluster.h"
#include "app/KubeConfigWriter.h"
#include "app/KubeSplitViewController.h"
#include "core/ApplicationRecord.h"
#include "support/Patience.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace tidewright;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// One window on a fake cluster.
struct Window
{
    explicit Window(KubeConfigWriter &sharedWriter)
        : writer(sharedWriter)
        , state(sharedWriter)
    {
        state.setConsole(&console);
        QObject::connect(
            &state, &KubeSplitViewController::clusterSettingsChanged, &state, [this] { ++reloads; });
    }

    void load(const FakeCluster &cluster)
    {
        state.viewWillAppear(cluster.kubeConfig());
        QTRY_VERIFY(state.namespaceList().enabled);
        untilWritten();
    }

    /// All changes of the kubeconfig that were asked for until now are through.
    void untilWritten()
    {
        auto through = std::make_shared<bool>(false);
        writer.enqueue(&state, [through](const KubeConfigWriter::Finished &finished) {
            *through = true;
            finished();
        });
        QTRY_VERIFY(*through);
    }

    KubeConfigWriter &writer;
    FakeConsole console;
    KubeSplitViewController state;
    int reloads = 0;
};

UserDefaults::Dictionary remembered(const UserDefaults &settings)
{
    return settings.dictionary(u"lastNamespaces"_s).value_or(UserDefaults::Dictionary());
}

} // namespace

class tst_window_state : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void firstLoad_data();
    void firstLoad();
    void withoutACurrentContextTheUserChooses();
    void aContextWhoseNamespacesAreSecretGetsTheWindowsNamespace();
    void withoutNamespacesTheTablesAreTold();
    void choosingContexts();
    void failedContextSwitch();
    void lateAnswersAreDropped();
    void oneChangeAfterTheOther();
    void namespacesOfTheWindowsContext_data();
    void namespacesOfTheWindowsContext();
    void namespaceChoiceStaysInItsContext();
    void whatFailedIsMadeUpForInFront();
    void kubeConfigsAreTold();
    void allNamespaces();
    void becomingMain_data();
    void becomingMain();
    void agreement_data();
    void agreement();
    void agreementsAreAnsweredInOrder();
    void closingEndsTheRequests();
};

void tst_window_state::firstLoad_data()
{
    QTest::addColumn<QByteArray>("contexts");
    QTest::addColumn<QByteArray>("namespaces");
    QTest::addColumn<QString>("stored"); // the namespace remembered for context b
    QTest::addColumn<QString>("context");
    QTest::addColumn<QString>("selectedContext");
    QTest::addColumn<QString>("nameSpace");
    const QByteArray three = "default kube-system shop";
    QTest::newRow("adopts") << "b\na\tb\t"_ba << three << QString() << u"b"_s << u"b"_s << u"default"_s;
    QTest::newRow("remembered") << "b\na\tb\t"_ba << three << u"kube-system"_s << u"b"_s << u"b"_s
                                << u"kube-system"_s;
    QTest::newRow("vanished") << "b\na\tb\t"_ba << three << u"gone"_s << u"b"_s << u"b"_s << u"default"_s;
    QTest::newRow("all namespaces") << "b\na\tb\t"_ba << three << tidewright::allNamespaces << u"b"_s
                                    << u"b"_s << tidewright::allNamespaces;
    QTest::newRow("a namespace of another context")
        << "a\na\tb\t"_ba << three << u"kube-system"_s << u"a"_s << u"a"_s << u"default"_s;
    QTest::newRow("a context that is not listed")
        << "x\na\tb\t"_ba << three << QString() << u"x"_s << QString() << u"default"_s;
}

void tst_window_state::firstLoad()
{
    QFETCH(QByteArray, contexts);
    QFETCH(QByteArray, namespaces);
    QFETCH(QString, stored);
    QFETCH(QString, nameSpace);
    QFETCH(QString, context);
    FakeCluster cluster;
    cluster.answer(u"contexts"_s, contexts);
    cluster.answer(u"namespaces"_s, namespaces);
    if (!stored.isEmpty()) {
        cluster.settings.set(
            u"lastNamespaces"_s, UserDefaults::Dictionary{{u"b"_s, stored}, {u"c"_s, u"other"_s}});
    }
    KubeConfigWriter writer(50ms);
    Window window(writer);
    QCOMPARE(window.state.currentContext(), QString());
    window.state.viewWillAppear(cluster.kubeConfig());
    QVERIFY(window.state.contextList().loading && !window.state.contextList().enabled);
    window.load(cluster);
    QCOMPARE(window.state.contextList().entries, QStringList({u"a"_s, u"b"_s}));
    QTEST(window.state.contextList().selected, "selectedContext");
    QCOMPARE(window.state.currentContext(), context);
    QCOMPARE(window.state.namespaceList().entries, QStringList({u"default"_s, u"kube-system"_s, u"shop"_s}));
    QCOMPARE(window.state.namespaceList().selected, nameSpace);
    QCOMPARE(window.state.currentNamespace(), nameSpace);
    QCOMPARE(window.reloads, 1);
    // What the kubeconfig says is adopted: nothing is switched. (The first request was given up for the
    // second.)
    QStringList calls = cluster.calls();
    calls.removeDuplicates();
    QStringList expected{u"contexts"_s, u"namespaces"_s};
    if (nameSpace != tidewright::allNamespaces) { // which no kubeconfig can name
        expected.append(u"set "_s + nameSpace);
    }
    QCOMPARE(calls, expected);
    QCOMPARE(remembered(UserDefaults(cluster.settingsFile())).value(context), nameSpace);
    QCOMPARE(remembered(cluster.settings).value(u"c"_s), stored.isEmpty() ? QString() : u"other"_s);
}

void tst_window_state::withoutACurrentContextTheUserChooses()
{
    FakeCluster cluster;
    cluster.answer(u"contexts"_s, "\na\tb\t");
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.state.viewWillAppear(cluster.kubeConfig());
    QTRY_VERIFY(window.state.contextList().enabled);
    QCOMPARE(window.state.loadingHint(), u"Choose a context."_s);
    QVERIFY(!window.state.waitingSince().isValid()); // for the user, not the other way round
    QCOMPARE(cluster.calls(), QStringList{u"contexts"_s}); // nobody is asked for the namespaces of no context
    window.state.chooseContext(u"a"_s);
    QTRY_COMPARE(window.state.currentNamespace(), u"default"_s);
    QCOMPARE(window.state.loadingHint(), QString());
}

/// The namespace that was set in another context says nothing about this one's.
void tst_window_state::aContextWhoseNamespacesAreSecretGetsTheWindowsNamespace()
{
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    window.state.windowDidBecomeMain();
    window.untilWritten();
    cluster.answer(u"namespaces"_s, {});
    cluster.fail(u"namespaces"_s, "forbidden");
    window.state.chooseContext(u"a"_s);
    QTRY_COMPARE(window.reloads, 2);
    QVERIFY(window.state.loadingHint().isEmpty());
    cluster.forgetCalls();
    std::optional<bool> answer;
    window.state.agreeWithKubeConfig([&answer](bool outcome) { answer = outcome; });
    QTRY_COMPARE(answer, std::optional(true));
    QCOMPARE(cluster.calls(), QStringList{u"set default"_s});
}

void tst_window_state::withoutNamespacesTheTablesAreTold()
{
    FakeCluster cluster;
    cluster.answer(u"namespaces"_s, {});
    cluster.fail(u"namespaces"_s, "no route to host");
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.state.viewWillAppear(cluster.kubeConfig());
    QTRY_COMPARE(window.reloads, 1);
    QCOMPARE(window.console.errors.last(),
        u"No namespaces could be found.  Please ensure you have a valid connection to the server and then "
        u"select the "
        u"menu item `Cluster: Reload Namespace`."_s);
    QVERIFY(window.state.namespaceList().enabled);
    QCOMPARE(window.state.currentNamespace(), QString());
    QVERIFY(remembered(cluster.settings).isEmpty());

    cluster.succeed(u"namespaces"_s);
    cluster.answer(u"namespaces"_s, "shop");
    window.state.reloadNamespaces();
    QTRY_COMPARE(window.state.currentNamespace(), u"shop"_s);
}

void tst_window_state::choosingContexts()
{
    FakeCluster cluster;
    cluster.settings.set(u"lastNamespaces"_s, UserDefaults::Dictionary{{u"a"_s, u"shop"_s}});
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    cluster.forgetCalls();

    window.state.chooseContext(u"b"_s); // the same again
    window.state.chooseNamespace(u"default"_s); // the same again, which is written again
    QTRY_COMPARE(cluster.calls(), QStringList({u"set default"_s}));
    window.state.chooseContext(u"a"_s);
    QCOMPARE(window.state.currentContext(), u"a"_s);
    QVERIFY(!window.state.namespaceList().enabled);
    QTRY_COMPARE(applicationRecord().appNamespace, u"shop"_s);
    QCOMPARE(cluster.calls(), QStringList({u"set default"_s, u"use a"_s, u"namespaces"_s, u"set shop"_s}));
    QCOMPARE(applicationRecord().appContext, u"a"_s);
    QCOMPARE(window.state.currentNamespace(), u"shop"_s);
    QCOMPARE(remembered(cluster.settings),
        UserDefaults::Dictionary({{u"a"_s, u"shop"_s}, {u"b"_s, u"default"_s}}));
    QCOMPARE(window.reloads, 3);
}

void tst_window_state::failedContextSwitch()
{
    FakeCluster cluster;
    cluster.fail(u"use a"_s, "no such context");
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    cluster.forgetCalls();
    window.state.chooseContext(u"a"_s);
    QTRY_VERIFY(window.state.namespaceList().enabled);
    QCOMPARE(window.state.namespaceList().entries.size(), 3);
    QCOMPARE(window.state.contextList().entries.size(), 3);
    QCOMPARE(cluster.calls(), QStringList({u"use a"_s}));
    // The tables still show context b: nothing may be changed in a by what the user sees, even if it could be
    // now.
    cluster.succeed(u"use a"_s);
    std::optional<bool> agreed;
    window.state.agreeWithKubeConfig([&agreed](bool answer) { agreed = answer; });
    QTRY_VERIFY(agreed);
    QVERIFY(!*agreed);
    QVERIFY(window.console.errors.last().startsWith(u"The command was not run."_s));
    QCOMPARE(cluster.calls(), QStringList({u"use a"_s}));
    QCOMPARE(window.reloads, 1);
    window.state.chooseContext(u"b"_s);
    QTRY_COMPARE(window.reloads, 2);
}

void tst_window_state::lateAnswersAreDropped()
{
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    cluster.hold(u"namespaces"_s);
    window.state.chooseContext(u"a"_s);
    QTRY_COMPARE(cluster.calls().count(u"namespaces"_s), 2);
    cluster.hold(u"use c"_s);
    window.state.chooseContext(u"c"_s);
    window.state.chooseContext(
        u"b"_s); // c is being made current and can no longer be stopped; its success means nothing
    cluster.answer(u"namespaces"_s, "default kube-system");
    cluster.release(u"namespaces"_s);
    QTRY_VERIFY(cluster.calls().contains(u"use c"_s));
    QVERIFY(!cluster.calls().contains(u"use b"_s));
    cluster.release(u"use c"_s);
    QTRY_COMPARE(window.reloads, 2);
    QTRY_COMPARE(applicationRecord().appContext, u"b"_s);
    QCOMPARE(cluster.calls().count(u"namespaces"_s), 3);
    QCOMPARE(remembered(cluster.settings).keys(), QStringList({u"b"_s})); // a and c never got a namespace
    QCOMPARE(window.state.namespaceList().entries.size(), 2);
    QVERIFY2(window.console.errors.isEmpty(), qPrintable(window.console.errors.join(u'\n')));
}

void tst_window_state::oneChangeAfterTheOther()
{
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window first(writer);
    Window second(writer);
    first.load(cluster);
    second.load(cluster);
    cluster.forgetCalls();
    cluster.hold(u"use a"_s);
    first.state.chooseContext(u"a"_s);
    second.state.windowDidBecomeMain();
    second.state.chooseNamespace(u"shop"_s);
    second.state.chooseNamespace(u"kube-system"_s);
    QTRY_COMPARE(cluster.calls(), QStringList({u"use a"_s}));
    cluster.release(u"use a"_s);
    // The second window was on context b when it became main, and its latest namespace is the one that
    // counts.
    QTRY_COMPARE(first.reloads, 2);
    first.untilWritten();
    QCOMPARE(remembered(cluster.settings).value(u"b"_s), u"kube-system"_s); // and neither forgets the other's
    QVERIFY(remembered(cluster.settings).contains(u"a"_s));
    QVERIFY(cluster.calls().contains(u"use b"_s));
    QVERIFY(!cluster.calls().contains(u"set shop"_s));
    QVERIFY(cluster.calls().indexOf(u"use b"_s) < cluster.calls().indexOf(u"set kube-system"_s));
}

void tst_window_state::namespacesOfTheWindowsContext_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QStringList>("calls");
    const QStringList reload{u"namespaces"_s, u"set default"_s};
    QTest::newRow("nothing happened") << u"-"_s << reload;
    QTest::newRow("another program wrote the kubeconfig") << u"file"_s << QStringList{u"use b"_s} + reload;
    QTest::newRow("during a switch") << u"switch"_s << QStringList{u"use a"_s} + reload;
    QTest::newRow("after a switch that failed")
        << u"failed"_s << QStringList{u"use a"_s, u"use a"_s} + reload;
    QTest::newRow("the context is gone") << u"gone"_s << QStringList{u"use b"_s};
}

/// A window never takes another cluster's namespaces for its own, nor sets its own in another context.
void tst_window_state::namespacesOfTheWindowsContext()
{
    QFETCH(QString, what);
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    window.state.windowDidBecomeMain();
    window.untilWritten();
    cluster.forgetCalls();
    if (what == u"file"_s || what == u"gone"_s) {
        QFile file(cluster.kubeConfig());
        QVERIFY(file.open(QIODevice::Append) && file.write("changed\n") > 0);
    }
    if (what == u"gone"_s) {
        cluster.fail(u"use b"_s, "no context exists with the name");
    } else if (what == u"switch"_s) {
        cluster.hold(u"use a"_s);
        window.state.chooseContext(u"a"_s);
    } else if (what == u"failed"_s) {
        cluster.fail(u"use a"_s, "locked");
        window.state.chooseContext(u"a"_s);
        QTRY_VERIFY(window.state.namespaceList().enabled);
        cluster.succeed(u"use a"_s);
    }
    window.state.reloadNamespaces();
    cluster.release(u"use a"_s);
    QTRY_VERIFY(window.state.namespaceList().enabled);
    window.untilWritten();
    QTEST(cluster.calls(), "calls");
    QCOMPARE(window.state.loadingHint(), QString());
    QVERIFY(!window.state.waitingSince().isValid());
}

void tst_window_state::namespaceChoiceStaysInItsContext()
{
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    for (const bool isMain : {false, true}) {
        tidewright::setMainConsoleLookup(
            [&]() -> tidewright::Console * { return isMain ? &window.console : nullptr; });
        QFile file(cluster.kubeConfig());
        QVERIFY(file.open(QIODevice::Append) && file.write("changed\n") > 0);
        file.close();
        cluster.forgetCalls();
        window.state.chooseNamespace(u"shop"_s);
        window.untilWritten();
        QCOMPARE(cluster.calls(), isMain ? QStringList({u"use b"_s, u"set shop"_s}) : QStringList());
    }
    tidewright::setMainConsoleLookup({});
}

void tst_window_state::whatFailedIsMadeUpForInFront()
{
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    cluster.fail(u"use a"_s, "locked");
    window.state.chooseContext(u"a"_s);
    QTRY_VERIFY(window.state.loadingHint().contains(u"could not be switched to"_s));
    cluster.succeed(u"use a"_s);
    window.state.windowDidBecomeMain();
    QTRY_COMPARE(window.reloads, 2);
    QCOMPARE(window.state.loadingHint(), QString());
}

void tst_window_state::kubeConfigsAreTold()
{
    FakeCluster cluster;
    const QString list = cluster.kubeConfig() + u':' + cluster.path(u"second"_s);
    QCOMPARE(KubeConfigWriter::fileState(cluster.path(u"missing"_s)), QByteArray());
    QSet<QByteArray> states{KubeConfigWriter::fileState(list)};
    for (const QString &path : {cluster.path(u"second"_s), cluster.kubeConfig()}) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::Append) && file.write("changed\n") > 0);
        file.close();
        states.insert(KubeConfigWriter::fileState(list));
    }
    QCOMPARE(states.size(), 3);
}

void tst_window_state::allNamespaces()
{
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    cluster.forgetCalls();
    window.state.chooseNamespace(tidewright::allNamespaces);
    QTRY_COMPARE(applicationRecord().appNamespace, tidewright::allNamespaces);
    QCOMPARE(window.reloads, 2);
    QCOMPARE(cluster.calls(), QStringList());
    QCOMPARE(remembered(cluster.settings).value(u"b"_s), tidewright::allNamespaces);
    QVERIFY(!window.state.namespaceList().entries.contains(tidewright::allNamespaces));
}

void tst_window_state::becomingMain_data()
{
    QTest::addColumn<bool>("loaded");
    QTest::addColumn<QString>("appContext");
    QTest::addColumn<QString>("appNamespace");
    QTest::addColumn<QByteArray>("contextError");
    QTest::addColumn<QStringList>("calls");
    const QStringList both{u"use b"_s, u"set default"_s};
    QTest::newRow("agrees") << true << u"b"_s << u"default"_s << QByteArray() << QStringList();
    QTest::newRow("other context") << true << u"a"_s << u"default"_s << QByteArray() << both;
    QTest::newRow("nothing applied yet") << true << QString() << u"default"_s << QByteArray() << both;
    QTest::newRow("other namespace") << true << u"b"_s << u"shop"_s << QByteArray()
                                     << QStringList{u"set default"_s};
    QTest::newRow("context fails") << true << u"a"_s << u"shop"_s << "gone"_ba << QStringList{u"use b"_s};
    QTest::newRow("not loaded yet") << false << u"a"_s << u"shop"_s << QByteArray() << QStringList();
}

void tst_window_state::becomingMain()
{
    QFETCH(bool, loaded);
    QFETCH(QByteArray, contextError);
    QFETCH(QStringList, calls);
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window window(writer);
    if (loaded) {
        window.load(cluster);
    }
    cluster.forgetCalls();
    if (!contextError.isEmpty()) {
        cluster.fail(u"use b"_s, contextError);
    }
    QFETCH(QString, appContext);
    QFETCH(QString, appNamespace);
    applicationRecord() = {appContext, appNamespace};
    window.state.windowDidBecomeMain();
    window.untilWritten();
    QCOMPARE(cluster.calls(), calls);
    QCOMPARE(window.reloads, loaded ? 1 : 0);
}

void tst_window_state::agreement_data()
{
    QTest::addColumn<QString>("disturbance");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<bool>("agreed");
    const QStringList both{u"use b"_s, u"set default"_s};
    QTest::newRow("agrees already") << u"none"_s << QStringList() << true;
    QTest::newRow("another window's context") << u"context"_s << both << true;
    QTest::newRow("another window's namespace") << u"namespace"_s << QStringList{u"set default"_s} << true;
    QTest::newRow("another program wrote the kubeconfig") << u"file"_s << both << true;
    QTest::newRow("another kubeconfig, same names") << u"path"_s << both << true;
    QTest::newRow("the context cannot be set") << u"use fails"_s << QStringList{u"use b"_s} << false;
    QTest::newRow("the namespace cannot be set") << u"set fails"_s << both << false;
}

void tst_window_state::agreement()
{
    QFETCH(QString, disturbance);
    QFETCH(bool, agreed);
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    window.state.windowDidBecomeMain();
    window.untilWritten();
    QCOMPARE(applicationRecord().appContext, u"b"_s);
    QCOMPARE(cluster.calls().count(u"set default"_s), 2);
    std::optional<bool> answer;
    window.state.agreeWithKubeConfig([&answer](bool outcome) { answer = outcome; });
    QTRY_COMPARE(answer, std::optional(true));
    answer.reset();
    cluster.forgetCalls();

    if (disturbance == u"context"_s) {
        applicationRecord().appContext = u"a"_s;
    } else if (disturbance == u"namespace"_s) {
        applicationRecord().appNamespace = u"shop"_s;
    } else if (disturbance == u"path"_s) {
        QVERIFY(QFile::copy(cluster.kubeConfig(), cluster.path(u"other"_s)));
        window.state.kubeCtl().configPath = cluster.path(u"other"_s);
    } else if (disturbance != u"none"_s) {
        QFile file(cluster.kubeConfig());
        QVERIFY(file.open(QIODevice::Append) && file.write("changed\n") > 0);
        if (disturbance == u"use fails"_s) {
            cluster.fail(u"use b"_s, "locked");
        } else if (disturbance == u"set fails"_s) {
            cluster.fail(u"set default"_s, "locked"); // the record of the last good change must not count
        }
    }
    window.console.errors.clear();
    window.state.agreeWithKubeConfig([&answer](bool outcome) { answer = outcome; });
    QTRY_VERIFY(answer);
    QCOMPARE(*answer, agreed);
    QTEST(cluster.calls(), "calls");
    QCOMPARE(window.console.errors.isEmpty(), agreed);
}

void tst_window_state::agreementsAreAnsweredInOrder()
{
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    Window window(writer);
    window.load(cluster);
    cluster.forgetCalls();
    cluster.hold(u"use b"_s);
    QStringList answered;
    for (const QString &name : {u"first"_s, u"second"_s, u"third"_s}) {
        window.state.agreeWithKubeConfig(
            [&answered, name](bool agreed) { answered.append(agreed ? name : u"no"_s); });
    }
    QTRY_COMPARE(cluster.calls(), QStringList{u"use b"_s});
    QVERIFY(answered.isEmpty());
    // A choice that is made while they wait comes after them.
    window.state.chooseContext(u"a"_s);
    QVERIFY(answered.isEmpty());
    cluster.release(u"use b"_s);
    QTRY_COMPARE(
        answered, QStringList({u"no"_s, u"no"_s, u"no"_s})); // the window shows another context by then
    QTRY_COMPARE(applicationRecord().appContext, u"a"_s);
    QTRY_COMPARE(window.reloads, 2);
    answered.clear();
    for (const QString &name : {u"first"_s, u"second"_s, u"third"_s}) {
        window.state.agreeWithKubeConfig(
            [&answered, name](bool agreed) { answered.append(agreed ? name : u"no"_s); });
    }
    QTRY_COMPARE(answered, QStringList({u"first"_s, u"second"_s, u"third"_s}));
}

void tst_window_state::closingEndsTheRequests()
{
    FakeCluster cluster;
    KubeConfigWriter writer(50ms);
    {
        Window window(writer);
        window.load(cluster);
        cluster.hold(u"namespaces"_s);
        cluster.hold(u"set shop"_s);
        window.state.reloadNamespaces();
        window.state.chooseNamespace(u"shop"_s);
        QTRY_COMPARE(cluster.calls().size(), 5);
    }
    // The next window does not wait for ever for a change that the closed one began, and gets the queue
    // afterwards.
    Window next(writer);
    cluster.release(u"set shop"_s);
    QTRY_VERIFY(cluster.ended().contains(u"set shop"_s)); // the reading was told to end before that
    cluster.release(u"namespaces"_s);
    next.load(cluster);
    QCOMPARE(next.reloads, 1);
    // A change of the kubeconfig is never cut off; the reading was.
    QVERIFY(cluster.ended().contains(u"set shop"_s));
    QCOMPARE(cluster.ended().count(u"namespaces"_s), cluster.calls().count(u"namespaces"_s) - 1);
}

QTEST_GUILESS_MAIN(tst_window_state)
#include "tst_window_state.moc"
