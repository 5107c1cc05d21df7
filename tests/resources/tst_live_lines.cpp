// SPDX-License-Identifier: GPL-3.0-or-later
// From objects as the API server sends them to the lines that kubectl prints of them: the same bytes.
#include "AllKinds.h"
#include "demo/DemoProcess.h"
#include "platform/text/Timestamp.h"
#include "resources/decoding/ListDecoder.h"
#include "resources/decoding/RowOfLine.h"
#include "resources/decoding/TemplateDecoder.h"
#include "resources/listing/Merge.h"
#include "resources/live/ResourcePaths.h"
#include "resources/printing/ListingTemplate.h"

#include <QTest>

#include <map>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

ResourceKind printing(const QString &argument)
{
    ResourceKind kind;
    kind.outputArguments = {argument};
    return kind;
}

/// The lines of a list, which arrives in pieces of `piece` bytes; those that could not be printed begin with
/// "!".
QByteArrayList linesOf(
    const ResourceKind &kind, const QByteArray &list, qsizetype piece, LiveRun *run = nullptr)
{
    QString problem;
    const auto lines = std::make_shared<ObjectLines>(kind, problem);
    if (!problem.isEmpty()) {
        return {"! " + problem.toUtf8()};
    }
    ListDecoder decoder(lines);
    std::vector<LiveChange> changes;
    for (qsizetype begin = 0; begin < list.size(); begin += piece) {
        decoder.take(QByteArrayView(list).sliced(begin, std::min(piece, list.size() - begin)), changes);
    }
    if (run) {
        *run = decoder.run();
    }
    QByteArrayList printed;
    for (const LiveChange &change : changes) {
        printed.append(change.kind == LiveChange::Kind::Put ? listedPart(change.line).toByteArray()
                                                            : "! " + change.line);
    }
    return printed;
}

QByteArray listOf(const QByteArrayList &items)
{
    return R"({"kind":"List","metadata":{"resourceVersion":"7"},"items":[)" + items.join(',') + "]}\n";
}

/// An object that has whatever the templates of the kinds ask for, all of it the same value.
QByteArray objectOf(const QByteArray &value)
{
    QByteArray text
        = R"({"apiVersion":"v1","kind":"ConfigMap","metadata":{"name":"odd","creationTimestamp":V},
        "type":V,"reason":V,"message":V,"involvedObject":{"kind":V,"name":V},"data":{"a":V},
        "rules":[V],"secrets":[V,V],"provisioner":V,"roleRef":{"kind":V},"subjects":[{"kind":V,"name":V}],
        "spec":{"containers":[{"name":V},{"name":"two"}],"schedule":V,"suspend":V,"type":V,"clusterIP":V,
            "ports":[{"port":V,"nodePort":V},{"port":V}],"completions":V,"capacity":{"storage":V},
            "accessModes":[V,V],"policyTypes":[V],"podSelector":{"matchLabels":V},"taints":[V],"tls":V,"unschedulable":V,
            "rules":[{"host":V}],"persistentVolumeReclaimPolicy":V,"claimRef":{"name":V},"storageClassName":V,
            "template":{"spec":{"nodeSelector":V}}},
        "status":{"containerStatuses":[{"ready":V,"restartCount":V,"state":{"waiting":{"reason":V}}},{"ready":true}],
            "phase":V,"startTime":V,"replicas":V,"readyReplicas":V,"active":[{"name":V},{}],"lastScheduleTime":V,
            "loadBalancer":{"ingress":[{"hostname":V}]},"conditions":[{"type":V,"reason":V},{"type":V}],
            "succeeded":V,"desiredNumberScheduled":V},
        "subsets":[{"addresses":[{"ip":V,"targetRef":{"kind":V,"name":V}},{"ip":V}],"ports":[{"name":V,"port":V}]}]})";
    for (const auto &[before, after] : {std::pair(":", ""), {"[", ""}, {",", "]"}}) {
        text.replace(QByteArray(QByteArray(before) + 'V' + after), QByteArray(before + value + after));
    }
    return text;
}

const QByteArrayList &oddValues()
{
    static const QByteArrayList values{"7", "-0", "-0.0", "1.50", "1e6", "12345678.5", "1e20", "1e21",
        "0.00001", "0.0000001", "18446744073709551615", "true", "null", "\"\"", "\" a  b \"", "\"a\\tb\"",
        "\"a\\nb\\r\\n\"", "\"<&>é\\u2028\\u0001\\b\\f\\\"\\\\/\"", "[]", "{}",
        R"([1,"x",null,[2.50,{"z":1e6,"a":"<\n"}]])", R"({"b":1e-7,"a":{"c":null,"B":[true]}})"};
    return values;
}

} // namespace

class tst_live_lines : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { m_demos.clear(); }
    void listings_data();
    void listings();
    void oddObjects_data();
    void oddObjects();
    void beyondTheListing_data();
    void beyondTheListing();
    void failures_data();
    void failures();
    void cutAnywhere();
    void paths_data();
    void paths();

private:
    /// What kubectl prints of a list of objects.
    Outcome printed(const QByteArrayList &objects, const QStringList &output) const
    {
        const DemoProcess &demo = *m_demos.begin()->second;
        return demo.kubectl(QStringList{u"create"_s, u"--dry-run=client"_s, u"--validate=false"_s, u"-f"_s,
                                demo.writeFile(u"objects.json"_s, listOf(objects))}
            + output);
    }

    std::map<QString, std::unique_ptr<DemoProcess>> m_demos; // by client, the packaged one first
};

void tst_live_lines::initTestCase()
{
    for (const char *variable : {"TIDEWRIGHT_TEST_KUBECTL", "TIDEWRIGHT_TEST_KUBECTL_OLD"}) {
        if (const QString client = qEnvironmentVariable(variable); !client.isEmpty()) {
            const QString key = QString::number(m_demos.size());
            m_demos[key] = std::make_unique<DemoProcess>(QStringList{u"--still"_s}, client);
            QVERIFY(m_demos[key]->isReady());
        }
    }
    QVERIFY(!m_demos.empty());
}

void tst_live_lines::listings_data()
{
    QTest::addColumn<MakeKind>("makeKind");
    QTest::addColumn<QString>("client");
    QTest::addColumn<QString>("context");
    for (const auto &[client, demo] : m_demos) {
        for (const MakeKind makeKind : allKinds) {
            for (const QString &context : {u"demo-harbor"_s, u"demo-lighthouse"_s}) {
                QTest::addRow("%s, %s, client %s", qPrintable(makeKind().tableName), qPrintable(context),
                    qPrintable(client))
                    << makeKind << client << context;
            }
        }
    }
}

/// Every object of the demo cluster.
void tst_live_lines::listings()
{
    QFETCH(MakeKind, makeKind);
    QFETCH(QString, client);
    QFETCH(QString, context);
    const ResourceKind kind = makeKind();
    const DemoProcess &demo = *m_demos.at(client);
    const QString at = u"--context="_s + context;
    QStringList listing{u"get"_s, kind.listWord, at};
    if (kind.namespaced) {
        listing += u"--all-namespaces"_s;
    }
    Outcome wanted = demo.kubectl(listing + kind.outputArguments);
    if (wanted.exitCode != 0 && kind.otherOutput) {
        wanted = demo.kubectl(listing + kind.otherOutput(wanted.errors));
    }
    QCOMPARE(wanted.exitCode, 0);
    QByteArrayList lines = wanted.output.toUtf8().split('\n');
    lines.removeIf([&kind](const QByteArray &line) {
        return line.trimmed().isEmpty() || line.trimmed() == kind.listRemainder;
    });

    ResourcePaths paths;
    paths.learn(demo.kubectl(QStringList{at} + ResourcePaths::discoveryArguments()).output.toUtf8());
    const auto path = paths.find(kind.listWord);
    QVERIFY(path && path->isWatchable);
    const auto usual = ResourcePaths().find(kind.listWord);
    QVERIFY(usual
        && (*usual == *path || kind.listWord == u"cj" || kind.listWord == u"hpa")); // known without asking
    const QByteArray json
        = demo.kubectl({u"get"_s, at, u"--raw"_s, path->listPath(u'/' + context, u"All Namespaces"_s)})
              .output.toUtf8();
    QByteArrayList made = linesOf(kind, json, 1000);
    if (kind.outputArguments.contains(u"--sort-by"_s)) {
        std::sort(lines.begin(), lines.end());
        std::sort(made.begin(), made.end());
    }
    QVERIFY(!lines.isEmpty() || context == u"demo-lighthouse");
    QCOMPARE(made, lines);
}

void tst_live_lines::oddObjects_data()
{
    QTest::addColumn<QString>("output");
    for (const MakeKind makeKind : allKinds) {
        QTest::addRow("%s", qPrintable(makeKind().tableName)) << makeKind().outputArguments.last();
    }
    QTest::newRow("lists") << u"-o=jsonpath={range .items[*]}{.rules[0]}|{.secrets[-1]}|{.spec.ports[1:]}|"
                              "{.spec.ports[-1:].port}|{.spec.accessModes[:1]}|{.data.*}|{.data.a.*.x.y}\n"_s;
    QTest::newRow("whole values") << u"--template={{range .items}}{{.data}} {{.rules}} {{range .data}}{{.}};"
                                     "{{end}}{{if .rules}}{{.secrets | len}}{{end}}\n{{end}}"_s;
}

void tst_live_lines::oddObjects()
{
    QFETCH(QString, output);
    const auto item = ListingTemplate::of({output});
    QVERIFY(item);
    const bool isJsonPath = item->language == ListingTemplate::Language::JsonPath;
    QByteArrayList objects{
        R"({"apiVersion":"v1","kind":"ConfigMap","metadata":{"name":"bare"},"secrets":[]})"};
    if (output.contains(u"rules[0]")) {
        objects.clear(); // it has none
    }
    for (const QByteArray &value : oddValues()) {
        if (isJsonPath && output.contains(u".data.a.*") && value.startsWith('"')) {
            continue; // a text's bytes, one by one: of no use to anybody
        }
        objects.append(objectOf(value));
    }
    const QString text = QString::fromUtf8(item->item) + u'\n';
    const Outcome wanted = printed(objects,
        isJsonPath ? QStringList{u"-o=jsonpath="_s + text}
                   : QStringList{u"-ogo-template"_s, u"--template="_s + text});
    QCOMPARE(wanted.exitCode, 0);
    const QByteArrayList made = linesOf(printing(output), listOf(objects), 4096);
    QCOMPARE(made.size(), objects.size());
    QCOMPARE(made.join('\n') + '\n', wanted.output.toUtf8());
}

void tst_live_lines::beyondTheListing_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QByteArray>("object");
    QTest::addColumn<QString>("cells"); // column=text, the image behind it
    const auto pod = [](const char *name, const QByteArray &status, const char *cells,
                         const QByteArray &metadata = {}) {
        QTest::newRow(name) << 0
                            << R"({"metadata":{"name":"p","creationTimestamp":"2020-01-01T00:00:00Z")"
                + metadata + R"(},"spec":{"nodeName":"n1","containers":[{"name":"c"}]},"status":{)" + status
                + "}}" << QString::fromUtf8(cells);
    };
    pod("running", R"("phase":"Running","podIP":"10.0.0.1","containerStatuses":[{"ready":true}])",
        "status=1/1 Running <NSStatusAvailable>|reason=|node=n1|ip=10.0.0.1");
    pod("terminating", R"("phase":"Running","containerStatuses":[{"ready":false}])",
        "status=0/1 Running <NSStatusPartiallyAvailable>|reason=Terminating",
        R"(,"deletionTimestamp":"2020-01-01T00:00:00Z")");
    pod("evicted", R"("phase":"Failed","reason":"Evicted")",
        "status=Failed <NSStatusUnavailable>|reason=Evicted");
    pod("an init container fails",
        R"("phase":"Pending","initContainerStatuses":[{"state":{"terminated":{"reason":"Completed"}}},
            {"state":{"waiting":{"reason":"CrashLoopBackOff"}}}],
            "containerStatuses":[{"ready":false,"state":{"waiting":{"reason":"PodInitializing"}}}])",
        "status=Pending: PodInitializing <NSStatusUnavailable>|reason=Init: CrashLoopBackOff");
    pod("comes",
        R"("phase":"Pending","containerStatuses":[{"state":{"waiting":{"reason":"ContainerCreating"}}}])",
        "status=Pending: ContainerCreating <NSStatusPartiallyAvailable>|reason=ContainerCreating|age=1 day");
    const auto deployment
        = [](const char *name, const QByteArray &spec, const QByteArray &status, const char *cells) {
              QTest::newRow(name) << 1
                                  << R"({"metadata":{"name":"d","generation":2},"spec":{)" + spec
                      + R"(},"status":{)" + status + "}}"
                                  << QString::fromUtf8(cells);
          };
    deployment("an outage by quota", R"("replicas":3)",
        R"("observedGeneration":2,"conditions":[{"reason":"x"},{"reason":"ProgressDeadlineExceeded"}])",
        "desired=3|status=Unavailable <NSStatusUnavailable>");
    deployment("a roll-out begins", R"("replicas":3)",
        R"("observedGeneration":1,"replicas":3,"updatedReplicas":3)",
        "desired=3|status=Unavailable <NSStatusPartiallyAvailable>");
    deployment("scaled to nothing", R"("replicas":0)", R"("observedGeneration":2)",
        "desired=0|status=None wanted <NSStatusAvailable>");
}

/// What only the object itself tells, in the cells of its row.
void tst_live_lines::beyondTheListing()
{
    QFETCH(int, number);
    QFETCH(QByteArray, object);
    QFETCH(QString, cells);
    setClockForTesting([] { return 1577836800.0 + 25 * 3600; });
    const ResourceKind kind = allKinds[number]();
    QString problem;
    const auto lines = std::make_shared<ObjectLines>(kind, problem);
    ListDecoder decoder(lines);
    std::vector<LiveChange> changes;
    decoder.take(listOf({object}), changes);
    QCOMPARE(changes.size(), 1U);
    QVERIFY2(lineFits(kind, changes[0].line), changes[0].line.constData());
    const Row row = newRow(kind, {}, changes[0].line, 0);
    for (const QString &wanted : cells.split(u'|')) {
        const QString identifier = wanted.section(u'=', 0, 0);
        const Column &column
            = kind.columns[static_cast<std::size_t>(kind.indexOf(QLatin1String(identifier.toLatin1())))];
        QString cell = identifier + u'=' + column.text(*row);
        if (column.image) {
            cell += u" <%1>"_s.arg(column.image(*row));
        }
        QCOMPARE(cell, wanted);
    }
    // A listing of the same object changes nothing of it, and is known to be the same.
    const Rows rows{row};
    QVERIFY(mergeListing(kind, listedPart(row->line).toByteArray() + '\n', rows).changed.empty());
    setClockForTesting(nullptr);
}

void tst_live_lines::failures_data()
{
    QTest::addColumn<QString>("expression");
    for (const char *expression :
        {"{.type[*]}", "{.type[0]}", "{.spec.none.x}{.empty[0]}", "{.rules[5]}", "{{.type.x}}",
            "{{.nothing.x}}", "{{.nowhere|len}}", "{{.nothing|len}}", "{{.one|len}}", "{{.rules.x}}"}) {
        QTest::newRow(expression) << QString::fromLatin1(expression);
    }
}

/// Where kubectl fails on an object, it has no line.
void tst_live_lines::failures()
{
    QFETCH(QString, expression);
    const QByteArray object = R"({"apiVersion":"v1","kind":"ConfigMap","metadata":{"name":"odd"},
        "type":"x","one":1,"nothing":null,"empty":[],"rules":[1]})";
    const bool isJsonPath = !expression.startsWith(u"{{");
    QVERIFY(printed({object},
                isJsonPath ? QStringList{u"-o=jsonpath="_s + expression}
                           : QStringList{u"-ogo-template"_s, u"--template="_s + expression})
                .exitCode
        > 0);
    const QString output = isJsonPath ? u"-o=jsonpath={range .items[*]}%1\n"_s.arg(expression)
                                      : u"--template={{range .items}}%1\n{{end}}"_s.arg(expression);
    const QByteArrayList made = linesOf(printing(output), listOf({object}), 10);
    QCOMPARE(made.size(), 1);
    QVERIFY2(made[0].startsWith("! /odd: "), made[0].constData());
}

/// A list in pieces of any length, with what must not pass for its structure.
void tst_live_lines::cutAnywhere()
{
    const ResourceKind kind = printing(u"-o=jsonpath={range .items[*]}{.metadata.name}\t{.t}\n"_s);
    const QByteArray list
        = R"({"apiVersion":"v1","x":["items",[]],"metadata":{"items":[{"metadata":{"name":"no"}}],)"
          R"("resourceVersion":"12","continue":"a\u0062=="},"items":[ {"metadata":)"
          R"({"name":"a\"}]\\"},"t":"\\\\\""} ,{"metadata":{"name":"b"},"t":[[{}]]}, {"t":"]}"}],)"
          R"("kind":"PodList"} trailing {)";
    const QByteArrayList wanted{"a\"}]\\\t\\\\\"", "b\t[[{}]]", "\t]}"};
    for (qsizetype piece = 1; piece <= list.size(); ++piece) {
        LiveRun run;
        QCOMPARE(linesOf(kind, list, piece, &run), wanted);
        QVERIFY(run.isWholeList && run.garbled.isEmpty());
        QCOMPARE(run.resourceVersion, "12");
        QCOMPARE(run.continueToken, "ab==");
    }
    for (const auto &[text, isGarbled] : std::map<QByteArray, bool>{{"", false}, {"<html>", false},
             {list.first(list.indexOf("PodList")), false}, {"{\"items\":[{]}", true}, {"{\"a\":1}", true},
             {"{\"metadata\":{\"resourceVersion\":\"1\"},\"items\":[{\"a\":tru}]}", true}, {"}", true}}) {
        LiveRun run;
        linesOf(kind, text, 3, &run);
        QVERIFY2(!run.isWholeList || !run.garbled.isEmpty(), text.constData());
        QVERIFY2(!run.garbled.isEmpty() == isGarbled, text.constData());
    }
}

void tst_live_lines::paths_data()
{
    QTest::addColumn<QByteArray>("resources");
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("path"); // in namespace "a b"; empty when there is none
    const QByteArray today = "events ev v1 true Event create,delete,get,list,watch\n"
                             "persistentvolumes pv v1 false PersistentVolume get,list,watch\n"
                             "bindings v1 true Binding create\n"
                             "cronjobs cj batch/v1 true CronJob get,list,watch all\n"
                             "events ev events.k8s.io/v1 true Event get,list,watch\n"
                             "error: unable to retrieve the complete list of server APIs\n";
    const QByteArray old
        = "cronjobs                 cj       batch/v1beta1   true    CronJob   [create get list watch]\n";
    QTest::newRow("not asked") << QByteArray() << u"po"_s << u"/k8s/c-1/api/v1/namespaces/a%20b/pods"_s;
    QTest::newRow("nothing learned") << QByteArray("error\n") << u"cj"_s
                                     << u"/k8s/c-1/apis/batch/v1/namespaces/a%20b/cronjobs"_s;
    QTest::newRow("the first group") << today << u"events"_s << u"/k8s/c-1/api/v1/namespaces/a%20b/events"_s;
    QTest::newRow("of the cluster") << today << u"pv"_s << u"/k8s/c-1/api/v1/persistentvolumes"_s;
    QTest::newRow("singular") << today << u"cronjob"_s
                              << u"/k8s/c-1/apis/batch/v1/namespaces/a%20b/cronjobs"_s;
    QTest::newRow("1.20") << old << u"cj"_s << u"/k8s/c-1/apis/batch/v1beta1/namespaces/a%20b/cronjobs"_s;
    QTest::newRow("not there") << old << u"po"_s << QString();
}

void tst_live_lines::paths()
{
    QFETCH(QByteArray, resources);
    QFETCH(QString, word);
    ResourcePaths paths;
    paths.learn(resources);
    const auto path = paths.find(word);
    QTEST(path ? path->listPath(u"https://host:6443/k8s/c-1/"_s, u"a b"_s) : QString(), "path");
}

QTEST_MAIN(tst_live_lines)
#include "tst_live_lines.moc"
