// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

/// What a stream has delivered so far. Shared with handlers that may outlive the test.
struct Collector
{
    std::mutex mutex;
    QString output; // decoded piece by piece: a character that is cut would show
    QString errors;
    QStringList ends;

    static void run(const std::shared_ptr<Collector> &collector, Shell &shell, const QStringList &arguments)
    {
        shell.runStreaming(
            arguments,
            [collector](const QByteArray &output, const std::optional<QByteArray> &error) {
                const std::lock_guard lock(collector->mutex);
                collector->output += QString::fromUtf8(output);
                collector->errors += QString::fromUtf8(error.value_or(QByteArray()));
            },
            [collector](const std::optional<QString> &failure) {
                const std::lock_guard lock(collector->mutex);
                collector->ends += failure.value_or(QString());
            });
    }
    QString text()
    {
        const std::lock_guard lock(mutex);
        return errors.isEmpty() ? output : output + u'|' + errors;
    }
    QStringList endings()
    {
        const std::lock_guard lock(mutex);
        return ends;
    }
};

qsizetype aliveIn(const QTemporaryDir &folder)
{
    const QList<qint64> pids = pidsIn(folder.path());
    return std::count_if(pids.cbegin(), pids.cend(), isAlive);
}

QStringList lastingTool(const QTemporaryDir &folder, const QByteArray &rest)
{
    return fakeTool("pidfile " + folder.path().toUtf8() + ' ' + rest);
}

} // namespace

class TestStreaming : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_collector = std::make_shared<Collector>(); }

    void delivers_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("end");
        const auto row = [](const char *name, const char *script, const char *text, const char *end = "") {
            QTest::newRow(name) << fakeTool(script) << QString::fromUtf8(text) << QString::fromUtf8(end);
        };
        row("nothing", "exit 1", "", "The command ended with status 1.");
        row("both streams, untrimmed", "out a\\n err e\\n", "a\n|e\n");
        row("a character in three writes", "out a\\xe2 drained out \\x82 drained out \\xacb", "a\u20acb");
        row("cut before the end", "out a drained out \\xf0\\x9f", "a\ufffd\ufffd");
        row("bytes that are no text", "out a\\xff\\xfeb drained out c err \\xff", "a\ufffd\ufffdbc|\ufffd");
        row("a beginning whose rest never comes", "out a\\xe2\\x82 drained out b", "a\ufffd\ufffdb");
        row("dies by a signal", "out last die 9", "last", "The command was ended by signal 9.");
        row("grandchild holds the pipe", "grandchild 2 until %1 out x", "x");
        QTest::newRow("cannot be started") << QStringList{fakeToolPath(), QString(200'000, u'x')} << QString()
                                           << u"Unexpected error: Argument list too long."_s;
    }
    void delivers()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, text);
        QTemporaryDir folder;
        const QString go = folder.filePath(u"go"_s);
        arguments.replaceInStrings(u"%1"_s, go);
        const auto shell = Shell::create();
        Collector::run(m_collector, *shell, arguments);
        QTRY_COMPARE(m_collector.use_count(), 1L); // the stream is over: its handler is gone
        QCOMPARE(m_collector->text(), text);
        QTEST(m_collector->endings().join(u'|'), "end");
        QCOMPARE(m_collector->endings().size(), 1);
        QCOMPARE(shell->process(), nullptr);
        QVERIFY(QFile(go).open(QIODevice::WriteOnly));
    }

    void losesNothingOfALongStream()
    {
        // Pieces end anywhere; a letter that a read cuts must arrive whole. Only a period is kept of the
        // text.
        const QByteArray period("\u00e4\u20ac\U0001f600");
        const qint64 periods = (sanitized ? 64 << 20 : 100 << 20) / 9 + 1;
        struct Checked
        {
            std::atomic<qint64> bytes = 0;
            std::atomic<bool> intact = true;
        };
        auto checked = std::make_shared<Checked>();
        const auto shell = Shell::create();
        shell->runStreaming(fakeTool("letters " + QByteArray::number(periods * 9) + " 65521"),
            [checked, period](const QByteArray &output, const std::optional<QByteArray> &error) {
                const qint64 at = checked->bytes % 9;
                const QByteArray expected = period.repeated(output.size() / 9 + 2).mid(at, output.size());
                checked->intact = checked->intact && !error && output == expected && output.isValidUtf8();
                checked->bytes += output.size();
            });
        QTRY_COMPARE_WITH_TIMEOUT(checked->bytes.load(), periods * 9, 60'000);
        QVERIFY(checked->intact);
    }

    void theNextStreamEndsTheOneBefore()
    {
        QTemporaryDir folder;
        const auto shell = Shell::create();
        shell->runStreaming(lastingTool(folder, "out one fill 99999999999"), [](auto &&...) {});
        QTRY_COMPARE(aliveIn(folder), 1);
        Collector::run(m_collector, *shell, fakeTool("out two hang"));
        QTRY_COMPARE(m_collector->text(), u"two"_s);
        QTRY_COMPARE(aliveIn(folder), 0);
    }

    void onlyTheLastOfManyRequestsStreams()
    {
        QTemporaryDir folder;
        const auto shell = Shell::create();
        for (int i = 0; i < 20; ++i) {
            Collector::run(
                m_collector, *shell, lastingTool(folder, i == 19 ? "out last hang" : "out early hang"));
        }
        QTRY_VERIFY(m_collector->text().endsWith(u"last"));
        QTRY_COMPARE(aliveIn(folder), 1);
        QVERIFY(shell->process());
    }

    void endsWithItsOwner_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<bool>("cancelled");
        QTest::newRow("let go") << QByteArray("hang") << false;
        QTest::newRow("cancelled") << QByteArray("hang") << true;
        QTest::newRow("deaf") << QByteArray("ignore-term hang") << false;
        QTest::newRow("closed its output") << QByteArray("close-output hang") << false;
        QTest::newRow("closed its output, cancelled") << QByteArray("close-output hang") << true;
    }
    void endsWithItsOwner()
    {
        QFETCH(QByteArray, script);
        QFETCH(bool, cancelled);
        QTemporaryDir folder;
        auto shell = Shell::create();
        Collector::run(m_collector, *shell, lastingTool(folder, script));
        QTRY_COMPARE(aliveIn(folder), 1);
        if (cancelled) {
            shell->cancel();
        } else {
            shell.reset();
        }
        QTRY_COMPARE(aliveIn(folder), 0);
        QTRY_COMPARE(m_collector.use_count(), 1L);
        QCOMPARE(m_collector->endings(), QStringList{QString()}); // stopped: no failure
    }

    void lettingGoOfManyFloodsAtAnyMoment()
    {
        QTemporaryDir folder;
        std::vector<std::shared_ptr<Shell>> shells;
        for (int i = 0; i < 40; ++i) {
            shells.push_back(Shell::create());
            Collector::run(m_collector, *shells.back(), lastingTool(folder, "fill 99999999999"));
            if (i >= 20) {
                shells.erase(shells.begin()); // some of them before their child has started
            }
        }
        QTRY_VERIFY(aliveIn(folder) >= 20);
        shells.clear();
        QTRY_COMPARE(aliveIn(folder), 0);
        QTRY_COMPARE(m_collector.use_count(), 1L);
        QCOMPARE(aliveIn(folder), 0);
        QCOMPARE(m_collector->endings(), QStringList(40));
    }

private:
    std::shared_ptr<Collector> m_collector;
};

QTEST_GUILESS_MAIN(TestStreaming)
#include "tst_streaming.moc"
