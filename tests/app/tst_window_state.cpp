// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeWindow.h"
#include "core/running/ApplicationRecord.h"
#include "platform/desktop/Notifications.h"
#include "resources/changes/ClusterChange.h"
#include "support/Table.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

using Window = FakeWindow;
const QString ran = Window::ran;

} // namespace

class TestWindowState : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"); } // for the fallback

    void firstLoad_data()
    {
        // `namespaces` may be a complaint; `stored` is remembered for b; `own` is what the kubeconfig names.
        const Table<QString, QString, QString, QString, QString, QString> table;
        const QString all = u"b\na\tb\t"_s;
        const QString three = u"abc default shop"_s;
        const QString secret = u"!Error: namespaces is forbidden"_s;
        table.row("adopts", all, three, u""_s, u"default"_s, u"b/default"_s, u"b/default"_s);
        table.row("remembered", all, three, u"shop"_s, u"default"_s, u"b/shop"_s, u"b/shop"_s);
        table.row("vanished", all, three, u"gone"_s, u"default"_s, u"b/default"_s, u"b/default"_s);
        table.row("own", all, three, u""_s, u"shop"_s, u"b/shop"_s, u"b/shop"_s);
        table.row("first", all, three, u""_s, u"gone"_s, u"b/abc"_s, u"b/abc"_s);
        table.row(
            "all namespaces", all, three, allNamespaces, u"shop"_s, u"b/"_s + allNamespaces, u"b/shop"_s);
        table.row(
            "another's", u"a\na\tb\t"_s, three, u"shop"_s, u"default"_s, u"a/default"_s, u"a/default"_s);
        table.row(
            "unlisted context", u"x\na\tb\t"_s, three, u""_s, u"default"_s, u"x/default"_s, u"nowhere"_s);
        table.row("secret, remembered", all, secret, u"shop"_s, u"own"_s, u"b/shop"_s, u"b/shop"_s);
        table.row("secret, own", all, secret, u""_s, u"own"_s, u"b/own"_s, u"b/own"_s);
        table.row("secret, none", all, secret, u""_s, u""_s, u"b/default"_s, u"b/default"_s);
    }

    void firstLoad()
    {
        const auto [contexts, namespaces, stored, own, shown, place]
            = Table<QString, QString, QString, QString, QString, QString>::current();
        FakeCluster cluster;
        cluster.answer(u"contexts"_s, contexts.toLatin1());
        cluster.edit("\"default\"", '"' + own.toLatin1() + '"');
        cluster.answer(u"namespaces"_s, namespaces.toLatin1());
        const bool isSecret = namespaces.startsWith(u'!');
        if (isSecret) {
            cluster.fail(u"namespaces"_s, namespaces.toLatin1());
        }
        cluster.settings.set(u"lastNamespaces"_s, UserDefaults::Dictionary{{u"b"_s, stored}});
        const QByteArray bytes = cluster.kubeConfigBytes();
        Window window;
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
        QCOMPARE(window.answered() == ran ? window.place() : u"nowhere"_s, place);
        QCOMPARE(window.shown(), shown);
        const QString context = shown.section(u'/', 0, 0);
        QCOMPARE(window.state.contextList().entries, QStringList({u"a"_s, u"b"_s}));
        QCOMPARE(window.state.contextList().selected, context == u"x" ? QString() : context);
        QCOMPARE(window.state.namespaceList().entries.isEmpty(), isSecret);
        QCOMPARE(window.state.namespaceList().acceptsOthers, isSecret);
        QCOMPARE(window.state.namespaceList().selected, shown.section(u'/', 1));
        QCOMPARE(window.state.loadingHint(), QString());
        QCOMPARE(window.console.errors.filter(u"No namespaces could be found"_s), QStringList());
        QCOMPARE(window.reloads, 1);
        QCOMPARE(cluster.remembered().value(context), shown.section(u'/', 1));
        QCOMPARE(cluster.kubeConfigBytes(), bytes);
    }

    void liveTablesBeginWithTheRememberedNamespace_data()
    {
        QTest::addColumn<QString>("remembered");
        QTest::addColumn<QString>("later");
        QTest::addColumn<int>("reloads");
        QTest::newRow("there") << u"shop"_s << u"b/shop"_s << 1;
        QTest::newRow("gone by now") << u"torn-down"_s << u"b/default"_s << 2;
        QTest::newRow("of all") << QString(allNamespaces) << u"b/"_s + allNamespaces << 1;
    }
    void liveTablesBeginWithTheRememberedNamespace()
    {
        QFETCH(QString, remembered);
        FakeCluster cluster;
        cluster.settings.set(u"liveUpdates"_s, u"on"_s);
        cluster.settings.set(u"lastNamespaces"_s, UserDefaults::Dictionary{{u"b"_s, remembered}});
        cluster.hold(u"namespaces"_s);
        Window window;
        window.state.viewWillAppear(cluster.kubeConfig());
        QTRY_COMPARE(window.shown(), u"b/"_s + remembered);
        QCOMPARE(window.state.loadingHint(), QString()); // the tables may load
        QVERIFY(!window.state.namespaceList().enabled);
        cluster.release(u"namespaces"_s);
        QTRY_VERIFY(window.state.namespaceList().enabled);
        QTEST(window.shown(), "later");
        QTEST(window.reloads, "reloads");
        QCOMPARE(window.state.namespaceList().selected, window.state.currentNamespace());
        window.untilSettled();
    }

    void withoutACurrentContextTheUserChooses()
    {
        FakeCluster cluster;
        cluster.answer(u"contexts"_s, "\na\tb\t");
        Window window;
        window.state.viewWillAppear(cluster.kubeConfig());
        QTRY_COMPARE(window.state.loadingHint(), u"Choose a context."_s);
        QVERIFY(!window.state.waitingSince().isValid()); // for the user, not the other way round
        QCOMPARE(
            cluster.calls(), QStringList{u"contexts"_s}); // nobody is asked for the namespaces of no context
        QCOMPARE(window.place(), u"nowhere"_s);
        window.state.chooseContext(u"a"_s);
        QTRY_COMPARE(window.place(), u"a/default"_s);
    }

    void withoutNamespacesTheTablesAreTold()
    {
        FakeCluster cluster;
        cluster.fail(u"namespaces"_s, "no route to host");
        Window window;
        window.state.viewWillAppear(cluster.kubeConfig());
        QTRY_COMPARE(window.reloads, 1);
        QVERIFY(
            window.console.errors.last().endsWith(u"select the menu item `Cluster: Reload Namespace`."_s));
        QVERIFY(window.state.namespaceList().enabled && !window.state.namespaceList().acceptsOthers);
        QCOMPARE(window.state.loadingHint(), u"The namespaces could not be loaded.\nno route to host"_s);
        QVERIFY(cluster.remembered().isEmpty());

        cluster.succeed(u"namespaces"_s);
        window.state.reloadNamespaces();
        QTRY_COMPARE(window.shown(), u"b/default"_s);

        cluster.fail(u"namespaces"_s, "no route to host");
        window.state.chooseContext(u"a"_s);
        QTRY_COMPARE(window.shown(), u"a/"_s); // not the namespace of another context
        QCOMPARE(window.state.loadingHint(), u"The namespaces could not be loaded.\nno route to host"_s);
    }

    void choosing()
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
        QCOMPARE(window.place(), u"nowhere"_s);
        QVERIFY(!window.state.namespaceList().enabled);
        QTRY_COMPARE(applicationRecord().appNamespace, u"shop"_s);
        QCOMPARE(applicationRecord().appContext, u"a"_s);
        QCOMPARE(window.place(), u"a/shop"_s);
        QCOMPARE(
            cluster.calls(), QStringList({u"set default"_s, u"use a"_s, u"namespaces"_s, u"set shop"_s}));
        QCOMPARE(window.reloads, 3);
        window.state.chooseNamespace(allNamespaces);
        QTRY_COMPARE(applicationRecord().appNamespace, allNamespaces);
        QCOMPARE(window.place(), u"a/shop"_s);
        QCOMPARE(cluster.remembered(),
            UserDefaults::Dictionary({{u"a"_s, allNamespaces}, {u"b"_s, u"default"_s}}));
    }

    void failedSwitch_data()
    {
        const Table<QString, QString, QString, QString> table;
        table.row("words", u"a"_s, u"use a"_s, u"err"_s, u"file exists"_s);
        table.row("kubeconfig not read", u"a"_s, u"read"_s, u"err"_s, u"file exists"_s);
        table.row("-h", u"-h"_s, u"use -h"_s, u""_s, u"take the name for an option"_s);
    }

    void failedSwitch()
    {
        const auto [context, run, way, reason] = Table<QString, QString, QString, QString>::current();
        FakeCluster cluster;
        cluster.answer(u"contexts"_s, "b\na\tb\t-h\t--help\t");
        Window window(cluster);
        const QByteArray bytes = cluster.kubeConfigBytes();
        cluster.disturb(run, way);
        window.state.chooseContext(context);
        QTRY_VERIFY(window.state.namespaceList().enabled);
        QVERIFY(window.state.loadingHint().startsWith(
            u"The context %1 could not be switched to."_s.arg(context)));
        QTRY_VERIFY(window.console.errors.value(0).contains(reason));
        QCOMPARE(window.state.namespaceList().entries.size(), 3);
        QCOMPARE(window.state.contextList().entries.size(), 4);
        // The tables still show context b: nothing may be changed in a by what the user sees.
        QVERIFY(window.answered().startsWith(u"The window is switching to the context "_s + context));
        QCOMPARE(window.place(), u"nowhere"_s);
        QCOMPARE(window.reloads, 1);
        QCOMPARE(cluster.kubeConfigBytes(), bytes);
        QCOMPARE(applicationRecord().appContext, QString());
        QCOMPARE(cluster.calls().isEmpty(), run != u"use a"_s);
        if (!way.isEmpty()) {
            cluster.succeed(run);
            window.state.retryLoading();
            QTRY_COMPARE(window.place(), u"a/default"_s);
            QTRY_VERIFY(cluster.calls().contains(u"file use a"_s)); // as the user chose
        }
    }

    void lateAnswersAreDropped()
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
        QCOMPARE(window.place() + applicationRecord().appContext, u"b/defaultb"_s);
        QCOMPARE(cluster.remembered().keys(), QStringList{u"b"_s}); // a and c never got a namespace
        QCOMPARE(window.state.namespaceList().entries.size(), 2);
        QCOMPARE(window.console.errors.filter(u"could"_s), QStringList());
    }

    void settling_data()
    {
        const Table<QString, QString, QString, QString> table;
        const QString failed = u"The window's namespace shop could not be set."_s;
        const QString switching
            = u"The window is switching to the context a; its tables do not show that context yet."_s;
        table.row("namespace had failed", u"failed once"_s, u""_s, ran, u"b/shop"_s);
        table.row("namespace fails again", u"failed, fails"_s, u""_s, failed, u"b/default"_s);
        table.row("context chosen meanwhile", u"held"_s, u"context"_s, switching, u"nowhere"_s);
        table.row("contexts reloaded meanwhile", u"held"_s, u"reload"_s, failed, u"b/default"_s);
    }

    void settling()
    {
        const auto [set, meanwhile, expected, place] = Table<QString, QString, QString, QString>::current();
        FakeCluster cluster;
        UserKubeConfig::setPreference(UserKubeConfig::Follows::Nothing);
        Window window(cluster);
        cluster.hold(u"use a"_s);
        if (set.contains(u"fail"_s)) {
            cluster.fail(u"set shop"_s, "locked");
        }
        cluster.hold(u"set shop"_s);
        window.state.chooseNamespace(u"shop"_s);
        QTRY_VERIFY(cluster.calls().contains(u"set shop"_s));
        if (set.startsWith(u"failed"_s)) {
            cluster.release(u"set shop"_s);
            QTRY_VERIFY(!window.console.errors.isEmpty());
        }
        if (set == u"failed once"_s) {
            cluster.succeed(u"set shop"_s);
        }
        const auto first = window.ask();
        QVERIFY(first->isEmpty());
        if (meanwhile == u"context"_s) {
            window.state.chooseContext(u"a"_s);
        } else if (meanwhile == u"reload"_s) {
            cluster.fail(u"namespaces"_s, "no route to host");
            window.state.reloadContexts();
        } else {
            cluster.release(u"set shop"_s);
        }
        QCOMPARE(window.answered(), expected);
        QCOMPARE(*first, expected); // in order
        QCOMPARE(window.place(), place);
        for (const QString &run : {u"set shop"_s, u"use a"_s, u"namespaces"_s}) {
            cluster.release(run);
            cluster.succeed(run);
        }
        QTRY_COMPARE(window.answered(), ran); // and is never stuck
    }

    void editedKubeConfig_data()
    {
        const Table<QString, QString, QString, QString> table;
        table.row("removed", u"name"_s, u"b"_s, u"z"_s, u"The kubeconfig has no context b any more."_s);
        table.row("another cluster", u"cluster"_s, u"b"_s, u"z"_s,
            u"The context b of the kubeconfig names another cluster or user now."_s);
    }

    void editedKubeConfig()
    {
        const auto [key, before, after, said] = Table<QString, QString, QString, QString>::current();
        const QByteArray asKnown = u"\"%1\": \"%2\""_s.arg(key, before).toLatin1();
        const QByteArray edited = u"\"%1\": \"%2\""_s.arg(key, after).toLatin1();
        FakeCluster cluster;
        UserKubeConfig::setPreference(UserKubeConfig::Follows::Nothing);
        Window window(cluster);
        for (int round = 0; round < 2; ++round) {
            cluster.edit(asKnown, edited);
            if (round == 0) { // once by turning to the window, once by the next command
                window.state.windowDidBecomeMain();
            }
            QCOMPARE(window.answered(), said);
            QCOMPARE(window.state.loadingHint(),
                QString(said + u"\nReload shows what is there now; another context can be chosen above."_s));
            if (round == 0) {
                cluster.edit(edited, asKnown);
                QCOMPARE(window.answered(), ran);
                QCOMPARE(window.reloads, 2); // the tables start again
                QCOMPARE(window.state.loadingHint(), QString());
            }
        }
        QVERIFY(!cluster.calls().contains(u"namespaces"_s));
        // The name is the same, the rows are those of the old cluster until the new one's have come.
        cluster.hold(u"namespaces"_s);
        if (key == u"cluster"_s) {
            window.state.reloadContexts();
            QTRY_VERIFY(cluster.calls().contains(u"namespaces"_s));
            QVERIFY(window.answered().startsWith(u"The window is switching"_s));
        }
        cluster.release(u"namespaces"_s);
        window.state.reloadNamespaces();
        QTRY_VERIFY(window.state.namespaceList().enabled);
        QCOMPARE(window.answered() == ran, key != u"name"_s);
        QCOMPARE(window.place() == u"nowhere"_s, key == u"name"_s);
    }

    void userFileFollows_data()
    {
        const Table<QString, QString, QString> table; // what is run with these preferences
        table.row("looking", u"look"_s, u""_s, u""_s);
        table.row("closing", u""_s, u""_s, u""_s);
        table.row("context", u"context"_s, u"file use a"_s, u"file use a"_s);
        table.row("namespace", u"shop"_s, u"file set shop"_s, u"file set shop"_s);
        table.row("all namespaces", allNamespaces, u""_s, u""_s);
        table.row("namespace, file elsewhere", u"elsewhere shop"_s, u""_s, u""_s);
        table.row("in front, file elsewhere", u"elsewhere look"_s, u"file use b"_s, u""_s);
    }

    void userFileFollows()
    {
        const auto [event, window, choice] = Table<QString, QString, QString>::current();
        for (const char *preference : {"window", "choice", "nothing"}) {
            const QString written = *preference == 'w' ? window : *preference == 'c' ? choice : QString();
            FakeCluster cluster;
            cluster.settings.set(u"kubeconfigFollows"_s, QString::fromLatin1(preference));
            auto shown = std::make_unique<Window>(cluster);
            if (event.startsWith(u"elsewhere"_s)) {
                cluster.edit("\"current-context\": \"b\"", "\"current-context\": \"c\"");
            }
            const QByteArray bytes = cluster.kubeConfigBytes();
            if (event.endsWith(u"look"_s)) {
                shown->state.windowDidBecomeMain();
                shown->state.reloadNamespaces();
            } else if (event == u"context"_s) {
                shown->state.chooseContext(u"a"_s);
            } else if (!event.isEmpty()) {
                shown->state.chooseNamespace(event.endsWith(u"shop"_s) ? u"shop"_s : event);
            }
            QTRY_COMPARE(shown->reloads, event.isEmpty() ? 1 : 2);
            shown->untilSettled();
            QTRY_VERIFY(!shown->file.isBusy());
            QCOMPARE(shown->console.errors, QStringList());
            shown.reset();
            QCOMPARE(cluster.calls().filter(u"file "_s).join(u','), written);
            QCOMPARE(cluster.kubeConfigBytes() == bytes, written.isEmpty());
            QVERIFY(!QFileInfo::exists(cluster.kubeConfig() + u".tidewright-copy"_s));
        }
    }

    void spoiltUserFile_data()
    {
        const Table<QString, QString> table;
        table.row("locked", u"err"_s, u"config.lock: file exists"_s);
        table.row("killed half-way", u"cut kill"_s, u"ended by signal 9"_s);
        table.row("failed half-way", u"cut status"_s, u"failed with exit status 3"_s);
        table.row("nothing done", u"idle"_s, u"what it was to set is not there"_s);
        table.row("no copy", u"folder"_s, u"No copy of"_s);
        table.row("copy left, file well", u"old"_s, u""_s);
        table.row("copy left, file lost", u"lost"_s, u""_s);
    }

    /// Through a link, as people keep their kubeconfigs elsewhere.
    void spoiltUserFile()
    {
        const auto [way, reason] = Table<QString, QString>::current();
        FakeCluster cluster;
        const QString link = cluster.path(u"link"_s);
        const QString copy = cluster.kubeConfig() + u".tidewright-copy"_s;
        QVERIFY(QFile::link(cluster.kubeConfig(), link));
        const QByteArray bytes = cluster.kubeConfigBytes();
        cluster.disturb(u"file use a"_s, way);
        qputenv("KUBECONFIG", "/inherited:/by:/nobody");
        Window window;
        const QString files = link + u':' + cluster.path(u"second"_s);
        window.load(files); // one of several, of which another is missing
        if (way == u"folder"_s) {
            QVERIFY(QDir().mkpath(copy + u"/full"_s));
        } else if (reason.isEmpty()) {
            QFile file(copy);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(way == u"lost"_s ? bytes : "old") > 0);
        }
        if (way == u"lost"_s) {
            cluster.edit(bytes, QByteArray());
            window.file.contextChosen(files, u"a"_s);
        } else {
            window.state.chooseContext(u"a"_s);
            QTRY_COMPARE(window.reloads, 2);
        }
        QTRY_VERIFY(!window.file.isBusy());
        QCOMPARE(window.answered(), ran);
        QCOMPARE(window.place(), way == u"lost"_s ? u"b/default"_s : u"a/default"_s);
        const bool isDone = cluster.kubeConfigBytes().contains("\"current-context\": \"a\"");
        QCOMPARE(isDone, reason.isEmpty());
        QCOMPARE(cluster.kubeConfigBytes() == bytes, !isDone);
        QVERIFY(QFileInfo(link).isSymLink() && !QFileInfo::exists(cluster.path(u"second"_s)));
        const auto shell = window.state.kubeCtl().makeShell();
        QVERIFY(QString::fromUtf8(shell->environment.value("KUBECONFIG")).endsWith(u':' + files));
        qunsetenv("KUBECONFIG");
        QCOMPARE(QFileInfo::exists(copy), way == u"folder"_s);
        const QString notes
            = window.console.responses.filter(u"Note: your own kubeconfig was left"_s).join(u'|');
        QVERIFY2(notes.contains(reason) && notes.isEmpty() == reason.isEmpty(), qPrintable(notes));
        QCOMPARE(window.console.errors, QStringList());
    }

    void closingEndsWhatWaits()
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
        QTRY_COMPARE(notified.value(1),
            u"Context: b\nNamespace: shop\nKubeconfig: "_s + cluster.kubeConfig() + u'\n'
                + other.errors.value(0));
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
    void hangingKubeConfig()
    {
        FakeCluster cluster;
        const QString pipe = cluster.path(u"pipe"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        Window window;
        window.state.viewWillAppear(pipe);
        QTRY_VERIFY(cluster.ended().contains(u"contexts"_s));
        window.state.stopWaiting();
        QCOMPARE(window.state.loadingHint(), u"No contexts could be loaded.\nLoading was stopped."_s);
        window.load(cluster.kubeConfig());
        QCOMPARE(window.answered(), ran);
        cluster.answer(u"contexts"_s, "");
        Window another;
        another.state.viewWillAppear(cluster.kubeConfig());
        QTRY_VERIFY(another.state.loadingHint().contains(u"There are none in "_s + cluster.kubeConfig()));
    }
};

QTEST_GUILESS_MAIN(TestWindowState)
#include "tst_window_state.moc"
