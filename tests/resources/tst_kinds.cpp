// SPDX-License-Identifier: GPL-3.0-or-later
// From the lines of a listing to the fields and cells of every kind's rows; and every listing by real
// clients.
#include "AllKinds.h"
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "platform/text/Timestamp.h"
#include "resources/controllers/EventController.h"
#include "resources/kinds/FieldText.h"
#include "resources/listing/LoadProblem.h"
#include "resources/listing/Merge.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/SharedContentViewController.h"
#include "support/Patience.h"
#include "support/StubWindow.h"
#include "support/TestSupport.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <map>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 30'000; // milliseconds, for what a real kubectl does on a busy machine
double now = 1'800'000'000;

/// By what kubectl lists them by.
const std::map<QString, MakeKind> &kinds()
{
    static const std::map<QString, MakeKind> all = [] {
        std::map<QString, MakeKind> byWord;
        for (const MakeKind make : allKinds) {
            byWord[make().listWord] = make;
        }
        return byWord;
    }();
    return all;
}

} // namespace

class TestKinds : public QObject
{
    Q_OBJECT

    std::map<QString, std::unique_ptr<DemoProcess>> m_demos; // by client

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *variable : {"TIDEWRIGHT_TEST_KUBECTL", "TIDEWRIGHT_TEST_KUBECTL_OLD"}) {
            if (const QString client = qEnvironmentVariable(variable); !client.isEmpty()) {
                m_demos[client] = std::make_unique<DemoProcess>(QStringList{u"--still"_s}, client);
                QVERIFY(m_demos[client]->isReady());
            }
        }
        QVERIFY(!m_demos.empty());
    }
    void init()
    {
        setClockForTesting([] { return now; });
    }
    void cleanup() { setClockForTesting(nullptr); }

    void linesBecomeRows_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<QByteArray>("line"); // "T" is a timestamp an hour and a minute ago
        QTest::addColumn<QString>("cells");
        const auto row = [](const char *word, const char *name, const char *line, const char *cells) {
            QTest::addRow("%s %s", word, name)
                << QString::fromLatin1(word) << QByteArray(line) << QString::fromUtf8(cells);
        };
        row("deploy", "all there", "web\t4\t3\t2\t4\tT", "web|Available <NSStatusAvailable>|4|3|2|4|1h 1m");
        row("deploy", "none ready", "web\t2\t\t2\t\tT",
            "web|Unavailable <NSStatusUnavailable>|2|0|2|0|1h 1m");
        row("deploy", "numbers that are none", "web\t+3\t-\t9223372036854775808\t1x\t",
            "web|Unavailable <NSStatusUnavailable>|3|0|0|0|<unknown>");
        row("deploy", "scaled to none", "web\t\t\t\t\tT",
            "web|None wanted <NSStatusAvailable>|0|0|0|0|1h 1m");
        row("po", "none ready", "p\tfalse false\tPending\t0 0\tCreating Creating\tT\ta b",
            "p|Pending: Creating <NSStatusUnavailable>|Creating|0|–|–|1h 1m|a, b|||");
        row("po", "coming", "p\tfalse\tPending\t0\tContainerCreating\tT\ta",
            "p|Pending: ContainerCreating <NSStatusPartiallyAvailable>|ContainerCreating|0|–|–|1h 1m|a|||");
        row("po", "failed", "p\t\tFailed\t\t\tT\ta", "p|Failed <NSStatusUnavailable>||0|–|–|1h 1m|a|||");
        row("po", "counts that are none", "p\ttrue\tRunning\tx 9223372036854775807 4\t\tT\ta",
            "p|1/1 Running <NSStatusAvailable>||9223372036854775807|–|–|1h 1m|a|||");
        row("rs", "order of the fields", "web-1\t4\t2\t3\tT",
            "web-1|Partly available <NSStatusPartiallyAvailable>|4|2|3|1h 1m");
        row("rs", "placeholders", "web-1\t0\t<no value>\t<no value>\tT",
            "web-1|None wanted <NSStatusAvailable>|0|0|0|1h 1m");
        row("ds", "no labels", "probe\t1\t1\t1\t1\t1\tmap[]\tT",
            "probe|Available <NSStatusAvailable>|1|1|1|1|1||1h 1m");
        row("job", "nothing to complete", "j\t<no value>\t<no value>\t<no value>\t<no value>\t\tT",
            "j|0/0 <NSStatusAvailable>|Waiting||<unknown>||1h 1m");
        row("job", "conditions",
            "j\t1\t1\tT\t2027-01-15T08:00:00Z\tComplete:,Failed:BackoffLimitExceeded,Odd,\tT",
            "j|1/1 <NSStatusAvailable>|Complete, Failed, Odd|, BackoffLimitExceeded, |1h 1m|1h 1m|1h 1m");
        row("cj", "running", "c\t@daily\tfALSE oR not\tc-1 c-2\tT\tT",
            "c|@daily|False Or Not|Running <NSStatusAvailable>|1h 1m|1h 1m");
        row("cj", "as bare as can be", "c\t\t\t\t\tT", "c|||No|Never|1h 1m");
        row("services", "no ports", "s\tExternalName\t\t\t:\tT", "s|ExternalName||||1h 1m");
        row("ep", "two addresses", "e\t10.1.1.1,10.1.1.2,\tPod/a,Pod/b,\thttp:80/TCP,dns:53/UDP,\tT",
            "e|10.1.1.1, 10.1.1.2|Pod/a, Pod/b|http:80/TCP, dns:53/UDP|1h 1m");
        row("ep", "neither targets nor port names",
            "e\t10.1.1.1,\t<no value>/<no value>,\t<no value>:6443/TCP,\tT", "e|10.1.1.1||6443/TCP|1h 1m");
        row("ep", "no addresses", "e\t\t\t\tT", "e||||1h 1m");
        row("persistentvolumes", "available", "v\t1Gi\tReadWriteOncePod,\tDelete\tAvailable\t/\t\tT",
            "v|Available <NSStatusAvailable>|1Gi|RWOPod|Delete|||1h 1m");
        row("events", "warning", "e\tWarning\tBackOff\tPod\tweb\tagain, <no value> and again\tT",
            "Warning <warning> in orange|1h 1m|BackOff|Pod/web|again, <no value> and again|*|e");
        row("events", "lines and tabs in the message", "e\tNormal\tPulled\tPod\tweb\tone\ttwo\n\nthree\n\tT",
            "Normal <statusInformation>|1h 1m|Pulled|Pod/web|one two  three|*|e");
        row("events", "error", "e\tError\t<no value>\tNode\tn\t<no value>\tT",
            "Error <NSStatusUnavailable> in red|1h 1m||Node/n||*|e");
        row("events", "normal", "e\tNormal\tStarted\tPod\tweb\t\tT",
            "Normal <statusInformation>|1h 1m|Started|Pod/web||*|e");
    }
    void linesBecomeRows()
    {
        QFETCH(QString, word);
        QFETCH(QByteArray, line);
        QFETCH(QString, cells);
        const QString time = u"2027-01-15T06:59:00Z"_s; // now is eight o'clock of that day
        const auto timed = [&time](QString text) {
            return text.replace(QRegularExpression(u"\\bT(?=$|\\||\\t)"_s), time);
        };
        const ResourceKind kind = kinds().at(word)();
        const MergeResult merged = mergeListing(kind, timed(QString::fromUtf8(line)).toUtf8(), {});
        QCOMPARE(merged.skippedLines, 0U);
        QCOMPARE(merged.added.size(), 1U);
        QVERIFY2(matches(cellsOf(kind, *merged.added.front()), cells),
            qPrintable(cellsOf(kind, *merged.added.front())));
    }

    void brokenLinesAreSkipped_data()
    {
        QTest::addColumn<QString>("diagnostic");
        QTest::newRow("deploy") << QString();
        QTest::newRow("ds") << u"item count mismatch on daemonset 10\n"_s;
        QTest::newRow("serviceaccounts") << u"Item count mismatch in service accounts ODD"_s;
        QTest::newRow("clusterroles") << u"Item count mismatch in cluster roles ODD"_s;
        QTest::newRow("persistentvolumes") << u"row count is 8\n"_s;
    }
    void brokenLinesAreSkipped()
    {
        QFETCH(QString, diagnostic);
        const ResourceKind kind = kinds().at(QString::fromLatin1(QTest::currentDataTag()))();
        const QByteArray good = "good" + QByteArray("\t1").repeated(qsizetype(kind.fieldCount) - 1);
        const QByteArray odd = "odd" + QByteArray("\tx").repeated(9) + '\n';
        const CapturedOutput output;
        const MergeResult merged = mergeListing(kind, odd + good + "\nshort\n\xff\xfe\x01", {});
        QCOMPARE(merged.added.size(), 1U);
        QCOMPARE(merged.added.front()->name, u"good"_s);
        QCOMPARE(merged.lines, 4U);
        QCOMPARE(merged.skippedLines, 3U);
        QCOMPARE(output.text().isEmpty(), diagnostic.isEmpty());
        QVERIFY(output.text().contains(diagnostic.replace(u"ODD"_s, QString::fromLatin1(odd))));
    }

    void eventsKeepTheirMoment()
    {
        const ResourceKind kind = eventKind();
        const auto line = [](const char *name, const char *reason) -> QByteArray {
            return QByteArray(name) + "\tNormal\t" + reason + "\tPod\tp\tm\tt\n";
        };
        StubWindow window;
        EventController table(window);
        auto &store = *table.findChild<RowStore *>();
        const auto list = [&](const QByteArray &listing) {
            MergeResult merged = mergeListing(kind, listing, store.rows());
            store.replaceRows(merged.changed);
            store.removeRowsAt(merged.stale);
            store.appendRows(merged.added);
            QStringList shown;
            for (int row = 0; row < table.arrangedObjects().rowCount(); ++row) {
                shown.append(table.arrangedObjects().arrangedRow(row)->name);
            }
            return shown.join(u' ');
        };
        QCOMPARE(list(line("old", "a") + line("middle", "a") + line("new", "a")), u"new middle old"_s);
        const double first = now;
        now += 30;
        // Changed rows are copies; what is new comes on top, and the table's own order is that of its coming.
        QCOMPARE(list(line("middle", "b") + line("new", "b") + line("newer", "a") + line("newest", "a")),
            u"newest newer new middle"_s);
        QCOMPARE(store.rows().back()->name, u"newer"_s);
        QCOMPARE(static_cast<const Event &>(*store.rows()[0]).reason, u"b"_s);
        QCOMPARE(static_cast<const Event &>(*store.rows()[0]).startDate, first);
        QCOMPARE(static_cast<const Event &>(*store.rows().back()).startDate, now);
        now = first;
    }

    void quantitiesAreOrdered()
    {
        const QStringList ascending{u"<no value>"_s, u"0"_s, u"500m"_s, u"1"_s, u"1k"_s, u"1Ki"_s, u"2e3"_s,
            u"1G"_s, u"1Gi"_s, u"1.5Gi"_s, u"2Ti"_s};
        for (qsizetype i = 1; i < ascending.size(); ++i) {
            QVERIFY2(quantityOf(ascending[i - 1]) < quantityOf(ascending[i]), qPrintable(ascending[i]));
        }
    }

    void realListings_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("nameSpace");
        QTest::addColumn<QStringList>(
            "rows"); // each must be there once; "*" stands for times and generated names
        struct Listing
        {
            const char *word;
            const char *nameSpace;
            QStringList rows;
        };
        const std::vector<Listing> listings{
            {"po", "shop",
                {u"cart-*|2/3 Running <NSStatusUnavailable>|CrashLoopBackOff|17|–|–|* days|cart, mesh-proxy, config-reloader|||"_s,
                    u"checkout-*|Pending: ImagePullBackOff <NSStatusUnavailable>|ImagePullBackOff|0|–|–|*m|checkout|||"_s,
                    u"nightly-price-sync-*|Succeeded <statusCompleted>||0|–|–|*|sync|||"_s}},
            {"deploy", "shop",
                {u"storefront|*|4|4|4|4|*"_s, u"checkout|*|2|0|2|0|*"_s, u"wishlist|*|0|0|0|0|*"_s}},
            {"rs", "shop", {u"storefront-*|*|4|4|4|*"_s, u"checkout-*|*|2|0|0|*"_s}},
            {"ds", "monitoring",
                {u"node-probe|*|5|5|4|5|4|<no value>|*"_s,
                    u"gpu-probe|*|0|0|0|0|0|accelerator:gpu disk:ssd|*"_s}},
            {"job", "shop",
                {u"export-catalog|1/3 <NSStatusPartiallyAvailable>|Running||*||*"_s,
                    u"migrate-orders-v7|0/1*|Failed|BackoffLimitExceeded|*||*"_s,
                    u"nightly-price-sync-28512345|1/1 <NSStatusAvailable>|Complete||*|*|*"_s}},
            {"cj", "shop",
                {u"nightly-price-sync|15 2 * * *|False*|No|*|*"_s,
                    u"rebuild-recommendation-features-weekly|0 4 * * 0|True <NSStatusPartiallyAvailable>|No|Never|*"_s}},
            {"services", "default",
                {u"web|LoadBalancer|10.*|web-1a2b3c.lb.example|80 443:31080 31443|*"_s,
                    u"greeter|ClusterIP|10.*||9000|*"_s}},
            {"services", "payments",
                {u"legacy-bank|ExternalName|||443|*"_s, u"queue|ClusterIP|None||5672|*"_s}},
            {"ep", "default",
                {u"greeter|10.*|Pod/greeter-*|main:9000/TCP|*"_s,
                    u"kubernetes|10.10.0.2||https:6443/TCP|*"_s}},
            {"configmaps", "default", {u"web-config|*"_s, u"empty-settings|*"_s}},
            {"secrets", "default", {u"web-tls|kubernetes.io/tls|2|*"_s, u"placeholder|Opaque|0|*"_s}},
            {"persistentvolumes", "default",
                {u"pv-orders-0|Bound <NSStatusAvailable>|100Gi|RWO|Retain|data/orders-db-0|fast-ssd|*"_s,
                    u"pv-spare|Available <NSStatusAvailable>|20Gi|RWO, ReadOnlyMany|Delete||standard|*"_s,
                    u"pv-broken|Failed <NSStatusUnavailable>|1Gi|RWO|Recycle|||*"_s}},
            {"serviceaccounts", "default", {u"default|1|*"_s, u"deployer|2|*"_s, u"reader|0|*"_s}},
            {"clusterroles", "default", {u"view|12|*"_s, u"aggregate-nothing|0|*"_s}},
            {"events", "payments",
                {u"Warning*|*|BackOff|Pod/fraud-check-*|Back-off restarting failed container|*|fraud-check-*"_s}},
        };
        for (const auto &entry : m_demos) {
            for (const Listing &listing : listings) {
                QTest::addRow(
                    "%s %s %s", qPrintable(entry.first.section(u'/', -4)), listing.word, listing.nameSpace)
                    << entry.first << QString::fromLatin1(listing.word)
                    << QString::fromLatin1(listing.nameSpace) << listing.rows;
            }
            for (const auto &kind : kinds()) {
                QTest::addRow(
                    "%s %s empty", qPrintable(entry.first.section(u'/', -4)), qPrintable(kind.first))
                    << entry.first << kind.first << u"empty"_s << QStringList();
            }
        }
    }
    void realListings()
    {
        setClockForTesting(nullptr);
        QFETCH(QString, client);
        QFETCH(QString, word);
        QFETCH(QString, nameSpace);
        QFETCH(QStringList, rows);
        const DemoProcess &demo = *m_demos.at(client);
        StubWindow window;
        window.facade.configPath = demo.kubeconfig();
        window.context = u"demo-harbor"_s;
        window.nameSpace = nameSpace;
        setKubectlPath(client);
        SharedContentViewController table(kinds().at(word)(), window);
        table.show();
        QSignalSpy finished(&table, &SharedContentViewController::loadFinished);
        table.reloadLogging(false);
        QVERIFY(finished.wait(patience));
        QCOMPARE(table.problem(), QString());
        const Outcome names = demo.kubectl({u"get"_s, word, u"-n"_s, nameSpace, u"-oname"_s});
        QCOMPARE(table.tableItems().size(), std::size_t(names.output.count(u'\n')));
        QStringList found;
        for (const Row &row : table.tableItems()) {
            found.append(cellsOf(table.kind(), *row));
        }
        for (const QString &wanted : std::as_const(rows)) {
            const auto hits = std::count_if(found.cbegin(), found.cend(),
                [&wanted](const QString &fields) { return matches(fields, wanted); });
            QVERIFY2(hits >= 1, qPrintable(wanted + u"\nnot in\n"_s + found.join(u'\n')));
        }
        if (table.tableItems().empty()) {
            QCOMPARE(table.tableView().accessibleDescription(),
                u"No %1 in namespace empty.\n"_s.arg(table.kind().tableName.toLower()));
        } else {
            QVERIFY(!table.tableView().grab().isNull()); // every cell can be painted
        }
    }

    void accountsWithoutSecrets_data()
    {
        QTest::addColumn<bool>("logged");
        QTest::newRow("asked for") << true;
        QTest::newRow("by itself") << false;
    }

    void helperProblems_data()
    {
        QTest::addColumn<QString>("errorText"); // of clients 1.20 and 1.32
        QTest::addColumn<QString>("named");
        QTest::addColumn<bool>("pointsToPreference");
        const auto missing
            = u"getting credentials: exec: executable aws-iam not found\n\nIt looks like you are "
              "trying to use a client-go credential plugin that is not installed.\n"_s;
        const auto noFile = u"getting credentials: exec: fork/exec /opt/aws-iam: no such file or directory"_s;
        const auto connect = u"Unable to connect to the server: "_s;
        const QString logged = u"E1123 11:06:54.20%1   16021 memcache.go:265] \"Unhandled Error\" "
                               u"err=<\n\tcouldn't get current "
                               "server API group list: "_s
            + QString(missing).replace(u'\n', u"\n\t"_s) + u"\n >\n"_s;
        QTest::newRow("1.20") << connect + missing << u"“aws-iam”"_s << true;
        QTest::newRow("1.32") << logged.arg(3) + logged.arg(5) + connect + missing << u"“aws-iam”"_s << true;
        QTest::newRow("a path") << connect + noFile << u" /opt/aws-iam"_s << false;
        QTest::newRow("a program that it needs")
            << connect + u"getting credentials: exec: executable /opt/gke failed with exit code 127"_s
            << u"“/opt/gke”"_s << true;
        QTest::newRow("removed, 1.32")
            << u"error: The gcp auth plugin has been removed.\n"_s << u"“gcp”"_s << false;
        QTest::newRow("another failure")
            << connect + u"getting credentials: exec: executable aws-iam failed with exit code 1"_s
            << QString() << false;
        QTest::newRow("an object") << u"Error from server (NotFound): pods \"exec\" not found"_s << QString()
                                   << false;
    }
    void helperProblems()
    {
        QFETCH(QString, errorText);
        QFETCH(QString, named);
        const QString shown = sentenceFirst(errorText);
        const QString first = firstLine(shown);
        QTEST(first.contains(u"Helper programs"_s), "pointsToPreference");
        if (named.isEmpty()) {
            QCOMPARE(shown, errorText);
            return;
        }
        QVERIFY2(first.contains(named), qPrintable(first));
        const QString words = errorText.mid(qMax(0, errorText.lastIndexOf(u"Unable to"_s))).trimmed();
        QVERIFY2(shown.startsWith(first + u'\n' + words), qPrintable(shown)); // kubectl's own stay
        QCOMPARE(shown.count(u"couldn't"_s), errorText.contains(u"couldn't"_s)); // what it logs, once
    }

    void accountsWithoutSecrets()
    {
        setClockForTesting(nullptr);
        QFETCH(bool, logged);
        for (const auto &[client, demo] : m_demos) {
            StubWindow window;
            setMainConsoleLookup([&window] { return &window.recorded; });
            window.facade.configPath = demo->kubeconfig();
            window.context = u"demo-lighthouse"_s;
            window.nameSpace = u"night-shift"_s;
            setKubectlPath(client);
            SharedContentViewController table(serviceAccountKind(), window);
            QSignalSpy finished(&table, &SharedContentViewController::loadFinished);
            table.reloadLogging(logged);
            QVERIFY(finished.wait(patience));
            QCOMPARE(table.problem(), QString());
            QCOMPARE(table.tableItems().size(), 2U);
            QVERIFY(matches(cellsOf(table.kind(), *table.tableItems()[0]), u"bare|0|*"_s));
            QVERIFY(matches(cellsOf(table.kind(), *table.tableItems()[1]), u"default|1|*"_s));
            QTRY_COMPARE(window.recorded.entries.size(), logged ? 2 : 0);
            if (logged) {
                QVERIFY(window.recorded.entries[0].contains(u"error calling len"_s));
                QVERIFY(window.recorded.entries[1].contains(u"{{if .secrets}}"_s));
                table.reloadLogging(true); // knows which template this place needs
                QVERIFY(finished.wait(patience));
                QTRY_COMPARE(window.recorded.entries.size(), 3);
                QVERIFY(window.recorded.entries[2].contains(u"{{if .secrets}}"_s));
            }
            setMainConsoleLookup(nullptr);
        }
    }
};

QTEST_MAIN(TestKinds)
#include "tst_kinds.moc"
