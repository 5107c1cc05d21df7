// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/ChildProcess.h"
#include "platform/process/PipeReader.h"
#include "platform/process/ProcessSetup.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tidewright;
using namespace tidewright::test;

namespace {

struct Read
{
    PipeReader::End end;
    QByteArray output;
    QByteArray error;
};

/// The fake tool as a child, and its two pipes.
struct Child
{
    ChildProcess process;
    Pipe output = Pipe::make();
    Pipe error = Pipe::make();

    explicit Child(const QString &script)
    {
        process.setExecutable(fakeToolPath());
        process.setArguments(script.split(u' '));
    }
    std::optional<QString> start() { return process.start(output, error); }
    Read read(bool untilExit = false)
    {
        Read result;
        PipeReader reader(output.readEnd.get(), error.readEnd.get());
        result.end = reader.read(-1, untilExit ? process.exitDescriptor() : -1,
            [&](PipeReader::Stream stream, QByteArrayView piece) {
                (stream == PipeReader::Stream::Output ? result.output : result.error).append(piece);
                return true;
            });
        return result;
    }
};

} // namespace

class TestChildProcess : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        // What an application may have: descriptors from whoever started it, ignored and blocked signals.
        QVERIFY(::open("/dev/null", O_RDONLY) >= 0);
        settleSignals();
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGUSR1);
        pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    }

    void yields_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<qsizetype>("errorSize");
        QTest::addColumn<int>("signal");
        const auto row = [](const char *name, const char *script, const char *output, qsizetype errorSize,
                             int signal) {
            QTest::newRow(name) << QString::fromLatin1(script) << QByteArray(output) << errorSize << signal;
        };
        row("nothing", "exit 0", "", 0, 0);
        row("both streams", "out a err bc out d", "ad", 2, 0);
        row("errors flood while output waits", "errfill 3000000 out late", "late", 3'000'000, 0);
        row("exit status only", "out x exit 3", "x", 0, 0);
        row("killed", "out half die 9", "half", 0, SIGKILL);
        row("terminated", "die 15", "", 0, SIGTERM);
        QTest::newRow("bytes that are no text")
            << QStringLiteral("out \\xff\\x00\\xe2") << QByteArray("\xff\0\xe2", 3) << qsizetype(0) << 0;
        row("its own descriptors only", "descriptors", "0\n1\n2\n", 0, 0);
        // SIGTTIN and SIGTTOU alone are ignored: the terminal's job control never stops a child.
        row("fresh signals", "signals", "21\n22\n", 0, 0);
    }
    void yields()
    {
        QFETCH(QString, script);
        QFETCH(int, signal);
        Child child(script);
        QCOMPARE(child.start(), std::nullopt);
        auto reading = inBackground([&child] { return child.read(); });
        QVERIFY(arrives(reading));
        const Read read = reading.get();
        QCOMPARE(read.end, PipeReader::End::EndOfFile);
        QTEST(read.output, "output");
        QTEST(read.error.size(), "errorSize");
        QVERIFY(child.process.waitUntilExit(deadline));
        QVERIFY(!child.process.isRunning());
        QCOMPARE(child.process.terminationSignal().value_or(0), signal);
    }

    void endsAlsoWhereTheKernelReaps()
    {
        std::signal(SIGCHLD, SIG_IGN); // inherited, or set by a library
        const auto settle = qScopeGuard(settleSignals);
        Child reaped(QStringLiteral("exit 3"));
        QCOMPARE(reaped.start(), std::nullopt);
        QVERIFY(reaped.process.waitUntilExit(deadline));
        QCOMPARE(reaped.process.exitStatus(), std::nullopt);
        settleSignals();
        Child child(QStringLiteral("exit 3"));
        QCOMPARE(child.start(), std::nullopt);
        QVERIFY(child.process.waitUntilExit(deadline));
        QCOMPARE(child.process.exitStatus(), 3);
    }

    void niceness()
    {
        Child child(QStringLiteral("nice"));
        child.process.setNiceness(3);
        QCOMPARE(child.start(), std::nullopt);
        QCOMPARE(child.read().output.toInt(), std::min(19, getpriority(PRIO_PROCESS, 0) + 3));
    }

    void descriptorLimit()
    {
        rlimit before{};
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &before), 0);
        rlimit limit{200, before.rlim_max};
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &limit), 0);
        raiseDescriptorLimit();
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &limit), 0);
        QCOMPARE(limit.rlim_cur, before.rlim_max);
        Child child(QString{});
        child.process.setExecutable(QStringLiteral("/bin/sh"));
        child.process.setArguments({QStringLiteral("-c"), QStringLiteral("ulimit -n")});
        QCOMPARE(child.start(), std::nullopt);
        QCOMPARE(child.read().output, QByteArray("200\n"));
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &before), 0);
    }

    void failsToStart_data()
    {
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing") << QStringLiteral("/nowhere/tool") << QString()
                                 << QStringLiteral("/nowhere/tool: No such file or directory");
        QTest::newRow("not executable")
            << QStringLiteral("/etc/passwd") << QString() << QStringLiteral("/etc/passwd: Permission denied");
        QTest::newRow("NUL") << fakeToolPath() << QString(1, QChar(u'\0'))
                             << QStringLiteral("an argument holds a NUL character");
        QTest::newRow("too long") << fakeToolPath() << QString(200'000, u'x')
                                  << QStringLiteral("Argument list too long");
    }
    void failsToStart()
    {
        QFETCH(QString, executable);
        QFETCH(QString, argument);
        Child child{QString()};
        child.process.setExecutable(executable);
        child.process.setArguments({argument});
        QTEST(child.start().value_or(QString()), "reason");
        QVERIFY(!child.process.isRunning());
        QVERIFY(child.process.waitUntilExit());
        QCOMPARE(child.read().end, PipeReader::End::EndOfFile); // no write end stays behind
    }

    void withoutDescriptorsNothingHangs()
    {
        Child child(QStringLiteral("out x"));
        std::optional<QString> failure;
        {
            const NoDescriptorsLeft none;
            QVERIFY(!Pipe::make().readEnd.isOpen());
            failure = child.start();
        }
        QCOMPARE(failure, QStringLiteral("Too many open files"));
        QVERIFY(child.process.waitUntilExit(deadline));
        QVERIFY(!child.process.isRunning());
    }

    void closedOutputEndsTheReadingNotTheChild()
    {
        Child child(QStringLiteral("out x close-output hang"));
        QCOMPARE(child.start(), std::nullopt);
        auto reading = inBackground([&child] { return child.read(); });
        QVERIFY(arrives(reading));
        QCOMPARE(reading.get().output, QByteArray("x"));
        QVERIFY(child.process.isRunning());
        QVERIFY(!child.process.waitUntilExit(std::chrono::milliseconds(1)));
        child.process.terminate();
        QVERIFY(child.process.waitUntilExit(deadline));
        QCOMPARE(child.process.terminationSignal(), SIGTERM);
    }

    void grandchildKeepsThePipeOnlyForAReaderThatWaitsForIt()
    {
        QTemporaryDir folder;
        Child child(QStringLiteral("fill 60000 grandchild 3 pidfile %1 hang until %1/go").arg(folder.path()));
        QCOMPARE(child.start(), std::nullopt);
        QTRY_COMPARE(pidsIn(folder.path()).size(), 1);
        const qint64 grandchild = pidsIn(folder.path()).first();
        QVERIFY(QFile(folder.filePath(QStringLiteral("go"))).open(QIODevice::WriteOnly));
        QVERIFY(child.process.waitUntilExit(deadline)); // what it wrote still lies in the pipe
        auto reading = inBackground([&child] { return child.read(true); });
        QVERIFY(arrives(reading));
        const Read read = reading.get();
        QCOMPARE(read.end, PipeReader::End::ChildGone);
        QCOMPARE(read.output.size(), 60'000);
        QVERIFY(isAlive(grandchild));
        child.process.terminate();
        QTRY_VERIFY(!isAlive(grandchild));
    }

    void terminationEndsTheWholeGroup_data()
    {
        QTest::addColumn<QString>("script");
        QTest::newRow("deaf child") << QStringLiteral("ignore-term pidfile %1 hang");
        QTest::newRow("deaf grandchild") << QStringLiteral("grandchild 4 ignore-term pidfile %1 hang hang");
    }
    void terminationEndsTheWholeGroup()
    {
        QFETCH(QString, script);
        QTemporaryDir folder;
        Child child(script.arg(folder.path()));
        QCOMPARE(child.start(), std::nullopt);
        QTRY_COMPARE(pidsIn(folder.path()).size(), 1);
        const qint64 deaf = pidsIn(folder.path()).first();
        child.process.terminate();
        QTRY_VERIFY(!isAlive(deaf));
        QVERIFY(child.process.waitUntilExit(deadline));
    }

    void endAllLeavesNothing()
    {
        QTemporaryDir folder;
        {
            // Nobody holds the first one any more; the last one's child goes at once, its grandchild does
            // not.
            QCOMPARE(Child(QStringLiteral("pidfile %1 hang").arg(folder.path())).start(), std::nullopt);
            Child deaf(QStringLiteral("ignore-term pidfile %1 hang").arg(folder.path()));
            Child family(QStringLiteral("grandchild 4 ignore-term pidfile %1 hang hang").arg(folder.path()));
            QCOMPARE(deaf.start(), std::nullopt);
            QCOMPARE(family.start(), std::nullopt);
            QTRY_COMPARE(pidsIn(folder.path()).size(), 3);
            QElapsedTimer timer;
            timer.start();
            ProcessKeeper::instance().endAll(std::chrono::milliseconds(100));
            QVERIFY(timer.elapsed() >= 100);
            QVERIFY(timer.elapsed() < 20'000);
            for (const qint64 pid : pidsIn(folder.path())) {
                QTRY_VERIFY(!isAlive(pid));
            }
        }
        siginfo_t info{};
        QTRY_VERIFY(
            ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) < 0); // every child has been reaped
    }
};

QTEST_GUILESS_MAIN(TestChildProcess)
#include "tst_child_process.moc"
