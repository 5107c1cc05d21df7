// SPDX-License-Identifier: GPL-3.0-or-later
#include "DemoProcess.h"
#include "support/Patience.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

/// A client that keeps a picture of the fleet's pods over raw watches, whatever befalls these.
class Mirror
{
public:
    explicit Mirror(const DemoProcess &demo)
        : m_demo(demo)
    {
    }

    /// Reads one watch until it ends or `version` has been seen; as long as it is 0, until the state is
    /// there.
    void follow(qlonglong version)
    {
        const QString path
            = u"/demo-harbor/api/v1/namespaces/fleet/pods?watch=1&allowWatchBookmarks=true&%1"_s;
        const QString start = m_version == 0
            ? u"sendInitialEvents=true&resourceVersionMatch=NotOlderThan&resourceVersion=0"_s
            : u"resourceVersion=%1"_s.arg(m_version);
        QProcess stream;
        m_demo.prepareKubectl(stream, {u"get"_s, u"--raw"_s, path.arg(start)});
        stream.start();
        ++tally[u"streams"_s];
        while (m_version == 0 || m_version < version) {
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

    bool hasState() const { return m_version != 0; }
    qlonglong version() const { return m_version; }

    QMap<QString, QString> pods; ///< name to version
    QMap<QString, int> tally; ///< of what is worth a mention

private:
    void take(const QByteArray &line)
    {
        const QJsonObject event = QJsonDocument::fromJson(line).object();
        const QString type = event[u"type"].toString();
        const QJsonObject object = event[u"object"].toObject(), metadata = object[u"metadata"].toObject();
        const QString name = metadata[u"name"].toString(), version = metadata[u"resourceVersion"].toString();
        tally[u"giants"_s] += line.size() > 5'000'000;
        if (type == u"ERROR") {
            const int code = object[u"code"].toInt();
            ++tally[QString::number(code)];
            m_version = code == 410 ? 0 : m_version;
            return;
        }
        tally[type == u"ADDED" && name < m_lastAdded ? u"disorders"_s : u"orders"_s] += 1;
        m_lastAdded = type == u"ADDED" ? name : QString();
        tally[u"duplicates"_s] += type == u"MODIFIED" && pods.value(name) == version;
        tally[u"unknown "_s + type] += (type == u"MODIFIED" || type == u"DELETED") && !pods.contains(name);
        const QJsonObject annotations = metadata[u"annotations"].toObject();
        if (annotations[u"k8s.io/initial-events-end"].toString() == u"true") {
            pods = std::exchange(m_state, {});
        } else if (type == u"BOOKMARK") {
            ++tally[u"bookmarks"_s];
        } else if (m_version == 0) {
            m_state[name] = version;
            return;
        } else if (type == u"DELETED") {
            pods.remove(name);
        } else {
            pods[name] = version;
        }
        m_version = version.toLongLong();
    }

    const DemoProcess &m_demo;
    qlonglong m_version = 0; ///< 0: the state is not complete
    QMap<QString, QString> m_state;
    QString m_lastAdded;
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
            {u"no-bookmarks"_s, u"0 bookmarks"_s}, {u"shuffle"_s, u"22 disorders"_s}};
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
        Mirror mirror(demo);
        while (!mirror.hasState()) {
            mirror.follow(0);
        }
        QByteArray answer;
        QVERIFY(demo.control(R"({"changePods": 45})", &answer));
        const qlonglong newest
            = QJsonDocument::fromJson(answer.mid(answer.indexOf("\r\n\r\n") + 4))[u"versions"][u"demo-harbor"]
                  .toString()
                  .toLongLong();
        while (mirror.version() < newest) {
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
            {"--still", "apply -f good", "pod/made created"},
            {"--still", "create -f unknown", "contaners"},
            {"--still", "create -f type", "priority"},
            {"--still", "create -f missing", "containers"},
            {"--still", "create -f name", "RFC 1123"},
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
        static const QMap<QString, QByteArray> files{
            {u"good"_s, "kind: Pod\nmetadata: {name: made}\nspec: {containers: [{name: c, image: i}]}"},
            {u"unknown"_s, "kind: Pod\nmetadata: {name: a}\nspec: {contaners: [], containers: [{name: c}]}"},
            {u"type"_s, "kind: Pod\nmetadata: {name: a}\nspec: {priority: two, containers: [{name: c}]}"},
            {u"missing"_s, "kind: Pod\nmetadata: {name: bad}\nspec: {}"},
            {u"name"_s, "kind: ConfigMap\nmetadata: {name: Not_A_Name}"},
        };
        QStringList words = arguments.split(u' ');
        if (files.contains(words.last())) {
            words.last() = demo.writeFile(words.last(), "apiVersion: v1\n" + files[words.last()]);
        }
        const Outcome outcome = demo.kubectl(words);
        const QString told = outcome.output + outcome.errors;
        QVERIFY2(told.contains(QRegularExpression(expected)), qPrintable(told));
    }

    void kubectlWatchesAndWaits_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("expected");
        const QString fields = u"-ojsonpath={.type}|{.object.metadata.name}|{.object.data.k}{'\\n'}"_s;
        for (const QString &client : std::as_const(m_clients)) {
            const auto row
                = [&client](const char *name, const QStringList &arguments, const QStringList &expected) {
                      QTest::addRow("%s %s", qPrintable(client.section(u'/', -4)), name)
                          << client << arguments << expected;
                  };
            row("events", {fields}, {u"ADDED|a|1"_s, u"MODIFIED|a|2"_s, u"MODIFIED|a|2"_s, u"DELETED|a|2"_s});
            row("labels", {fields, u"-ll=x"_s}, {u"ADDED|a|1"_s, u"MODIFIED|a|2"_s, u"DELETED|a|2"_s});
            row("another name", {fields, u"--field-selector=metadata.name=b"_s}, {});
            row("table", {u"--no-headers"_s},
                {u"ADDED a 1"_s, u"MODIFIED a 1"_s, u"MODIFIED a 1"_s, u"DELETED a 1"_s});
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
        const auto file = [&demo](const QByteArray &name) {
            return demo.writeFile(QString::fromLatin1(name),
                R"({"apiVersion": "v1", "kind": "ConfigMap", "data": {"k": "1"}, "metadata": {"name": ")"
                    + name + R"(", "labels": {"l": "x"}}})");
        };
        const QStringList commands{u"create -f %1"_s.arg(file("a")),
            u"patch cm a -p {\"data\":{\"k\":\"2\"}}"_s, u"label cm a l-"_s, u"delete cm a --wait"_s};
        for (const QString &command : commands) {
            QCOMPARE(demo.kubectl(command.split(u' ') << u"-nempty"_s).exitCode, 0);
        }
        // The stream ends in place of what is next.
        QVERIFY(demo.control(R"({"disturb": "end:0"})"));
        QCOMPARE(demo.kubectl({u"create"_s, u"-nempty"_s, u"-f"_s, file("b")}).exitCode, 0);
        QVERIFY(watch.waitForFinished());
        QStringList lines = QString::fromUtf8(watch.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
        for (QString &line : lines) {
            line = line.simplified().section(u' ', 0, 2);
        }
        QCOMPARE(lines, expected);
    }

private:
    QStringList m_clients;
};

QTEST_GUILESS_MAIN(TestDemoCluster)
#include "tst_demo_cluster.moc"
