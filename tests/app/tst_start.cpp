// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// The program in a package of its own, with a home of its own.
struct Package
{
    Package()
    {
        QDir root(folder.path());
        root.mkpath(u"bin"_s);
        root.mkpath(u"libexec/tidewright"_s);
        root.mkpath(u"home"_s);
        program.setProgram(root.filePath(u"bin/tidewright"_s));
        QFile::copy(QStringLiteral(TIDEWRIGHT_PROGRAM), program.program());
        QFile::copy(
            QStringLiteral(TIDEWRIGHT_CHILD_GUARD), root.filePath(u"libexec/tidewright/child-guard"_s));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, root.filePath(u"home"_s));
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        for (const QString &name :
            {u"XDG_CACHE_HOME"_s, u"XDG_CONFIG_HOME"_s, u"XDG_DATA_HOME"_s, u"XDG_RUNTIME_DIR"_s,
                u"DBUS_SESSION_BUS_ADDRESS"_s, u"KUBECONFIG"_s, u"PYTHONHOME"_s, u"PYTHONPATH"_s}) {
            environment.remove(name);
        }
        for (const QString &name : environment.keys().filter(u"PYTHON"_s)) {
            environment.remove(name);
        }
        program.setProcessEnvironment(environment);
    }

    void write(const QString &path, const QByteArray &bytes, QFile::Permissions permissions = {})
    {
        QFile file(folder.filePath(path));
        QVERIFY(QDir(folder.path()).mkpath(QFileInfo(path).path()));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        QVERIFY(!permissions || file.setPermissions(permissions));
    }

    /// A kubectl that writes down its environment and never ends.
    void addHangingKubectl()
    {
        write(u"libexec/tidewright/kubectl"_s,
            "#!/bin/sh\nenv > \"${0%/*}/seen\"\necho $$ > \"${0%/*}/pid\"\nexec sleep 1000\n",
            QFile::ReadOwner | QFile::ExeOwner);
    }

    void setVariable(const QString &name, const QString &value)
    {
        QProcessEnvironment environment = program.processEnvironment();
        environment.insert(name, value);
        program.setProcessEnvironment(environment);
    }

    QByteArray read(const QString &path) const
    {
        QFile file(folder.filePath(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// What the program's kubectl saw.
    QStringList seen() const
    {
        return QString::fromUtf8(read(u"libexec/tidewright/seen"_s)).split(u'\n', Qt::SkipEmptyParts);
    }

    bool printsLine(const QByteArray &beginning) { return printsLine(program, output, beginning); }

    static bool printsLine(QProcess &process, QByteArray &read, const QByteArray &beginning)
    {
        read += process.readAllStandardOutput();
        return QByteArray('\n' + read).contains(QByteArray('\n' + beginning));
    }

    QProcessEnvironment withoutDisplay() const
    {
        QProcessEnvironment environment = program.processEnvironment();
        for (const QString &name : {u"QT_QPA_PLATFORM"_s, u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s}) {
            environment.remove(name);
        }
        return environment;
    }

    QTemporaryDir folder;
    QProcess program;
    QByteArray output;
};

/// A session bus of the test's own.
struct SessionBus
{
    SessionBus()
    {
        daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        QVERIFY(daemon.waitForStarted());
        while (!daemon.canReadLine()) {
            QVERIFY(daemon.waitForReadyRead());
        }
        address = QString::fromUtf8(daemon.readLine()).trimmed();
    }
    ~SessionBus()
    {
        daemon.kill();
        daemon.waitForFinished();
    }

    QProcess daemon;
    QString address;
};

} // namespace

class tst_start : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void withoutThePackagedKubectl_data();
    void withoutThePackagedKubectl();
    void withoutACacheDirectory();
    void withoutADisplay();
    void firstWindow();
    void packagedPython();
    void endsWhenAskedTo_data();
    void endsWhenAskedTo();
    void nobodyReads();
    void secondStart();
    void withASessionBusThatHangs();
};

void tst_start::withoutThePackagedKubectl_data()
{
    QTest::addColumn<bool>("present");
    QTest::addColumn<bool>("display");
    QTest::newRow("missing") << false << true;
    QTest::newRow("not executable") << true << true;
    QTest::newRow("without a display either") << false << false;
}

void tst_start::withoutThePackagedKubectl()
{
    QFETCH(bool, present);
    Package package;
    if (present) {
        package.write(u"libexec/tidewright/kubectl"_s, "#!/bin/sh\n", QFile::ReadOwner);
    }
    QFETCH(bool, display);
    if (!display) {
        package.program.setProcessEnvironment(package.withoutDisplay());
    }
    package.program.start();
    QVERIFY(package.program.waitForFinished());
    QCOMPARE(package.program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(package.program.exitCode(), 1);
    QVERIFY(
        package.program.readAllStandardError().contains("kubectl that belongs to its package is missing"));
    QCOMPARE(package.program.readAllStandardOutput(), QByteArray()); // no window was opened
}

void tst_start::withoutACacheDirectory()
{
    Package package;
    package.write(u"libexec/tidewright/kubectl"_s, "#!/bin/sh\n", QFile::ReadOwner | QFile::ExeOwner);
    package.write(u"home/.cache/com.brindle.Tidewright"_s, "in the way");
    package.program.start();
    QVERIFY(package.program.waitForFinished());
    QCOMPARE(package.program.exitCode(), 1);
    QVERIFY(package.program.readAllStandardError().contains("Unable to create cache directory: "));
}

void tst_start::withoutADisplay()
{
    Package package;
    package.write(u"libexec/tidewright/kubectl"_s, "#!/bin/sh\n", QFile::ReadOwner | QFile::ExeOwner);
    package.program.setProcessEnvironment(package.withoutDisplay());
    package.program.start();
    QVERIFY(package.program.waitForFinished());
    QCOMPARE(package.program.exitCode(), 1);
    QCOMPARE(package.program.readAllStandardError(), "Tidewright cannot start: there is no display.\n"_ba);
}

void tst_start::firstWindow()
{
    Package package;
    package.addHangingKubectl();
    package.write(u"home/.config/com.brindle.Tidewright/settings.json"_s,
        R"({"defaultKubeConfigPath": "~/my config"})");
    package.setVariable(u"LANG"_s, u"C"_s);
    package.program.start();
    const QString home = package.folder.filePath(u"home"_s);
    QTRY_VERIFY(package.seen().contains(u"KUBECONFIG="_s + home + u"/my config"_s));
    const QFileInfo cache(home + u"/.cache/com.brindle.Tidewright"_s);
    QCOMPARE(cache.permissions() & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    for (const QByteArray &line : {"windoe did load\n"_ba, "Python Version: 3."_ba, "Python Path: ['"_ba}) {
        QTRY_VERIFY2(package.printsLine(line), line.constData());
    }
    // The package has no Python of its own, and loading one changes nothing that children inherit.
    QVERIFY(package.seen().filter(u"PYTHON"_s).isEmpty());
    QVERIFY(package.seen().filter(u"LC_CTYPE"_s).isEmpty());
    package.program.kill();
    QVERIFY(package.program.waitForFinished());
}

void tst_start::packagedPython()
{
    Package package;
    package.addHangingKubectl();
    package.setVariable(u"PYTHONHOME"_s, u"/inherited"_s);
    package.write(u"share/tidewright/python" TIDEWRIGHT_PYTHON "/libpython" TIDEWRIGHT_PYTHON ".so"_s, "");
    package.program.start();
    QTRY_VERIFY(!package.read(u"libexec/tidewright/pid"_s).isEmpty());
    const QString home = package.folder.filePath(u"share/tidewright/python" TIDEWRIGHT_PYTHON ""_s);
    const QString zip = u"python" TIDEWRIGHT_PYTHON ""_s.remove(u'.');
    QStringList variables = package.seen().filter(u"PYTHON"_s);
    variables.sort();
    QCOMPARE(variables,
        QStringList({u"PYTHONHOME="_s + home,
            u"PYTHONPATH=%1/lib/%2.zip/%2:%1/lib/python%3:%1/lib/python%3/lib-dynload:%1/lib/site-packages"_s
                .arg(home, zip, u"" TIDEWRIGHT_PYTHON ""_s),
            u"PYTHON_LIBRARY=%1/libpython%2.so"_s.arg(home, u"" TIDEWRIGHT_PYTHON ""_s)}));
    // Without its modules that Python cannot work. The program can.
    QTRY_VERIFY(package.printsLine("Python could not be loaded: "));
    QCOMPARE(package.program.state(), QProcess::Running);
    package.program.kill();
    QVERIFY(package.program.waitForFinished());
}

void tst_start::endsWhenAskedTo_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void tst_start::endsWhenAskedTo()
{
    QFETCH(int, number);
    Package package;
    package.addHangingKubectl();
    package.program.start();
    QTRY_VERIFY(!package.read(u"libexec/tidewright/pid"_s).isEmpty());
    const pid_t kubectl = package.read(u"libexec/tidewright/pid"_s).trimmed().toInt();
    QCOMPARE(::kill(static_cast<pid_t>(package.program.processId()), number), 0);
    QVERIFY(package.program.waitForFinished());
    QCOMPARE(package.program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(package.program.exitCode(), 0);
    QVERIFY(package.read(u"home/.config/com.brindle.Tidewright/settings.json"_s).contains("TidewrightFrame"));
    QTRY_COMPARE(::kill(kubectl, 0), -1);
}

/// Whoever started the program has stopped reading what it prints.
void tst_start::nobodyReads()
{
    Package package;
    package.addHangingKubectl();
    const tidewright::Pipe pipe = tidewright::test::fullPipe();
    package.program.setChildProcessModifier([writer = pipe.writeEnd.get()] {
        ::dup2(writer, STDOUT_FILENO);
        ::dup2(writer, STDERR_FILENO);
    });
    package.program.start();
    QTRY_VERIFY(!package.read(u"libexec/tidewright/pid"_s).isEmpty()); // a window is there, and loads
    QCOMPARE(::kill(static_cast<pid_t>(package.program.processId()), SIGTERM), 0);
    QVERIFY(package.program.waitForFinished(15'000));
    QCOMPARE(package.program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(package.program.exitCode(), 0);
}

void tst_start::secondStart()
{
    SessionBus bus;
    Package package;
    package.addHangingKubectl();
    package.setVariable(u"DBUS_SESSION_BUS_ADDRESS"_s, bus.address);
    package.program.start();
    QTRY_VERIFY(package.printsLine("windoe did load\n"));
    QProcess second;
    second.setProgram(package.program.program());
    second.setProcessEnvironment(package.program.processEnvironment());
    second.start();
    QVERIFY(second.waitForFinished());
    QCOMPARE(second.exitCode(), 0);
    QCOMPARE(second.readAllStandardOutput(), QByteArray()); // it opened nothing of its own

    // A program that hangs must not keep the user from opening another.
    ::kill(static_cast<pid_t>(package.program.processId()), SIGSTOP);
    second.start();
    QByteArray output;
    QTRY_VERIFY_WITH_TIMEOUT(Package::printsLine(second, output, "windoe did load\n"), 15000);
    for (QProcess *process : {&second, &package.program}) {
        process->kill();
        QVERIFY(process->waitForFinished());
    }
}

void tst_start::withASessionBusThatHangs()
{
    Package package;
    package.addHangingKubectl();
    QLocalServer bus; // takes connections and never says a word
    QVERIFY(bus.listen(package.folder.filePath(u"bus"_s)));
    package.setVariable(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path="_s + bus.fullServerName());
    package.program.start();
    QTRY_VERIFY_WITH_TIMEOUT(package.printsLine("windoe did load\n"), 15000);
    QVERIFY(bus.hasPendingConnections());
    package.program.kill();
    QVERIFY(package.program.waitForFinished());
}

QTEST_GUILESS_MAIN(tst_start)
#include "tst_start.moc"
