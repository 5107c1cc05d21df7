// SPDX-License-Identifier: GPL-3.0-or-later
#include "DemoProcess.h"
#include "api/EventStream.h"
#include "api/Options.h"
#include "support/Patience.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace tidewright::demo;

/// A client that keeps a picture of the fleet's pods over raw watches, whatever befalls these.
struct Mirror
{
    const DemoProcess &demo;
    qlonglong version = 0; ///< 0: the state is not complete
    QMap<QString, QString> pods = {}; ///< name to version
    QMap<QString, int> tally = {}; ///< of what is worth a mention
    QMap<QString, QString> state = {};
    QString lastAdded = {};

    /// Reads one watch until it ends or the wanted version has been seen; that is 0 for the state alone.
    void follow(qlonglong wanted)
    {
        const QString path
            = u"/demo-harbor/api/v1/namespaces/fleet/pods?watch=1&allowWatchBookmarks=true&%1"_s;
        const QString start = version == 0
            ? u"sendInitialEvents=true&resourceVersionMatch=NotOlderThan&resourceVersion=0"_s
            : u"resourceVersion=%1"_s.arg(version);
        state.clear();
        QProcess stream;
        demo.prepareKubectl(stream, {u"get"_s, u"--raw"_s, path.arg(start)});
        stream.start();
        ++tally[u"streams"_s];
        while (version == 0 || version < wanted) {
            if (stream.canReadLine()) {
                take(stream.readLine());
            } else if (!stream.waitForReadyRead(30000)) {
                break;
            }
        }
        const QByteArray rest = stream.readAll();
        tally[u"halves"_s] += !rest.isEmpty() && !rest.endsWith('\n');
        stream.kill();
        stream.waitForFinished();
    }

    void take(const QByteArray &line)
    {
        const QJsonObject event = QJsonDocument::fromJson(line).object();
        const QString type = event[u"type"].toString();
        const QJsonObject object = event[u"object"].toObject(), metadata = object[u"metadata"].toObject();
        const QString name = metadata[u"name"].toString(),
                      newVersion = metadata[u"resourceVersion"].toString();
        tally[u"giants"_s] += line.size() > 5'000'000;
        if (type == u"ERROR") {
            const int code = object[u"code"].toInt();
            ++tally[QString::number(code)];
            version = code == 410 ? 0 : version;
            return;
        }
        tally[type == u"ADDED" && name < lastAdded ? u"disorders"_s : u"orders"_s] += 1;
        lastAdded = type == u"ADDED" ? name : QString();
        tally[u"duplicates"_s] += type == u"MODIFIED" && pods.value(name) == newVersion;
        tally[u"unknown "_s + type] += (type == u"MODIFIED" || type == u"DELETED") && !pods.contains(name);
        const QJsonObject annotations = metadata[u"annotations"].toObject();
        if (annotations[u"k8s.io/initial-events-end"].toString() == u"true") {
            pods = std::exchange(state, {});
        } else if (type == u"BOOKMARK") {
            ++tally[u"bookmarks"_s];
        } else if (version == 0) {
            state[name] = newVersion;
            return;
        } else if (type == u"DELETED") {
            pods.remove(name);
        } else {
            pods[name] = newVersion;
        }
        version = newVersion.toLongLong();
    }
};

/// The demo cluster as the real clients see it. Every case runs once per client that the build names.
class TestDemoCluster : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_clients = {qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"),
            qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL_OLD")};
        QVERIFY2(QFile::exists(m_clients[0]), "TIDEWRIGHT_TEST_KUBECTL must name a kubectl");
        m_clients.removeAll(QString());
    }

    void watchesConverge_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<QString>("faults");
        QTest::addColumn<QString>("mention"); // what the client must have met, and how often
        const QList<QPair<QString, QString>> cases{{u""_s, u"2 streams"_s}, {u"cut:7"_s, u"6 halves"_s},
            {u"cut-state:3,pass"_s, u"1 halves"_s}, {u"end:7"_s, u"8 streams"_s}, {u"error:7"_s, u"6 500"_s},
            {u"expire:7"_s, u"1 410"_s}, {u"cut:7,end:7,error:7"_s, u"2 halves"_s},
            {u"duplicate:9"_s, u"4 duplicates"_s}, {u"modify-unknown:2"_s, u"2 unknown MODIFIED"_s},
            {u"delete-unknown:10"_s, u"4 unknown DELETED"_s}, {u"giant:20"_s, u"1 giants"_s},
            {u"no-bookmarks"_s, u"0 bookmarks"_s}, {u"shuffle"_s, u"14 disorders"_s}};
        for (const QString &client : std::as_const(m_clients)) {
            for (const auto &[faults, mention] : cases) {
                QTest::addRow("%s %s", qPrintable(client.section(u'/', -4)), qPrintable(faults))
                    << client << faults << mention;
            }
        }
    }

    void watchesConverge()
    {
        QFETCH(QString, client);
        QFETCH(QString, faults);
        QFETCH(QString, mention);
        DemoProcess demo(
            {u"--still"_s, u"--pods=40"_s, u"--bookmark-interval=200"_s, u"--disturb"_s, faults}, client);
        QVERIFY(demo.isReady());
        Mirror mirror{demo};
        while (mirror.version == 0) {
            mirror.follow(0);
        }
        QByteArray answer;
        QVERIFY(demo.control(R"({"changePods": 45})", &answer));
        const qlonglong newest
            = QJsonDocument::fromJson(answer.mid(answer.indexOf("\r\n\r\n") + 4))[u"versions"][u"demo-harbor"]
                  .toString()
                  .toLongLong();
        while (mirror.version < newest) {
            mirror.follow(newest);
        }
        const Outcome listed = demo.kubectl({u"get"_s, u"po"_s, u"-nfleet"_s, u"-ojson"_s});
        QMap<QString, QString> expected;
        for (const QJsonValue pod : QJsonDocument::fromJson(listed.output.toUtf8())[u"items"].toArray()) {
            const QJsonObject metadata = pod[u"metadata"].toObject();
            expected[metadata[u"name"].toString()] = metadata[u"resourceVersion"].toString();
        }
        QCOMPARE(expected.size(), 40);
        QCOMPARE(mirror.pods, expected);
        QCOMPARE(mirror.tally.value(mention.section(u' ', 1)), mention.section(u' ', 0, 0).toInt());
    }

    void answers_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("expected");
        // OPTIONS of the cluster, ARGUMENTS of kubectl, what its outputs match.
        static constexpr std::tuple<const char *, const char *, const char *> cases[]{
            {"--fail 401", "get po", "(Unauthorized|provide credentials)"},
            {"--wrong-ca", "get po", "certificate"},
            {"--tls", "get po none", "pods \"none\" not found"},
            {"--still", "exec debug-shell -- ls", "does not serve connections into containers"},
            {"--still", "get --raw /demo-harbor/api/v1/pods?watch=1&resourceVersion=1",
                "\"type\":\"ERROR\".*\"code\":410.*too old resource version: 1"},
            {"--still", "get --raw /demo-harbor/api/v1/pods?resourceVersion=99999999",
                "Too large resource version"},
            {"--disturb refuse-initial",
                "get --raw "
                "/demo-harbor/api/v1/pods?watch=1&sendInitialEvents=true&resourceVersionMatch=NotOlderThan",
                "resourceVersionMatch is forbidden for watch"},
            {"--disturb refuse:0", "get --raw /demo-harbor/api/v1/pods?watch=1",
                "cannot watch resource \"pods\""},
            {"--still", "explain pod.spec.containers.image", "string"},
            {"--still", "create job --from=cronjob/vacuum by-hand -ndata", "job.batch/by-hand created"},
            {"--still", "create deployment made --image=i", "deployment.apps/made created"},
            {"--still", "create cm Not_A_Name", "RFC 1123"},
            {"--still", R"(patch deploy web -p {"spec":{"replicas":"two"}})", "field spec.replicas"},
            {"--still", R"(patch deploy web -p {"spec":{"template":null}})", "spec.template: Required value"},
            {"--still", R"(patch deploy web --type=json -p [{"op":"remove","path":"/x"}])",
                "request is invalid"},
            {"--still", "top pods -A --no-headers", R"(payments +queue-0 +\d+m +\d+Mi)"},
            {"--no-metrics", "top nodes", "Metrics API not available"},
            {"--still", "set image deploy/web nginx=new -oyaml", "image: new(.|\n)*name: mesh-proxy"},
        };
        for (const QString &client : std::as_const(m_clients)) {
            for (const auto &[options, arguments, expected] : cases) {
                QTest::addRow("%s %s", qPrintable(client.section(u'/', -4)), arguments)
                    << client << QString::fromLatin1(options) << QString::fromLatin1(arguments)
                    << QString::fromLatin1(expected);
            }
        }
    }

    void answers()
    {
        QFETCH(QString, client);
        QFETCH(QString, options);
        QFETCH(QString, arguments);
        QFETCH(QString, expected);
        const DemoProcess demo(options.split(u' '), client);
        const Outcome outcome = demo.kubectl(arguments.split(u' '));
        const QString told = outcome.output + outcome.errors;
        QVERIFY2(told.contains(QRegularExpression(expected)), qPrintable(told));
    }

    void kubectlWatchesAndWaits_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("expected");
        const QString fields = u"-ojsonpath={.type} {.object.metadata.name} {.object.data.k}{'\\n'}"_s;
        const QStringList everything{
            u"ADDED a 1"_s, u"MODIFIED a 1"_s, u"MODIFIED a 2"_s, u"MODIFIED a 2"_s, u"DELETED a 2"_s};
        const QStringList labelled{u"ADDED a 1"_s, u"MODIFIED a 2"_s, u"DELETED a 2"_s};
        for (const QString &client : std::as_const(m_clients)) {
            const QByteArray name = client.section(u'/', -4).toUtf8();
            QTest::addRow("%s events", name.data()) << client << QStringList{fields} << everything;
            QTest::addRow("%s labels", name.data()) << client << QStringList{fields, u"-ll=x"_s} << labelled;
            QTest::addRow("%s name", name.data())
                << client << QStringList{fields, u"--field-selector=metadata.name=b"_s} << QStringList();
            QTest::addRow("%s table", name.data())
                << client << QStringList{u"--no-headers"_s}
                << QStringList(everything).replaceInStrings(u" 2"_s, u" 1"_s);
        }
    }

    void kubectlWatchesAndWaits()
    {
        QFETCH(QString, client);
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, expected);
        DemoProcess demo({u"--bookmark-interval=50"_s}, client);
        QVERIFY(demo.isReady());
        QProcess watch;
        demo.prepareKubectl(watch,
            QStringList{u"get"_s, u"cm"_s, u"-w"_s, u"-nempty"_s, u"--output-watch-events"_s} + arguments);
        watch.start();
        QByteArray answer;
        QTRY_VERIFY(demo.control("{}", &answer) && answer.contains("\"watches\":1"));
        const auto run = [&demo](const QString &command) {
            QCOMPARE(demo.kubectl(command.split(u' ') << u"-nempty"_s).exitCode, 0);
        };
        run(u"create cm a --from-literal=k=1"_s);
        run(u"label cm a l=x"_s);
        run(u"patch cm a -p {\"data\":{\"k\":\"2\"}}"_s);
        run(u"label cm a l-"_s);
        run(u"delete cm a --wait"_s);
        // The stream ends in place of what is next.
        QVERIFY(demo.control(R"({"disturb": "end:0"})"));
        run(u"create cm b"_s);
        run(u"label cm b l=x"_s);
        QVERIFY(watch.waitForFinished());
        QStringList lines = QString::fromUtf8(watch.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
        for (QString &line : lines) {
            line = line.simplified().section(u' ', 0, 2);
        }
        QCOMPARE(lines, expected);
    }

    void versionsAreKeptUntilTheyAreForgotten()
    {
        using namespace std::chrono_literals;
        ObjectStore store(1, 3);
        const ResourceType &type = typeOfKind("ConfigMap");
        const auto namesAt = [&](std::uint64_t version, const std::string &from = {}, size_t limit = 0) {
            const auto page = store.listAt(version, type, {"n", {}, limit, from});
            QByteArray names;
            for (const ObjectPtr &object : page ? page->objects : std::vector<ObjectPtr>()) {
                names += object->name.c_str();
            }
            return page ? names + QByteArray(page->next.empty() ? "" : "+") : QByteArray("forgotten");
        };
        const auto create = [&store](const ResourceType &kind, const char *name) {
            store.create(kind, {{"metadata", {{"name", name}, {"namespace", "n"}}}});
        };
        for (const char *name : {"b", "c", "d"}) {
            create(type, name);
        }
        const std::uint64_t first = store.version();
        store.remove(type, "n", "c");
        create(type, "a");
        store.update(type, "n", "b", [](json &object) { object["data"]["k"] = "v"; });
        store.update(type, "n", "b", [](json &) {});
        QCOMPARE(store.version(), first + 3);
        QCOMPARE(namesAt(first), "bcd");
        QCOMPARE(namesAt(first, "n/c", 1), "c+");
        QCOMPARE(namesAt(first + 1), "bd");
        QCOMPARE(namesAt(first + 2), "abd");
        QVERIFY(!store.listAt(first, type, {"n"})->objects[0]->parsed().contains("data"));
        const auto changes = store.changesAfter(first, type, 0ms);
        QVERIFY(changes.has_value());
        QCOMPARE(changes->list.size(), size_t(3));
        QVERIFY(
            changes->list[0].kind == Change::Kind::Deleted && changes->list[0].object->version == first + 1);
        // Another kind's changes take no room; one more of this kind does.
        create(typeOfKind("Secret"), "s");
        QCOMPARE(namesAt(first), "bcd");
        create(type, "e");
        QCOMPARE(namesAt(first), "forgotten");
        QVERIFY(!store.changesAfter(first, type, 0ms).has_value());
        store.forgetChanges();
        QCOMPARE(namesAt(first + 2), "forgotten");
        QCOMPARE(namesAt(store.version()), "abde");
    }

    void heldBytesComeInPieces()
    {
        ObjectStore store(1);
        const ResourceType &type = typeOfKind("ConfigMap");
        const ObjectPtr object
            = store.create(type, {{"metadata", {{"name", std::string(600, 'x')}, {"namespace", "n"}}}});
        Options options;
        options.disturb = "hold:1,end:2";
        Disturbance disturbance(options);
        EventStream stream({{&type, "v1", "n", {}, {}}, false, {}}, store, disturbance);
        QByteArray got;
        httplib::DataSink sink;
        sink.write = [&got](const char *bytes, size_t size) {
            got.append(bytes, qsizetype(size));
            return true;
        };
        sink.is_writable = [] { return true; };
        sink.done = [&got] { got.append('.'); };
        QList<qsizetype> lines;
        for (int i = 0; i < 3; ++i) {
            stream.change("ADDED", object);
            QVERIFY(stream.handOver(sink));
            lines << got.count('\n');
        }
        QCOMPARE(lines, (QList<qsizetype>{0, 2, 2}));
        QVERIFY(got.endsWith('.'));
    }

    void badOptionsAreRefused()
    {
        using Arguments = std::vector<std::string>;
        for (const Arguments &arguments :
            {Arguments{"--fast"}, {"--pods"}, {"--port", "12x"}, {"--fail=200"}, {"--disturb=cut:5,burn"},
                {"--disturb", "cut:x"}, {"--disturb", "shuffle:1"}, {"--changes-per-second", "5"}}) {
            const std::string option = arguments[0].substr(0, arguments[0].find('='));
            QVERIFY2(parseOptions(arguments).error.find(option) != std::string::npos, option.c_str());
        }
        QCOMPARE(parseOptions({"--pods=5", "--changes-per-second", "5", "--disturb", "cut,end:3"}).error, "");
    }

private:
    QStringList m_clients;
};

QTEST_GUILESS_MAIN(TestDemoCluster)
#include "tst_demo_cluster.moc"
