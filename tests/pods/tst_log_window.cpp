// SPDX-License-Identifier: GPL-3.0-or-later
// The logs window: its streams over the fake tool, and all of it over the demo cluster through real kubectl.
#include "LogWindowTest.h"
#include "core/running/ApplicationRecord.h"
#include "core/running/Console.h"
#include "platform/process/ProcessSetup.h"
#include "platform/threads/MainQueue.h"
#include "pods/logs/text/LogSearch.h"
#include "pods/logs/view/LogPatternBar.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QLineEdit>
#include <QTableWidget>
#include <QTest>

#include <sys/resource.h>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 30'000;

std::vector<ContainerPair> pairs(int count)
{
    std::vector<ContainerPair> result;
    for (int i = 0; i < count; ++i) {
        result.emplace_back(u"pod-%1"_s.arg(i), u"c%1"_s.arg(i));
    }
    return result;
}

} // namespace

class TestLogWindow : public QObject, LogWindowTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        mainQueue();
        settleSignals();
    }
    void init()
    {
        prepareFolder();
        setKubectlPath(fakeToolPath());
        setScript("out hello\\n hang");
        qputenv("FAKE_TOOL_RECORD", QFile::encodeName(path(u"record"_s)));
    }
    void cleanup()
    {
        delete m_window;
        qunsetenv("FAKE_TOOL_SCRIPT");
        qunsetenv("FAKE_TOOL_RECORD");
    }

    void startsEachStreamOnce()
    {
        const QString nameSpace = u"All Namespaces"_s; // whose space divides no argument
        auto &content = open({{u"web"_s, u"app"_s}, {u"deploy/db"_s, allContainers}}, {},
            {u"/etc/kc"_s, u"demo"_s, nameSpace});
        QCOMPARE(m_window->windowTitle(), u"%1 Logs | app,--all-containers — demo / %1"_s.arg(nameSpace));
        QTRY_COMPARE(content.document().size(), 12);
        m_window->hide();
        m_window->show();
        QCOMPARE(qsizetype(content.shells().size()), 2);
        QCOMPARE(content.document().size(), 12);
        QByteArrayList expected;
        for (const char *rest : {"\"web\"\n\"app\"\n", "\"deploy/db\"\n\"--all-containers\"\n"}) {
            expected.append(QByteArray("\"logs\"\n\"-f\"\n\"--tail=50\"\n\"--context=demo\"\n\"-n")
                + nameSpace.toUtf8() + "\"\n" + rest + "KUBECONFIG=/etc/kc\n");
        }
        const QByteArray record = read(u"record"_s);
        QVERIFY2(
            record == expected[0] + expected[1] || record == expected[1] + expected[0], record.constData());
    }

    void theIndexTellsHowStreamsDo_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("status");
        const auto row = [](const char *name, const char *script, const char *state, const char *status) {
            QTest::newRow(name) << QByteArray(script) << QString::fromUtf8(state)
                                << u"2 lines, 10 bytes"_s + QString::fromUtf8(status);
        };
        const char *const failed = " · all streams have ended · 2 with errors";
        row("well", "hang", "running", "");
        row("one of several pods", "err Found\\x204\\x20pods,\\x20using\\x20pod/web-1\\n hang",
            "running\nusing pod/web-1, 1 of 4 pods", " · of 2 sources only one pod of several is followed");
        row("another note", "err Warning:\\x20old\\n hang", "running\nWarning: old", "");
        row("a note, then a good end", "err a\\x20note\\n", "ended\na note", " · all streams have ended");
        row("failed", "err it\\x20failed\\nWarning:\\x20old exit 1", "ended, error\nit failed", failed);
        row("without a word", "exit 3", "ended, error\nThe command ended with status 3.", failed);
        row("killed", "die 9", "ended, error\nThe command was ended by signal 9.", failed);
    }
    void theIndexTellsHowStreamsDo()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, state);
        QFETCH(QString, status);
        setScript("out text\\n " + script);
        auto &content = open(pairs(2));
        const QTableWidget *index = content.colorIndexTableView();
        for (int row = 0; row < 2; ++row) {
            QTRY_COMPARE(index->item(row, 2)->text(), state);
            QVERIFY(index->rowHeight(row) >= (state.count(u'\n') + 1) * index->fontMetrics().height());
        }
        QTRY_COMPARE(m_window->statusText(), status);
        QCOMPARE(content.document().bytes().read(0, 20), QByteArray("text\ntext\n"));
    }

    void containersThatKubectlRefusesAreFollowedOnDemand()
    {
        setScript(
            "err error:\\x20you\\x20are\\x20attempting\\x20to\\x20follow\\x206\\x20log\\x20streams,\\x20but"
            "\\x20maximum\\x20allowed\\x20concurrency\\x20is\\x205,\\x20use\\x20--max-log-requests exit 1");
        auto &content = open({{u"pod-0"_s, allContainers}});
        const auto state = [&] { return content.colorIndexTableView()->item(0, 2)->text(); };
        QTRY_COMPARE(state(), u"ended, error\n6 containers are more than kubectl follows unasked"_s);
        QTRY_VERIFY(!content.hasRunningStreams());
        auto *button = buttonWith(u"Follow All Containers"_s);
        QTRY_VERIFY(button && button->isVisible());
        QFile::remove(path(u"record"_s));
        setScript("out first\\nsec hang");
        button->click();
        QTRY_COMPARE(content.document().size(), 9);
        QCOMPARE(state(), u"running"_s);
        QVERIFY(!button->isVisible());
        QVERIFY(read(u"record"_s).contains("\"--all-containers\"\n\"--max-log-requests=6\"\n"));
    }

    void manyStreamsStartOnlyWhenAskedFor_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("answer");
        QTest::newRow("not too many") << 20 << QString();
        QTest::newRow("agreed") << 21 << u"Follow 21 Logs"_s;
        QTest::newRow("cancelled") << 21 << u"Cancel"_s;
    }
    void manyStreamsStartOnlyWhenAskedFor()
    {
        QFETCH(int, count);
        QFETCH(QString, answer);
        auto &content = open(pairs(count));
        if (!answer.isEmpty()) {
            QVERIFY(content.shells().empty());
            QCOMPARE(content.logTextView()->hint(), u"Nothing is followed yet."_s);
            QTRY_VERIFY(buttonWith(answer) && buttonWith(answer)->isVisible());
            buttonWith(answer)->click();
        }
        if (answer == u"Cancel"_s) {
            QTRY_VERIFY(!m_window);
            QVERIFY(!QFile::exists(path(u"record"_s)));
        } else {
            QTRY_COMPARE(content.document().size(), count * 6);
            QCOMPARE(content.colorIndexTableView()->rowCount(), count);
        }
    }

    void closingEndsTheChildren_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("said");
        QTest::newRow("running") << QByteArray("out x hang") << u"Process terminated\nProcess terminated\n"_s;
        QTest::newRow("flooding") << QByteArray("fill 99999999999")
                                  << u"Process terminated\nProcess terminated\n"_s;
        QTest::newRow("ended") << QByteArray("out x") << QString();
    }
    void closingEndsTheChildren()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, said);
        QVERIFY(QDir(m_folder->path()).mkdir(u"pids"_s));
        setScript("pidfile " + QFile::encodeName(path(u"pids"_s)) + ' ' + script);
        const CapturedOutput output;
        auto &content = open(pairs(2));
        QTRY_VERIFY(content.document().size() >= 2 && pidsIn(path(u"pids"_s)).size() == 2);
        if (said.isEmpty()) {
            QTRY_VERIFY(!content.hasRunningStreams());
        }
        QTest::keyClick(m_window, Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!m_window);
        QCOMPARE(output.text(), said);
        for (const qint64 pid : pidsIn(path(u"pids"_s))) {
            QTRY_VERIFY(!isAlive(pid));
        }
    }

    void sourcesHideOnAClick()
    {
        auto &content = open(pairs(2));
        QTRY_COMPARE(content.document().size(), 12);
        QTableWidget *table = content.colorIndexTableView();
        const QRect cell = table->visualItemRect(table->item(1, 0));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell.center());
        QVERIFY(content.document().isSourceHidden(1));
        QVERIFY(content.logTextView()->hasFocus()); // the keys still scroll the log
        QTRY_COMPARE(content.logTextView()->visibleText(), u"hello"_s);
        QVERIFY(table->item(1, 2)->text().startsWith(u"hidden"_s));
        QTest::keyClick(table, Qt::Key_Up);
        QTest::keyClick(table, Qt::Key_Space);
        QVERIFY(content.document().isSourceHidden(0));
        QTRY_COMPARE(content.logTextView()->visibleText(), QString());
        QTest::keyClick(table, Qt::Key_Space);
        QTRY_COMPARE(content.logTextView()->visibleText(), u"hello"_s);
    }

    void findsFiltersAndSaves()
    {
        setScript("out one\\ntwo\\nONE\\x20\\x1b[31mred\\x1b[0m\\xff\\n hang");
        auto &content = open(pairs(1));
        QTRY_COMPARE(content.document().lines(), 3);
        QTest::keyClick(m_window, Qt::Key_F, Qt::ControlModifier);
        QVERIFY(m_window->findBar().isVisible());
        QTest::keyClicks(m_window->findBar().field(), u"one"_s);
        QTRY_COMPARE(m_window->search().count(), 2);
        QCOMPARE(m_window->search().currentNumber(), 1);
        QTest::keyClick(m_window, Qt::Key_F3);
        QCOMPARE(m_window->search().currentNumber(), 2);
        QTest::keyClick(m_window, Qt::Key_F3, Qt::ShiftModifier);
        QCOMPARE(m_window->search().currentNumber(), 1);
        QTest::keyClick(m_window->findBar().field(), Qt::Key_Escape);
        QVERIFY(!m_window->findBar().isVisible());
        QCOMPARE(m_window->search().count(), 0);
        m_window->filterBar().open(u"ONE red"_s);
        QTRY_COMPARE(content.logTextView()->visibleText(), u"ONE red\ufffd"_s);
        QTRY_VERIFY2(m_window->statusText().contains(u"1 shown"_s), qPrintable(m_window->statusText()));

        // All is saved, whatever is shown; a file that is there is replaced whole.
        const QString file = path(u"saved.log"_s);
        QVERIFY(QFile(file).open(QIODevice::WriteOnly));
        m_window->saveTo(file);
        QTRY_COMPARE(read(u"saved.log"_s), QByteArray("one\ntwo\nONE \x1b[31mred\x1b[0m\xff\n"));
        m_window->saveTo(path(u"no/folder.log"_s));
        QTRY_VERIFY(!labelWith(u"could not be saved"_s).isEmpty());
        m_window->filterBar().close();
        QTRY_COMPARE(content.logTextView()->visibleText(), u"one\ntwo\nONE red\ufffd"_s);
    }

    void anEmptyViewSaysWhy()
    {
        setScript("until " + QFile::encodeName(path(u"go"_s)) + " out hello\\n hang");
        auto &content = open(pairs(2));
        const auto hint = [&] { return content.logTextView()->hint(); };
        QCOMPARE(hint(), u"Waiting for output of 2 containers…"_s);
        QVERIFY(QFile(path(u"go"_s)).open(QIODevice::WriteOnly));
        QTRY_COMPARE(content.document().size(), 12);
        m_window->filterBar().open(u"nowhere"_s);
        QTRY_COMPARE(hint(), u"No line matches the filter."_s);
        content.toggleSource(0);
        content.toggleSource(1);
        QTRY_COMPARE(hint(), u"All containers are hidden."_s);
        QTest::keyClick(m_window, Qt::Key_K, Qt::ControlModifier);
        QCOMPARE(content.document().size(), 12);
        QTest::keyClick(m_window, Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(content.document().size(), 0);
        QTRY_COMPARE(hint(), u"Cleared."_s);
        content.windowWillClose();
        delete m_window;
        setScript("err no\\x20such\\x20pod exit 1");
        auto &failed = open(pairs(1));
        QTRY_VERIFY2(failed.logTextView()->hint().contains(u"pod-0: no such pod"_s),
            qPrintable(failed.logTextView()->hint()));
    }

    void aSaveOutlivesItsWindow_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<qint64>("saved");
        QTest::addColumn<QString>("said");
        QTest::newRow("saved") << u"saved.log"_s << qint64(50'000'000) << QString();
        QTest::newRow("failed") << u"no/folder.log"_s << qint64(0) << u"could not be saved"_s;
    }
    void aSaveOutlivesItsWindow()
    {
        QFETCH(QString, name);
        QFETCH(qint64, saved);
        QFETCH(QString, said);
        RecordingConsole console;
        setMainConsoleLookup([&] { return &console; });
        auto &content = open(pairs(1));
        content.document().append(0, QByteArray(50'000'000 - 6, 'x'));
        QTRY_COMPARE(content.document().size(), 50'000'000);
        m_window->saveTo(path(name));
        delete m_window;
        QTRY_COMPARE(QFileInfo(path(name)).size(), saved);
        QTRY_VERIFY2(console.entries.join(u'|').contains(said), qPrintable(console.entries.join(u'|')));
        QCOMPARE(console.entries.isEmpty(), said.isEmpty());
        setMainConsoleLookup({});
    }

    void withoutRoomTheStreamsEnd()
    {
        rlimit before{};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
        rlimit limited = before;
        limited.rlim_cur = 1'000'000;
        setScript("fill 99999999999");
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limited), 0);
        auto &content = open(pairs(2));
        QTRY_VERIFY_WITH_TIMEOUT(!content.hasRunningStreams() && !content.sources().empty(), 2 * patience);
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &before), 0);
        QVERIFY(content.document().size() >= LogStore::memoryLimit);
        QTRY_VERIFY2(m_window->statusText().startsWith(u"Stopped: "_s)
                && m_window->statusText().endsWith(u"all streams have ended"_s), // and none with errors
            qPrintable(m_window->statusText()));
    }

    void nothingIsLostOnTheWay()
    {
        // TIDEWRIGHT_LOG_SECONDS=60 is the long run.
        const int seconds = qEnvironmentVariableIntValue("TIDEWRIGHT_LOG_SECONDS");
        qunsetenv("FAKE_TOOL_SCRIPT");
        DemoProcess demo(
            {u"--still"_s, u"--log-rate"_s, u"20000"_s}, qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"));
        QVERIFY(demo.isReady());
        setKubectlPath(qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"));
        auto &content = open(
            {{u"deploy/storefront"_s, allContainers}}, {}, {demo.kubeconfig(), u"demo-harbor"_s, u"shop"_s});
        QTRY_VERIFY(content.document().size() > 0);
        QTRY_VERIFY(content.sources()[0].choice);
        const QString state = content.colorIndexTableView()->item(0, 2)->text();
        QVERIFY2(state.startsWith(u"running\nusing pod/storefront-"_s), qPrintable(state));
        QVERIFY2(m_window->statusText().contains(u" pods of deploy/storefront is followed: pod/storefront"_s),
            qPrintable(m_window->statusText()));
        const qint64 enough = qint64(seconds > 0 ? seconds : 1) * 20'000;
        QTRY_VERIFY_WITH_TIMEOUT(content.document().lines() > enough, 3 * patience);
        QVERIFY(demo.control("{\"logPause\": true}"));
        QTRY_COMPARE_WITH_TIMEOUT(content.document().lines(), linesSent(demo), 3 * patience);
        const qint64 lines = linesSent(demo);
        content.document().commit();
        QCOMPARE(content.document().bytes().read(0, content.document().size()).count('\n'), lines);
        m_window->saveTo(path(u"saved.log"_s));
        QTRY_VERIFY(!labelWith(u"Saved"_s).isEmpty());
        QCOMPARE(read(u"saved.log"_s).count('\n'), lines);
        qInfo("%lld lines sent, received, kept and saved; %lld bytes", lines, content.document().size());
    }

private:
    static void setScript(QByteArray words) { qputenv("FAKE_TOOL_SCRIPT", words.replace(' ', '\n')); }
};

QTEST_MAIN(TestLogWindow)
#include "tst_log_window.moc"
