// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/stat.h>
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
    void obstacles_data();
    void obstacles();
    void firstWindow();
    void packagedPython();
    void endsWhenAskedTo_data();
    void endsWhenAskedTo();
    void nobodyReads();
    void secondStart_data();
    void secondStart();
    void lookingChangesNoKubeConfig();
    void garbageFromTheBus();
    void withASessionBusThatHangs();
};

void tst_start::obstacles_data()
{
    QTest::addColumn<QFile::Permissions>("kubectl"); // none: it is not there
    QTest::addColumn<bool>("display");
    QTest::addColumn<QByteArray>("message");
    const QFile::Permissions usable = QFile::ReadOwner | QFile::ExeOwner;
    const QByteArray noKubectl = "kubectl that belongs to its package is missing";
    QTest::newRow("no kubectl") << QFile::Permissions() << true << noKubectl;
    QTest::newRow("a kubectl not executable") << QFile::Permissions(QFile::ReadOwner) << true << noKubectl;
    QTest::newRow("no kubectl, no display") << QFile::Permissions() << false << noKubectl;
    QTest::newRow("no cache directory") << usable << true << "Unable to create cache directory: "_ba;
    QTest::newRow("no display") << usable << false << "Tidewright cannot start: there is no display."_ba;
}

void tst_start::obstacles()
{
    QFETCH(QFile::Permissions, kubectl);
    QFETCH(bool, display);
    QFETCH(QByteArray, message);
    Package package;
    if (kubectl) {
        package.write(u"libexec/tidewright/kubectl"_s, "#!/bin/sh\n", kubectl);
    }
    if (message.contains("cache directory")) {
        package.write(u"home/.cache/com.brindle.Tidewright"_s, "in the way");
    }
    if (!display) {
        package.program.setProcessEnvironment(package.withoutDisplay());
    }
    package.program.start();
    QVERIFY(package.program.waitForFinished());
    QCOMPARE(package.program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(package.program.exitCode(), 1);
    const QByteArray said = package.program.readAllStandardError();
    QVERIFY2(said.contains(message), said.constData());
    QCOMPARE(package.program.readAllStandardOutput(), QByteArray()); // no window was opened
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

void tst_start::secondStart_data()
{
    QTest::addColumn<QString>("outcome"); // a window on that kubeconfig; "forward"; "apart": its own program
    QTest::addColumn<QString>("shell"); // makes the second start what it is; both are in FOLDER
    QTest::addColumn<QString>("inherited"); // KUBECONFIG of the first, and of the second unless it sets one
    QTest::addColumn<QString>("setting"); // the kubeconfig of the settings
    const auto row = [](const char *name, const QString &outcome, const QString &shell = {},
                         const QString &inherited = {}, const QString &setting = {}) {
        QTest::newRow(name) << outcome << shell << inherited << setting;
    };
    row("the same", u"forward"_s);
    row("the usual file by name", u"forward"_s, u"export KUBECONFIG=$HOME/.kube/config"_s);
    row("the same, relative", u"forward"_s, u"export KUBECONFIG=./prod:"_s, u"FOLDER/prod"_s);
    row("outweighed by the settings", u"forward"_s, {}, u"prod"_s, u"/chosen"_s);
    row("another", u"/staging"_s, u"export KUBECONFIG=/staging"_s);
    row("another than the settings'", u"/staging"_s, u"export KUBECONFIG=/staging"_s, u"prod"_s,
        u"/chosen"_s);
    row("a list", u"FOLDER/a:FOLDER/./b/../c:/d"_s, u"export KUBECONFIG=:a:./b/../c:/d"_s, u"prod"_s);
    row("none any more", u"FOLDER/home/.kube/config"_s, u"export KUBECONFIG="_s, u"prod"_s);
    row("not UTF-8", u"apart"_s, u"export KUBECONFIG=$(printf '/\\377')"_s);
    row("other settings", u"apart"_s, u"export XDG_CONFIG_HOME=$PWD/other KUBECONFIG=/demo"_s);
    row("another display", u"apart"_s, u"export DISPLAY=:77"_s);
    row("another Wayland display", u"apart"_s, u"export WAYLAND_DISPLAY=wayland-77"_s);
    row("another build", u"apart"_s, u"cp $0 $0.new; mv $0.new $0"_s);
    row("the first hangs", u"apart"_s, u"kill -STOP $FIRST"_s);
}

void tst_start::secondStart()
{
    QFETCH(QString, outcome);
    QFETCH(QString, shell);
    QFETCH(QString, inherited);
    QFETCH(QString, setting);
    SessionBus bus;
    Package package;
    package.addHangingKubectl();
    const QString folder = package.folder.path();
    if (!setting.isEmpty()) {
        package.write(u"home/.config/com.brindle.Tidewright/settings.json"_s,
            R"({"defaultKubeConfigPath": ")" + setting.toUtf8() + R"("})");
    }
    package.setVariable(u"DBUS_SESSION_BUS_ADDRESS"_s, bus.address);
    package.setVariable(u"KUBECONFIG"_s, inherited.replace(u"FOLDER"_s, folder));
    package.program.setWorkingDirectory(folder);
    package.program.start();
    QTRY_VERIFY(!package.read(u"libexec/tidewright/pid"_s).isEmpty());
    const auto first = static_cast<pid_t>(package.program.processId());
    package.setVariable(u"FIRST"_s, QString::number(first));
    const bool apart = outcome == u"apart";
    const bool opens = !apart && outcome != u"forward";
    for (int time = 0; time < 2; ++time) { // once more changes nothing
        QProcess second;
        second.setProcessEnvironment(package.program.processEnvironment());
        second.setWorkingDirectory(folder);
        second.start(u"/bin/sh"_s, {u"-c"_s, shell + u"\nexec \"$0\""_s, package.program.program()});
        QByteArray output;
        QTRY_VERIFY(
            second.state() == QProcess::NotRunning || Package::printsLine(second, output, "windoe did load"));
        QCOMPARE(second.state() == QProcess::Running, apart);
        second.kill();
        second.waitForFinished();
        QVERIFY(apart || (second.exitStatus() == QProcess::NormalExit && second.exitCode() == 0));
    }
    if (opens) {
        QTRY_VERIFY(package.seen().contains(u"KUBECONFIG="_s + outcome.replace(u"FOLDER"_s, folder)));
    }
    ::kill(first, SIGCONT);
    ::kill(first, SIGTERM);
    QVERIFY(package.program.waitForFinished());
    QCOMPARE(package.program.readAllStandardOutput().count("windoe did load"), opens ? 2 : 1);
}

/// Opening, loading every kind, previewing by the keyboard and quitting.
void tst_start::lookingChangesNoKubeConfig()
{
    const QByteArray text = "apiVersion: v1\nkind: Config\ncurrent-context: alpha\n"
                            "clusters: [{name: alpha, cluster: {server: 'https://alpha.invalid'}}]\n"
                            "contexts: [{name: alpha, context: {cluster: alpha, user: me, namespace: one}}]\n"
                            "users: [{name: me, user: {token: t}}]\n";
    Package package;
    const QString kubectl = u"libexec/tidewright/"_s;
    const QString folder = package.folder.filePath(u"kube"_s);
    const QString config = folder + u"/config"_s;
    const QString keyboard = package.folder.filePath(u"keyboard"_s);
    QVERIFY(QFile::copy(QStringLiteral(RECORDING_KUBECTL), package.folder.filePath(kubectl + u"kubectl"_s)));
    QVERIFY(QFile::link(
        qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"), package.folder.filePath(kubectl + u"real"_s)));
    package.write(u"kube/config"_s, text);
    package.write(u"home/.config/com.brindle.Tidewright/settings.json"_s, R"({"liveUpdates": "off"})");
    QFile file(config);
    const QDateTime written = QDateTime::currentDateTime().addDays(-1);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(written, QFile::FileModificationTime));
    file.close();
    const QDateTime before = QFileInfo(config).lastModified();
    QCOMPARE(::mkfifo(QFile::encodeName(keyboard).constData(), 0600), 0);
    const tidewright::FileDescriptor keys(
        ::open(QFile::encodeName(keyboard).constData(), O_RDWR | O_CLOEXEC));
    const auto press = [&keys](std::uint16_t code) {
        const input_event events[]{{{}, EV_KEY, code, 1}, {{}, EV_KEY, code, 0}};
        return ::write(keys.get(), events, sizeof(events)) == static_cast<ssize_t>(sizeof(events));
    };
    package.setVariable(u"QT_QPA_GENERIC_PLUGINS"_s, u"evdevkeyboard:/dev/.."_s + keyboard);
    package.setVariable(u"KUBECONFIG"_s, config);
    package.program.start();
    const auto read = [&package, &kubectl](const QString &name) {
        return QString::fromUtf8(package.read(kubectl + name)).split(u'\n', Qt::SkipEmptyParts);
    };
    const auto kinds = [&read] {
        QStringList names = read(u"reads"_s);
        names.removeDuplicates();
        return names.size();
    };
    QTRY_COMPARE(kinds(), 15); // every kind, and the namespaces
    QTRY_VERIFY(press(KEY_DOWN) && press(KEY_SPACE) && !read(u"runs"_s).isEmpty());
    QCOMPARE(read(u"runs"_s).first(), u"get -n one po web-1 -o yaml\talpha one https://alpha.invalid"_s);
    package.program.terminate();
    QVERIFY(package.program.waitForFinished());
    QCOMPARE(package.program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(package.read(u"kube/config"_s), text);
    QCOMPARE(QFileInfo(config).lastModified(), before);
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{u"config"_s});
}

/// A launcher's call is taken, whatever it adds. What no start says is refused, and the program goes on.
void tst_start::garbageFromTheBus()
{
    SessionBus bus;
    Package package;
    package.addHangingKubectl();
    package.setVariable(u"DBUS_SESSION_BUS_ADDRESS"_s, bus.address);
    package.program.start();
    QTRY_VERIFY(package.printsLine("windoe did load\n"));
    QDBusConnection connection = QDBusConnection::connectToBus(bus.address, u"launcher"_s);
    const auto activate = [&](const QVariant &argument) {
        QDBusMessage call = QDBusMessage::createMethodCall(u"com.brindle.Tidewright"_s,
            u"/com/brindle/Tidewright"_s, u"org.freedesktop.Application"_s, u"Activate"_s);
        return connection.call(call << argument).errorName();
    };
    const auto key = u"tidewright-kubeconfig"_s;
    const QString endless(200'000, u'/');
    for (const QVariant &bad : {QVariant(1), QVariant("/a"_ba), QVariant(QStringList{u"/a"_s}),
             QVariant(QVariantMap{{key, 1}}), QVariant(u"/a:b"_s), QVariant(endless)}) {
        QCOMPARE(activate(QVariantMap{{key, bad}}), u"org.freedesktop.DBus.Error.InvalidArgs"_s);
    }
    QCOMPARE(activate(u"/a"_s), u"org.freedesktop.DBus.Error.UnknownMethod"_s);
    QCOMPARE(activate(QVariantMap{{u"activation-token"_s, endless}}), QString());
    QCOMPARE(activate(QVariantMap()), QString());
    package.program.terminate();
    QVERIFY(package.program.waitForFinished());
    QCOMPARE(package.program.exitCode(), 0);
    QVERIFY(!package.program.readAllStandardOutput().contains("windoe did load"));
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
