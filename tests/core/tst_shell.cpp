// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/ApplicationRecord.h"
#include "core/running/ProgramFolders.h"
#include "platform/settings/UserDefaults.h"
#include "platform/threads/MainQueue.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

const auto stopped = u"The command was stopped before it had finished."_s;

} // namespace

class TestShell : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        mainQueue();
        const QString kubectl = m_folder.filePath(u"kubectl"_s);
        QVERIFY(QFile::link(fakeToolPath(), kubectl));
        setKubectlPath(kubectl);
        qputenv("FAKE_TOOL_GREETING", "hello");
    }
    void init()
    {
        m_console = std::make_unique<RecordingConsole>();
        setMainConsoleLookup([this] { return m_console.get(); });
    }
    void cleanup() { setMainConsoleLookup({}); }

    void run_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QString>("error"); // null: absent
        const auto row
            = [](const char *name, const char *script, const char *output, const char *error = nullptr) {
                  QTest::newRow(name) << fakeTool(script) << QByteArray(output) << QString::fromUtf8(error);
              };
        row("trimmed, tab kept", "out one\\ttwo\\n\\n", "one\ttwo");
        row("exit status only", "out data exit 7", "data");
        row("dies by a signal", "out data die 9", "data");
        row("errors not UTF-8", "out data err \\xff", "data");
        row("closes its output and lives on", "out data close-output hang", "data");
        row("waits for the grandchild's end of the pipe", "out soon grandchild 3 drained out late",
            "soonlate");
        row("arguments unchanged", "arguments a$HOME *  'b' kubectl",
            "\"a$HOME\"\n\"*\"\n\"\"\n\"'b'\"\n\"kubectl\"");
        QTest::newRow("a program whose path reads as a variable")
            << QStringList{oddPath(), u"out"_s, u"x"_s} << QByteArray("x") << QString();
        QTest::newRow("packaged kubectl")
            << QStringList{u"kubectl"_s, u"arguments"_s, u"get"_s} << QByteArray("\"get\"") << QString();
    }
    void run()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, error);
        const ShellResult result = runToEnd(Shell::create(), arguments);
        QTEST(result.output, "output");
        QCOMPARE(result.error.has_value(), !error.isNull());
        QCOMPARE(result.error.value_or(QString()), error);
    }

    void whatKubectlLeavesRunningIsLeftAlone()
    {
        const QTemporaryDir folder;
        const auto shell = Shell::create();
        const QStringList arguments{u"kubectl"_s, u"out"_s, u"in"_s, u"grandchild"_s, u"3"_s, u"pidfile"_s,
            folder.path(), u"hang"_s, u"err"_s, u"logged"_s};
        const ShellResult result = runToEnd(shell, arguments);
        QCOMPARE(result.output, "in");
        QCOMPARE(result.error, u"logged"_s);
        QTRY_COMPARE(pidsIn(folder.path()).size(), 1);
        const qint64 agent = pidsIn(folder.path()).first();
        const auto end = qScopeGuard([=] { ::kill(static_cast<pid_t>(agent), SIGKILL); });
        shell->process()->terminate();
        ProcessKeeper::instance().endAll(std::chrono::milliseconds(10));
        QVERIFY(isAlive(agent));
    }

    void addedFoldersComeLastInTheSearchPath_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("added");
        QTest::newRow("none") << u" \n:\n"_s << QByteArray();
        QTest::newRow("lines, and as in PATH")
            << u" /opt/a b \n/c//d/:/e\n"_s << QByteArray(":/opt/a b:/c/d:/e");
        QTest::newRow("at home") << u"~/sdk/bin"_s << ':' + QFile::encodeName(QDir::homePath()) + "/sdk/bin";
        QTest::newRow("relative ones depend on where a program runs") << u"bin\n.\n/c"_s << QByteArray(":/c");
    }
    void addedFoldersComeLastInTheSearchPath()
    {
        const QTemporaryDir folder;
        UserDefaults settings(folder.filePath(u"settings.json"_s));
        setUserDefaultsForTesting(&settings);
        const auto reset = qScopeGuard([] { setUserDefaultsForTesting(nullptr); });
        QFETCH(QString, typed);
        program_folders::setAdded(typed.split(u'\n'));
        QFETCH(QByteArray, added);
        QCOMPARE(runToEnd(Shell::create(), fakeTool("environment PATH")).output,
            "/bin:/usr/bin/:/usr/local/bin" + added);
    }

    void cannotStart()
    {
        const auto before = Shell::create();
        const NoDescriptorsLeft none;
        QCOMPARE(runToEnd(before, fakeTool("out x")).error, u"No process defined"_s);
        QCOMPARE(runToEnd(Shell::create(), fakeTool("out x")).error, u"No process defined"_s);
    }

    void logs_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("entry"); // after the command's own path
        const auto row = [](const char *name, const char *script, const char *entry) {
            QTest::newRow(name) << QByteArray(script) << QString::fromUtf8(entry);
        };
        row("tabs become spaces, ends stay", "out a\\tb\\n\\n", " out a\\tb\\n\\n|a  b\n\n|");
        row("tab in the command", "out a\tb", " out a  b|a  b|");
        row("error", "out x err why", " out x err why|x|why");
        row("output not UTF-8", "out \\xff", " out \\xff||");
    }
    void logs()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, entry);
        RecordingConsole given;
        std::promise<QThread *> thread;
        auto completed = thread.get_future();
        QStringList arguments = fakeTool(script);
        arguments.first() = u"kubectl"_s;
        const QStringList expected{u"kubectl"_s + entry};
        Shell::create()->runAsync(arguments, true, nullptr,
            [&](const ShellResult &) { thread.set_value(QThread::currentThread()); });
        QTRY_COMPARE(m_console->entries, expected);
        QVERIFY(arrives(completed));
        QVERIFY(completed.get() != this->thread());

        // A given console is preferred; without the flag nobody is told.
        Shell::create()->runAsync(arguments, true, &given, [](const ShellResult &) {});
        bool quiet = false;
        Shell::create()->runAsync(arguments, false, &given,
            [&](const ShellResult &) { mainQueue().post([&quiet] { quiet = true; }); });
        QTRY_COMPARE(given.entries, expected);
        QTRY_VERIFY(quiet);
        QCOMPARE(given.entries.size() + m_console->entries.size(), 2);
    }

    void anEntryDoesNotMoveToAnotherWindow_data()
    {
        QTest::addColumn<bool>("given");
        QTest::newRow("given console") << true;
        QTest::newRow("main window's console") << false;
    }
    void anEntryDoesNotMoveToAnotherWindow()
    {
        QFETCH(bool, given);
        QTemporaryDir folder;
        auto closing = std::make_unique<RecordingConsole>();
        RecordingConsole *current = closing.get();
        setMainConsoleLookup([&current] { return current; });
        bool done = false;
        const QByteArray script = "touch " + folder.filePath(u"started"_s).toUtf8() + " until "
            + folder.filePath(u"go"_s).toUtf8();
        Shell::create()->runAsync(fakeTool(script), true, given ? closing.get() : nullptr,
            [&](const ShellResult &) { mainQueue().post([&done] { done = true; }); });
        QTRY_VERIFY(QFile::exists(folder.filePath(u"started"_s)));
        current = m_console.get();
        closing.reset();
        QVERIFY(QFile(folder.filePath(u"go"_s)).open(QIODevice::WriteOnly));
        QTRY_VERIFY(done);
        QCOMPARE(m_console->entries, QStringList());
    }

    void cancelAnswersBeforeTheChildHasGone()
    {
        QTemporaryDir folder;
        const auto shell = Shell::create();
        const QByteArray script = "ignore-term out lost pidfile " + folder.path().toUtf8() + " hang";
        auto result = inBackground([=] { return shell->run(fakeTool(script), false); });
        QTRY_COMPARE(pidsIn(folder.path()).size(), 1);
        const qint64 pid = pidsIn(folder.path()).first();
        shell->cancel();
        QVERIFY(arrives(result));
        const ShellResult ended = result.get();
        QVERIFY(isAlive(pid));
        QCOMPARE(ended.output, QByteArray());
        QCOMPARE(ended.error, stopped);
        QTRY_VERIFY(!isAlive(pid));
    }

    void cancelledBeforeItsTurnStartsNothing()
    {
        QTemporaryDir folder;
        const auto shell = Shell::create();
        const QString trace = folder.filePath(u"trace"_s);
        shell->cancel();
        // The child would write at once and end by itself, whatever happens to its pipes.
        QCOMPARE(runToEnd(shell, {fakeToolPath(), u"touch"_s, trace}).error, stopped);
        QCOMPARE(shell->process(), nullptr);
        QVERIFY(!QFile::exists(trace));
    }

    void tooMuchOutputEndsTheRun()
    {
        QTemporaryDir folder;
        const auto shell = Shell::create();
        shell->outputLimit = 1 << 20;
        const QByteArray script = "pidfile " + folder.path().toUtf8() + " fill 900000 errfill 99999999999";
        const ShellResult result = runToEnd(shell, fakeTool(script));
        const QString said = result.error.value_or(QString());
        QVERIFY(said.startsWith(u"The command was ended: it printed more than 1 MiB.\n0123456789abcde\n"_s));
        QVERIFY(said.size() < 100'000);
        QCOMPARE(result.output, QByteArray());
        const QString flood
            = runToEnd(Shell::create(), fakeTool("errfill 9000000")).error.value_or(QString());
        QVERIFY(flood.startsWith(u"0123456789abcde\n"_s) && flood.size() < 1'100'000);
        QVERIFY(flood.endsWith(u"\n(7951424 more bytes of standard error were left out.)"_s));
        QTRY_VERIFY(!isAlive(pidsIn(folder.path()).first()));
    }

private:
    QString oddPath() const
    {
        const QString path = m_folder.filePath(u"a=b"_s);
        QFile::link(fakeToolPath(), path);
        return path;
    }

    QTemporaryDir m_folder;
    std::unique_ptr<RecordingConsole> m_console;
};

QTEST_GUILESS_MAIN(TestShell)
#include "tst_shell.moc"
