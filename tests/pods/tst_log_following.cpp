// SPDX-License-Identifier: GPL-3.0-or-later
// Logs of whole workloads: which pods there are, streams that are taken up again, and what is asked of
// kubectl.
#include "LogWindowTest.h"
#include "core/running/ApplicationRecord.h"
#include "platform/process/ProcessSetup.h"
#include "platform/threads/MainQueue.h"
#include "pods/logs/view/LogPatternBar.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QInputDialog>
#include <QLineEdit>
#include <QTableWidget>
#include <QTest>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray textOf(LogDocument &document)
{
    document.commit();
    return document.bytes().read(0, document.size());
}

QByteArray textOf(LogDocument &document, int source)
{
    document.commit();
    QByteArray text;
    for (const SourceRuns::Run &run : document.runs({0, document.size()})) {
        text += run.source == source ? document.bytes().read({run.range}) : QByteArray();
    }
    return text;
}

/// The numbers of the demo cluster's lines; each line has one.
QList<int> numbersIn(const QByteArray &text)
{
    static const QRegularExpression number(u"seq=(\\d+) "_s);
    QList<int> numbers;
    for (auto match = number.globalMatch(QString::fromUtf8(text)); match.hasNext();) {
        numbers.append(match.next().captured(1).toInt());
    }
    return numbers;
}

/// A kubectl that prints what lies in its folder; a log ends once there is a file "go".
constexpr char scriptedKubectl[]
    = "\necho \"$*\" >> record\ncase \"$*\" in\nget*selector}*) cat selector ;;\nget*) cat pods ;;\n"
      "logs*--previous*) cat previous ;;\n*) cat current; while [ ! -e go ]; do sleep 0.02; done; rm -f go\n"
      "esac\n";

} // namespace

class TestLogFollowing : public QObject, LogWindowTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        mainQueue();
        settleSignals();
    }
    void init() { prepareFolder(); }
    void cleanup() { delete m_window; }

    void theOptionsSayWhereALogBegins_data()
    {
        using From = LogOptions::From;
        QTest::addColumn<LogOptions>("options");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const LogOptions &options, const char *expected) {
            QTest::newRow(name) << options << QString::fromUtf8(expected);
        };
        row("as usual", {}, "-f --tail=50");
        row("more lines", {.from = From::Last5000}, "-f --tail=5000");
        row("all, with times", {.from = From::All, .timestamps = true}, "-f --timestamps");
        row("a while ago", {.from = From::OneHour}, "-f --since=1h");
        row("today is the user's", {.from = From::Today}, "-f --since-time=2026-02-28T22:00:00Z");
        row("the instance before", {.from = From::All, .previous = true}, "--previous");
        row("from a moment on", {.since = "2026-03-01T09:30:00.5Z"},
            "-f --since-time=2026-03-01T09:30:00.5Z");
    }
    void theOptionsSayWhereALogBegins()
    {
        QFETCH(LogOptions, options);
        QFETCH(QString, expected);
        qputenv("TZ", "UTC-2");
        const QStringList arguments = logArguments({{}, u"c"_s, u"team"_s}, {u"web"_s, u"app"_s, u"own"_s},
            options, QDateTime({2026, 3, 1}, {12, 0}));
        qunsetenv("TZ");
        QCOMPARE(arguments.mid(1).join(u' '), u"logs "_s + expected + u" --context=c -nown web app"_s);
    }

    void selectorsAreTakenAsTheyStand_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("selector");
        const auto row = [](const char *json, const char *selector) {
            QTest::newRow(json) << QByteArray(json) << QString::fromUtf8(selector);
        };
        row(R"({"app":"web","tier":"front"})", "app=web,tier=front");
        row(R"({"matchLabels":{"app":"web"}})", "app=web");
        row(R"({"matchExpressions":[{"key":"a","operator":"In","values":["x","y"]},{"key":"b",)"
            R"("operator":"NotIn","values":["z"]},{"key":"c","operator":"Exists"},{"key":"d",)"
            R"("operator":"DoesNotExist"}],"matchLabels":{"e":"f"}})",
            "e=f,a in (x,y),b notin (z),c,!d");
        row("", "");
        row(R"({"matchExpressions":[{"key":"a","operator":"Near"}]})", "none");
        row("map[app:web]", "none");
    }
    void selectorsAreTakenAsTheyStand()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, selector);
        QCOMPARE(labelSelector(json).value_or(u"none"_s), selector);
    }

    void whatIsKnownIsLeftOut_data()
    {
        QTest::addColumn<QByteArrayList>("streams");
        QTest::addColumn<QByteArray>("text");
        const auto row = [](const char *name, const QByteArrayList &streams, const char *text) {
            QTest::newRow(name) << streams << QByteArray(text);
        };
        row("lines of one moment", {"T1.5Z a\nT1.5Z b\n", "T1.1Z x\nT1.5Z a\nT1.5Z b\nT1.5Z c\nT2Z d\n"},
            "a\nb\nc\nd\n");
        row("a line that was cut", {"T1Z one\nT1.25Z tw", "T1Z one\nT1.25Z two\nT3Z three\n"},
            "one\ntwo\nthree\n");
        row("broken off while catching up",
            {"T1Z a\nT1Z b\nT1Z cc\n", "T1Z a\nT1Z b\nT1Z c", "T1Z a\nT1Z b\nT1Z cc\nT1Z d\n"},
            "a\nb\ncc\nd\n");
        row("nothing new", {"T1Z a\n", "T1Z a\n", "T1Z a\n"}, "a\n");
        row("other zones and digits", {"T1.500Z a\n", "T1.5000Z a\nT1.500000001Z b\n"}, "a\nb\n");
        row("lines without a time", {"no time\nT1Z a\nfailed to watch\n2026-03-01 x\n\n", "T1Z a\nT2Z \n"},
            "no time\na\nfailed to watch\n2026-03-01 x\n\n\n");
        row("another instance", {"T5Z a\n", "T7Z a\nT7Z a\n"}, "a\na\na\n");
    }
    void whatIsKnownIsLeftOut()
    {
        QFETCH(QByteArrayList, streams);
        QFETCH(QByteArray, text);
        for (const qsizetype piece : {1, 7, 1000}) {
            LogTimestamps timestamps(false);
            QByteArray result;
            for (QByteArray stream : streams) {
                timestamps.resume();
                stream.replace("T", "2026-03-01T09:30:0");
                for (qsizetype at = 0; at < stream.size(); at += piece) {
                    result += timestamps.take(stream.mid(at, piece));
                }
                result += timestamps.finish();
            }
            QCOMPARE(result, text);
        }
    }

    void aStreamIsTakenUpAgain_data()
    {
        QTest::addColumn<int>("restarts");
        QTest::addColumn<bool>("timestamps");
        QTest::addColumn<QByteArray>("previous");
        QTest::addColumn<QByteArray>("current");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("story");
        QTest::newRow("restarted") << 1 << false << QByteArray("T2Z two\nT3Z last words\n")
                                   << QByteArray("T5Z one\nT6Z two\n")
                                   << QByteArray("one\ntwo\nlast words\none\ntwo\n") << u" restarted"_s;
        QTest::newRow("broke off") << 0 << true << QByteArray() << QByteArray("T2Z two\nT3Z three\n")
                                   << QByteArray("T1Z one\nT2Z two\nT3Z three\n") << u" taken up again"_s;
    }
    void aStreamIsTakenUpAgain()
    {
        QFETCH(int, restarts);
        QFETCH(bool, timestamps);
        QFETCH(QByteArray, previous);
        QFETCH(QByteArray, current);
        QFETCH(QByteArray, text);
        QFETCH(QString, story);
        useScriptedKubectl();
        setPods({podLine("web-1", 0)});
        write(u"current"_s, timed("T1Z one\nT2Z two\n"));
        auto &content = openWorkload({.timestamps = timestamps});
        const qsizetype lineLength = timestamps ? 25 : 4;
        QTRY_COMPARE(content.document().size(), 2 * lineLength);

        setPods({podLine("web-1", restarts)});
        write(u"previous"_s, timed(previous));
        write(u"current"_s, timed(current));
        write(u"go"_s, "");
        QTRY_COMPARE(textOf(content.document()), timestamps ? timed(text) : text);
        QTRY_VERIFY(content.hasRunningStreams());
        QVERIFY(content.sources()[0].note().endsWith(story));
        QCOMPARE(content.logTextView()->marks().front().position, 2 * lineLength);
        const QString since = u" --since-time=2026-03-01T09:30:0%1Z --timestamps --context=demo -nteam"_s;
        QVERIFY(record().contains(u"logs -f"_s + since.arg(restarts > 0 ? 3 : 2)));
        QCOMPARE(record().contains(u"logs --previous"_s + since.arg(2)), restarts > 0);

        // Its pod goes, and another one waits.
        setPods({podLine("web-2", -1)});
        write(u"go"_s, "");
        QTRY_VERIFY(content.sources().size() == 2 && content.sources()[0].ended);
        QCOMPARE(content.sources()[0].story.last().section(u' ', 1), u"the pod is gone"_s);
        QCOMPARE(content.sources()[1].state(), u"waiting to start"_s);
        QVERIFY(content.sources()[1].note().endsWith(u"joined"_s));
    }

    void manyPodsAreFollowedOnlyWhenAskedFor_data()
    {
        QTest::addColumn<int>("pods"); // at first; one more comes later
        QTest::addColumn<QString>("answer");
        QTest::addColumn<int>("followed");
        QTest::newRow("agreed") << 21 << u"Follow 21 Logs"_s << 21;
        QTest::newRow("cancelled") << 21 << u"Cancel"_s << 0;
        QTest::newRow("cancelled for one more") << 20 << u"Cancel"_s << 20;
    }
    void manyPodsAreFollowedOnlyWhenAskedFor()
    {
        QFETCH(int, pods);
        QFETCH(QString, answer);
        QFETCH(int, followed);
        useScriptedKubectl();
        const auto setCount = [this](int count) {
            QByteArrayList lines;
            for (int i = 0; i < count; ++i) {
                lines.append(podLine("web-" + QByteArray::number(i), 0));
            }
            setPods(lines);
        };
        setCount(pods);
        write(u"current"_s, "line\n");
        auto &content = openWorkload();
        if (pods == 20) {
            QTRY_COMPARE(content.document().lines(), pods);
            setCount(21);
            write(u"go"_s, ""); // one ends, and is to be taken up again
        }
        const auto button = [&] { return buttonWith(answer); };
        QTRY_VERIFY(button() && button()->isVisible());
        QCOMPARE(record().count(u"logs -f"_s), pods % 21);
        button()->click();
        QTRY_COMPARE(m_window.isNull(), followed == 0);
        const auto running = [&] {
            return std::count_if(content.sources().cbegin(), content.sources().cend(),
                [](const LogSource &source) { return !source.waits && !source.ended; });
        };
        QTRY_VERIFY(!m_window || running() == followed);
    }

    void aWindowSaysWhyThereAreNoPods_data()
    {
        QTest::addColumn<QByteArray>("selector");
        QTest::addColumn<QString>("hint");
        QTest::newRow("none now") << QByteArray(R"({"app":"web"})")
                                  << u"There are no pods now. Those that come are followed."_s;
        QTest::newRow("a service without a selector") << QByteArray() << u"deploy/web selects no pods."_s;
    }
    void aWindowSaysWhyThereAreNoPods()
    {
        QFETCH(QByteArray, selector);
        QFETCH(QString, hint);
        useScriptedKubectl();
        setPods({});
        write(u"selector"_s, selector);
        auto &content = openWorkload();
        QTRY_COMPARE(content.logTextView()->hint(), hint);
        QVERIFY(content.shells().empty());
    }

    void aDeploymentIsFollowedWhole_data()
    {
        QTest::addColumn<QString>("kubectl");
        QTest::newRow("today's kubectl") << qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL");
        QTest::newRow("kubectl 1.20") << qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL_OLD");
    }
    void aDeploymentIsFollowedWhole()
    {
        QFETCH(QString, kubectl);
        DemoProcess demo({u"--still"_s, u"--log-rate"_s, u"4000"_s}, kubectl);
        QVERIFY(demo.isReady());
        setKubectlPath(kubectl);
        QCOMPARE(
            demo.kubectl({u"scale"_s, u"-nshop"_s, u"deploy/storefront"_s, u"--replicas=4"_s}).exitCode, 0);
        auto &content = open(
            {}, {{u"deploy/storefront"_s, allContainers}}, {demo.kubeconfig(), u"demo-harbor"_s, u"shop"_s});
        const auto sources = [&] { return qsizetype(content.sources().size()); };
        QTRY_VERIFY(sources() >= 4 && content.document().lines() > 2000);
        const qsizetype before = sources();
        const QString leaver = content.containers[0].pod;
        QCOMPARE(demo.kubectl({u"delete"_s, u"pod"_s, u"-nshop"_s, leaver}).exitCode, 0);
        QTRY_VERIFY(sources() > before && content.sources()[0].ended);
        const auto lines = [&](int source) { return textOf(content.document(), source).count('\n'); };
        QTRY_VERIFY(lines(int(before)) > 1000);

        QVERIFY(demo.control("{\"logPause\": true}"));
        QTRY_COMPARE(content.document().lines(), linesSent(demo));
        for (int source = 0; source < sources(); ++source) {
            const QList<int> numbers = numbersIn(textOf(content.document(), source));
            for (qsizetype i = 1; i < numbers.size(); ++i) {
                QCOMPARE(numbers[i], numbers[i - 1] + 1);
            }
            QCOMPARE(!numbers.isEmpty() && numbers.first() == 1, source >= before && !numbers.isEmpty());
        }
        QVERIFY(content.containers[std::size_t(before)].pod != leaver);
        QVERIFY(content.colorIndexTableView()->item(0, 2)->text().contains(u"the pod is gone"_s));
    }

    void aFilterShowsWhatIsAskedFor_data()
    {
        QTest::addColumn<LogFilter>("filter");
        QTest::addColumn<QString>("shown");
        const LogPattern x(u"x"_s, true, false);
        QTest::newRow("matching") << LogFilter(x) << u"3x 9x"_s;
        QTest::newRow("all others") << LogFilter(x, true) << u"0 1 2 4 5 6 7 8 10 11"_s;
        QTest::newRow("others have nothing around") << LogFilter(x, true, 1) << u"0 1 2 4 5 6 7 8 10 11"_s;
        QTest::newRow("one line around") << LogFilter(x, false, 1) << u"2 3x 4 8 9x 10"_s;
        QTest::newRow("overlapping") << LogFilter(x, false, 4) << u"0 1 2 3x 4 5 6 7 8 9x 10 11"_s;
        QTest::newRow("nothing matches") << LogFilter(LogPattern(u"y"_s, true, false), false, 3) << QString();
    }
    void aFilterShowsWhatIsAskedFor()
    {
        QFETCH(LogFilter, filter);
        QFETCH(QString, shown);
        LogDocument document({m_folder->path()});
        document.setSourceHidden(1, true); // between any two lines
        document.setFilter(filter);
        for (int i = 0; i < 12; ++i) { // each is looked at by itself
            const QByteArray line = QByteArray::number(i) + (i == 3 || i == 9 ? "x\n" : "\n");
            document.append(0, line);
            document.append(1, "hidden x\n");
            QTRY_COMPARE(document.examined(), document.size());
        }
        const auto text = [&] {
            const LogProjection &lines = document.shown();
            return QString::fromUtf8(document.bytes().read(lines.ranges(0, lines.size()))).simplified();
        };
        QTRY_COMPARE(text(), shown);
        QCOMPARE(document.shown().lineCount(), shown.isEmpty() ? 0 : shown.count(u' ') + 1);
        document.setFilter({});
        document.setFilter(filter); // all in one go
        QTRY_COMPARE(text(), shown);
    }

    void aTimeIsFound_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<qint64>("position");
        QTest::newRow("of the day") << u"9:30:02"_s << qint64(31);
        QTest::newRow("between lines") << u" 9:30:03 "_s << qint64(60);
        QTest::newRow("before all") << u"8"_s << qint64(6);
        QTest::newRow("whole, elsewhere") << u"2026-03-01T12:30:02+03:00"_s << qint64(31);
        QTest::newRow("behind all") << u"23:59"_s << qint64(-1);
        QTest::newRow("none") << u"25:00"_s << qint64(-2);
        QTest::newRow("no time") << u"soon"_s << qint64(-2);
    }
    void aTimeIsFound()
    {
        QFETCH(QString, typed);
        QFETCH(qint64, position);
        LogStore store({m_folder->path()});
        store.append(timed("first\nT1Z abc\nT2.500Z abc\nT4Z abc\n"));
        const auto moment = log_time::completed(typed, "2026-03-01T09:30:04.123456Z");
        QCOMPARE(moment ? log_time::firstLineSince(store.bytes(), *moment).value_or(-1) : -2, position);
    }

    void aWindowReadsItsLogsAnew()
    {
        useScriptedKubectl();
        const QByteArray lines = timed("T1Z one\nT2Z two x\nT3Z three\n");
        write(u"current"_s, lines);
        auto &content = open({{u"web"_s, u"app"_s}});
        LogDocument &document = content.document();
        QTRY_COMPARE(document.lines(), 3);
        action(u"Last 5,000 Lines"_s)->trigger();
        QCOMPARE(document.size(), 0);
        QTRY_COMPARE(textOf(document), lines);
        action(u"Times"_s)->trigger();
        QTRY_COMPARE(textOf(document), lines);
        QTRY_VERIFY(record().endsWith(u"logs -f --tail=5000 --timestamps --context=demo -nteam web app\n"_s));
        action(u"Go to Time…"_s)->trigger();
        auto *dialog = m_window->findChild<QInputDialog *>();
        QVERIFY(dialog && dialog->textValue() == u"09:30:01"_s);
        dialog->setTextValue(u"23:00"_s);
        dialog->accept();
        QTRY_VERIFY(!labelWith(u"No line is as late as 23:00."_s).isEmpty());

        content.logTextView()->showSourceNames(true); // copies nothing of them
        content.logTextView()->selection().doubleClick({content.logTextView()->scroll().origin().x() + 4, 4});
        action(u"Find Selected Text"_s)->trigger();
        QCOMPARE(m_window->findBar().field()->text(), u"2026-03-01T09"_s);
        m_window->filterBar().open(u"two"_s);
        QTRY_COMPARE(document.shownLines(), 1);
        m_window->saveShownTo(path(u"shown.log"_s));
        QTRY_COMPARE(read(u"shown.log"_s), timed("T2Z two x\n"));

        write(u"go"_s, "");
        QTRY_VERIFY(!content.hasRunningStreams());
        auto *again = buttonWith(u"Follow Again"_s);
        QTRY_VERIFY(again && again->isVisible());
        again->click();
        QTRY_COMPARE(document.lines(), 6);
        QVERIFY(!again->isVisible());
        static const QRegularExpression since(u"--since-time=[-0-9]+T[:0-9]+Z --timestamps"_s);
        QVERIFY(record().section(u'\n', -2, -2).contains(since));
        QCOMPARE(content.logTextView()->marks().size(), std::size_t(1));
    }

    void namesShowOnceColoursRunOut_data()
    {
        QTest::addColumn<int>("sources");
        QTest::newRow("enough colours") << 5;
        QTest::newRow("too few") << 6;
    }
    void namesShowOnceColoursRunOut()
    {
        QFETCH(int, sources);
        useScriptedKubectl();
        write(u"current"_s, "line\n");
        auto &content = open(std::vector<ContainerPair>(std::size_t(sources), {u"web"_s, u"app"_s}));
        QTRY_COMPARE(content.document().lines(), sources);
        LogView *view = content.logTextView();
        QTRY_COMPARE(view->scroll().gutter() > 0, sources > 5);
        action(u"Names"_s)->trigger();
        QCOMPARE(view->scroll().gutter() > 0, sources == 5);
        view->selection().selectAll();
        view->selection().copy();
        QCOMPARE(QGuiApplication::clipboard()->text().count(u"line"_s), sources);
        QVERIFY(!QGuiApplication::clipboard()->text().contains(u"web"_s));
    }

private:
    /// Appears whole.
    void write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name + u".new"_s));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        QCOMPARE(::rename(qPrintable(file.fileName()), qPrintable(path(name))), 0);
    }
    QString record() const { return QString::fromUtf8(read(u"record"_s)); }
    static QByteArray timed(QByteArray lines) { return lines.replace("T", "2026-03-01T09:30:0"); }
    /// Negative restarts: it waits for its first start.
    static QByteArray podLine(const QByteArray &name, int restarts)
    {
        return name + "\tuid-of-" + name
            + "\t\t[{\"name\":\"app\",\"restartCount\":" + QByteArray::number(std::max(0, restarts))
            + ",\"state\":{\"" + (restarts < 0 ? "waiting" : "running") + "\":{}}}]";
    }
    void setPods(const QByteArrayList &lines) const { write(u"pods"_s, lines.join('\n')); }
    void useScriptedKubectl() const
    {
        write(u"selector"_s, R"({"matchLabels":{"app":"web"}})");
        write(u"kubectl"_s, "#!/bin/sh\ncd " + QFile::encodeName(m_folder->path()) + scriptedKubectl);
        QFile::setPermissions(path(u"kubectl"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        setKubectlPath(path(u"kubectl"_s));
    }

    CombinedLogsViewController &openWorkload(const LogOptions &options = {})
    {
        return open({}, {{u"deploy/web"_s, allContainers}}, {{}, u"demo"_s, u"team"_s}, options);
    }

    QAction *action(const QString &text) const
    {
        const auto actions = m_window->findChildren<QAction *>();
        const auto found = std::find_if(
            actions.cbegin(), actions.cend(), [&](const QAction *one) { return one->text() == text; });
        return found == actions.cend() ? nullptr : *found;
    }
};

QTEST_MAIN(TestLogFollowing)
#include "tst_log_following.moc"
