// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "pods/table/Pod.h"
#include "resources/kinds/Event.h"
#include "resources/kinds/Secret.h"
#include "resources/kinds/ServedKind.h"
#include "resources/loading/TableLoader.h"
#include "support/Patience.h"
#include "support/StubWindow.h"
#include "support/TestSupport.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;
using Following = TableLoader::Following;

namespace {

struct LiveWindow : StubWindow
{
    LiveWindow() { live = true; }
    void switchTo(bool on)
    {
        live = on;
        Q_EMIT liveUpdatesChanged();
    }
};

/// A kind of objects of a demo cluster in a table, without its view.
struct LiveTable
{
    LiveTable(const QStringList &arguments, const QString &nameSpace, const ResourceKind &kind = podKind())
        : demo(arguments + QStringList{u"--still"_s}, kubectlPath())
        , store(kind)
    {
        window.facade.configPath = demo.kubeconfig();
        window.context = u"demo-harbor"_s;
        window.nameSpace = nameSpace;
        const QByteArray contents = demo.kubectl({u"config"_s, u"view"_s, u"-ojson"_s}).output.toUtf8();
        window.facade.adopt(KubeConfigContents::parse(contents).value(), window.context);
        loader.setWatched(true);
    }

    QByteArrayList shown() const
    {
        QByteArrayList lines;
        for (const Row &row : store.rows()) {
            lines.append(listedPart(row->line).toByteArray() + '\t' + row->nameSpace.toUtf8());
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }
    /// What a kubectl lists now that knows nothing of this.
    QByteArrayList listed() const
    {
        const bool all = window.nameSpace == allNamespaces;
        const QStringList output
            = all ? withNamespaceField(store.kind().outputArguments) : store.kind().outputArguments;
        const QStringList place = (all ? QStringList{u"-A"_s} : QStringList{u"-n"_s, window.nameSpace})
            + labelSelectorArguments(loader.labelSelector());
        QByteArrayList lines;
        for (const QByteArray &line :
            demo.kubectl(QStringList{u"get"_s, store.kind().listWord} + place + output)
                .output.toUtf8()
                .split('\n')) {
            if (!line.isEmpty()) {
                lines.append(all ? line : line + '\t');
            }
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    /// Nobody looks at it any more, for so long that it stops following.
    void hide()
    {
        loader.setWatched(false);
        QVERIFY(QMetaObject::invokeMethod(loader.findChild<QTimer *>(u"unwatched"_s), "timeout"));
    }

    LiveWindow window;
    DemoProcess demo;
    RowStore store;
    TableLoader loader{store, window};
};

} // namespace

class TestLiveTable : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { setKubectlPath(qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL")); }

    void equalsAListingInTheEnd_data()
    {
        QTest::addColumn<QString>("nameSpace");
        QTest::addColumn<QByteArray>("disturb");
        QTest::addColumn<QString>("meanwhile");
        QTest::newRow("all namespaces") << QString(allNamespaces) << QByteArray() << QString();
        QTest::newRow("one namespace") << u"shop"_s << QByteArray() << u"reload"_s;
        QTest::newRow("some labels") << u"fleet"_s << "cut:400"_ba << u"labels"_s;
        QTest::newRow("broken streams")
            << QString(allNamespaces) << "cut:150,end:210,error:330"_ba << QString();
        QTest::newRow("a server that forgets")
            << QString(allNamespaces) << "expire:400,cut-state:200,shuffle"_ba << u"forget"_s;
        QTest::newRow("reloads") << QString(allNamespaces) << "duplicate:3,cut:900,refuse-initial"_ba
                                 << u"reload"_s;
        QTest::newRow("hidden for a while") << QString(allNamespaces) << QByteArray() << u"hide"_s;
        QTest::newRow("switched off and on") << QString(allNamespaces) << QByteArray() << u"switch"_s;
    }
    /// Ten thousand changes, under all that can befall a stream.
    void equalsAListingInTheEnd()
    {
        QFETCH(QString, nameSpace);
        QFETCH(QByteArray, disturb);
        QFETCH(QString, meanwhile);
        LiveTable table({u"--pods"_s, u"400"_s}, nameSpace);
        if (meanwhile == u"labels"_s) {
            table.loader.setLabelSelector(u"app in (anchor-0,dinghy-3,nobody),!absent"_s);
        }
        table.loader.load({});
        QTRY_COMPARE(table.loader.following(), Following::Live);
        QCOMPARE(table.shown(), table.listed());
        QVERIFY(!table.shown().isEmpty() && !table.loader.isLoading() && table.loader.problem().isEmpty());
        QVERIFY(table.demo.control("{\"disturb\": \"" + disturb + "\"}"));
        const int rounds = sanitized && !disturb.isEmpty() ? 4 : 10;
        for (int round = 0; round < rounds; ++round) {
            QVERIFY(table.demo.control("{\"changePods\": 1000}"));
            if (meanwhile == u"reload"_s && round % 3 == 0) {
                table.loader.load({.logged = true});
            } else if (meanwhile == u"forget"_s && round % 4 == 0) {
                QVERIFY(table.demo.control("{\"forget\": true}"));
            } else if (meanwhile == u"switch"_s) {
                table.window.switchTo(round % 2);
            } else if (meanwhile == u"hide"_s) {
                round % 2 ? table.loader.setWatched(true) : table.hide();
            }
            QCoreApplication::processEvents();
        }
        QVERIFY(table.demo.control("{\"disturb\": \"\"}"));
        table.loader.setWatched(true);
        QTRY_COMPARE_WITH_TIMEOUT(table.loader.following(), Following::Live, 60'000);
        QTRY_COMPARE_WITH_TIMEOUT(table.shown(), table.listed(), 60'000);
        QTRY_VERIFY(!table.loader.isLoading());
    }

    void everyClientFollowsWhatComesRawAndWhatDoesNot_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<bool>("isConfidential");
        for (const char *variable : {"TIDEWRIGHT_TEST_KUBECTL", "TIDEWRIGHT_TEST_KUBECTL_OLD"}) {
            if (const QString client = qEnvironmentVariable(variable); !client.isEmpty()) {
                QTest::addRow("pods, %s", qPrintable(client)) << client << false;
                QTest::addRow("secrets, %s", qPrintable(client)) << client << true;
            }
        }
    }
    void everyClientFollowsWhatComesRawAndWhatDoesNot()
    {
        QFETCH(QString, client);
        QFETCH(bool, isConfidential);
        setKubectlPath(client);
        LiveTable table({}, allNamespaces, isConfidential ? secretKind() : podKind());
        const auto run
            = [&table](const QString &line) { QCOMPARE(table.demo.kubectl(line.split(u' ')).exitCode, 0); };
        table.loader.load({});
        QTRY_COMPARE(table.loader.following(), Following::Live);
        QCOMPARE(table.shown(), table.listed());
        QVERIFY(!table.shown().isEmpty());
        run(u"create secret generic new --from-literal=a=b"_s);
        run(u"delete secret payment-gateway -nshop"_s);
        run(u"scale deploy --all -nshop --replicas=4"_s);
        QTRY_COMPARE(table.shown(), table.listed());
        table.hide();
        run(u"delete secret new"_s);
        run(u"scale deploy --all -nshop --replicas=1"_s);
        table.loader.setWatched(true);
        QTRY_COMPARE(table.shown(), table.listed());
        QTRY_COMPARE(table.loader.following(), Following::Live);
    }

    /// The latest first, and all of them "first listed" at one time.
    void eventsStandAsListed()
    {
        LiveTable table({}, u"shop"_s, eventKind());
        const auto objects = [&] {
            QStringList all; // without what tells those of one second apart
            for (const Row &row : table.store.rows()) {
                all.append(row->name.section(u'-', 0, 0));
            }
            return all;
        };
        table.loader.load({});
        QTRY_COMPARE(table.loader.following(), Following::Live);
        const QStringList live = objects();
        const Rows &rows = table.store.rows();
        QVERIFY(std::all_of(rows.begin(), rows.end(), [&](const Row &row) {
            return static_cast<const Event &>(*row).startDate
                == static_cast<const Event &>(*rows.front()).startDate;
        }));
        table.window.switchTo(false);
        table.loader.clear();
        table.loader.load({});
        QTRY_VERIFY(!table.loader.isLoading());
        QCOMPARE(live, objects());
        QVERIFY(live.size() > 5 && !std::is_sorted(live.begin(), live.end()));
    }

    /// The rows of a kind whose listing only kubectl can print.
    void printedKindsAreListedInTime()
    {
        using namespace std::chrono_literals;
        ListingPace pace;
        const QSignalSpy due(&pace, &ListingPace::due);
        pace.changed();
        QCOMPARE(due.count(), 1);
        pace.listingBegins(true);
        pace.changed(); // it may have been read before that
        QCOMPARE(due.count(), 1);
        pace.listingsEnded(true, 1h);
        QVERIFY(!pace.isCurrent() && !pace.isKeepingUp());
        pace.changed(); // costs too much now
        QCOMPARE(due.count(), 1);
        pace.listingBegins(true);
        pace.listingBegins(false);
        pace.listingsEnded(true, 0ms);
        QVERIFY(pace.isCurrent() && pace.isKeepingUp());
        pace.changed(); // not before a second has passed
        QVERIFY(!pace.isCurrent() && pace.isKeepingUp());
        pace.listingBegins(true);
        pace.listingsEnded(false, 0ms);
        pace.changed();
        QVERIFY(pace.hasFailed() && !pace.isKeepingUp());
        QCOMPARE(due.count(), 1);
    }

    void listsWhatCannotBeFollowed_data()
    {
        QTest::addColumn<ResourceKind>("kind");
        QTest::newRow("pods") << podKind();
        QTest::newRow("as printed") << printedKind(
            {.plural = u"configmaps"_s, .group = {}, .kind = u"ConfigMap"_s, .version = u"v1"_s},
            {u"NAME"_s, u"DATA"_s, u"AGE"_s});
    }
    void listsWhatCannotBeFollowed()
    {
        QFETCH(ResourceKind, kind);
        LiveTable table({u"--pods"_s, u"5"_s, u"--disturb"_s, u"refuse:0"_s}, allNamespaces, kind);
        table.loader.load({});
        QTRY_COMPARE(table.loader.following(), Following::Refused);
        QTRY_VERIFY(!table.shown().isEmpty() && (kind.printedTitles || table.shown() == table.listed()));
        QVERIFY(!table.loader.followingReason().isEmpty());
        QTRY_VERIFY(!table.loader.isLoading());
        QVERIFY(table.demo.control("{\"disturb\": \"\"}"));
        table.loader.load({.logged = true}); // how is it now?
        QTRY_COMPARE(table.loader.following(), Following::Live);
    }

    void aServerThatIsGone()
    {
        LiveTable table({u"--pods"_s, u"5"_s}, allNamespaces);
        table.loader.load({});
        QTRY_COMPARE(table.loader.following(), Following::Live);
        const QByteArrayList rows = table.shown();
        table.demo.server().kill();
        QTRY_COMPARE(table.loader.following(), Following::Reconnecting);
        QCOMPARE(table.shown(), rows);
        QVERIFY(!table.loader.followingReason().isEmpty());
        const QDateTime trueAsOf = table.loader.rowsAsOf();
        table.loader.load({.logged = true}); // fails, and takes nothing away
        QTRY_VERIFY(!table.loader.isLoading() && !table.loader.problem().isEmpty());
        QTRY_COMPARE(table.shown(), rows);
        QVERIFY(!table.loader.hasFailed());
        QCOMPARE(table.loader.rowsAsOf(), trueAsOf);
        table.loader.clear(); // another namespace
        table.loader.load({});
        QTRY_VERIFY(table.loader.hasFailed()); // in the words of a listing
        QVERIFY2(table.loader.problem().contains(u"refused"_s), qPrintable(table.loader.problem()));
        QVERIFY(table.store.rows().empty() && !table.loader.isLoading());
    }
};

QTEST_GUILESS_MAIN(TestLiveTable)
#include "tst_live_table.moc"
