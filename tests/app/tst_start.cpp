// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Patience.h"
#include "support/SessionBus.h"
#include "support/Table.h"
#include "support/TestFolder.h"
#include "support/TestSupport.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QLocalServer>
#include <QRegularExpression>

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// The program in a package of its own, with a home of its own.
struct Package : TestFolder
{
    Package()
    {
        for (const QString &folder : {u"bin"_s, u"libexec/tidewright"_s, u"home"_s}) {
            QDir().mkpath(path(folder));
        }
        program.setProgram(path(u"bin/tidewright"_s));
        QFile::copy(QStringLiteral(TIDEWRIGHT_PROGRAM), program.program());
        QFile::copy(QStringLiteral(TIDEWRIGHT_CHILD_GUARD), path(u"libexec/tidewright/child-guard"_s));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, path(u"home"_s));
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        static const QRegularExpression ofTheUser(u"^(XDG_|PYTHON|KUBECONFIG|DBUS_)"_s);
        for (const QString &name : environment.keys().filter(ofTheUser)) {
            environment.remove(name);
        }
        program.setProcessEnvironment(environment);
    }

    /// Starts the program with a kubectl that writes down its environment and never ends. When that has
    /// begun, a window is there, and loads.
    void startHanging()
    {
        write(u"libexec/tidewright/kubectl"_s,
            "#!/bin/sh\nenv > \"${0%/*}/seen\"\necho $$ > \"${0%/*}/pid\"\nexec sleep 1000\n");
        program.start();
        QTRY_VERIFY(!read(u"libexec/tidewright/pid"_s).isEmpty());
    }
    /// Asks the program to end; it does so in order.
    void end(int signal = SIGTERM)
    {
        QCOMPARE(::kill(static_cast<pid_t>(program.processId()), signal), 0);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    ~Package()
    {
        program.kill();
        program.waitForFinished();
    }

    void setVariable(const QString &name, const QString &value)
    {
        QProcessEnvironment environment = program.processEnvironment();
        environment.insert(name, value);
        program.setProcessEnvironment(environment);
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

    void removeDisplay()
    {
        QProcessEnvironment environment = program.processEnvironment();
        for (const QString &name : {u"QT_QPA_PLATFORM"_s, u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s}) {
            environment.remove(name);
        }
        program.setProcessEnvironment(environment);
    }

    QProcess program;
    QByteArray output;
};

} // namespace

class tst_start : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void obstacles_data()
    {
        // kubectl (none: it is not there), display, message
        const Table<QFile::Permissions, bool, QByteArray> table;
        const QFile::Permissions usable = QFile::ReadOwner | QFile::ExeOwner;
        const QByteArray noKubectl = "kubectl that belongs to its package is missing";
        table.row("no kubectl", QFile::Permissions(), true, noKubectl);
        table.row("a kubectl not executable", QFile::Permissions(QFile::ReadOwner), true, noKubectl);
        table.row("no kubectl, no display", QFile::Permissions(), false, noKubectl);
        table.row("no cache directory", usable, true, "Unable to create cache directory: "_ba);
        table.row("no display", usable, false, "Tidewright cannot start: there is no display."_ba);
    }

    void obstacles()
    {
        const auto [kubectl, display, message] = Table<QFile::Permissions, bool, QByteArray>::current();
        Package package;
        if (kubectl) {
            package.write(u"libexec/tidewright/kubectl"_s, "#!/bin/sh\n");
            QFile::setPermissions(package.path(u"libexec/tidewright/kubectl"_s), kubectl);
        }
        if (message.contains("cache directory")) {
            package.write(u"home/.cache/com.brindle.Tidewright"_s, "in the way");
        }
        if (!display) {
            package.removeDisplay();
        }
        package.program.start();
        QVERIFY(package.program.waitForFinished());
        QCOMPARE(package.program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(package.program.exitCode(), 1);
        const QByteArray said = package.program.readAllStandardError();
        QVERIFY2(said.contains(message), said.constData());
        QCOMPARE(package.program.readAllStandardOutput(), QByteArray()); // no window was opened
    }

    void firstWindow_data()
    {
        QTest::addColumn<bool>("alone");
        QTest::newRow("alone") << true;
        QTest::newRow("beside another program of the same user") << false;
    }

    void firstWindow()
    {
        QFETCH(bool, alone);
        Package package;
        const QString left = u"home/.cache/com.brindle.Tidewright/ns-secret.yaml"_s; // by one that was killed
        package.write(left, "password");
        const tidewright::FileDescriptor other(
            ::open(QFile::encodeName(QFileInfo(package.path(left)).path()).constData(), O_RDONLY));
        QCOMPARE(::flock(other.get(), alone ? LOCK_UN : LOCK_SH), 0);
        package.write(u"home/.config/com.brindle.Tidewright/settings.json"_s,
            R"({"defaultKubeConfigPath": "~/my config"})");
        package.setVariable(u"LANG"_s, u"C"_s);
        package.startHanging();
        QCOMPARE(QFile::exists(package.path(left)), !alone);
        const QString home = package.path(u"home"_s);
        QVERIFY(package.seen().contains(u"KUBECONFIG="_s + home + u"/my config"_s));
        const QFileInfo cache(home + u"/.cache/com.brindle.Tidewright"_s);
        QCOMPARE(cache.permissions() & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
            QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        for (const QByteArray &line :
            {"windoe did load\n"_ba, "Python Version: 3."_ba, "Python Path: ['"_ba}) {
            QTRY_VERIFY2(package.printsLine(line), line.constData());
        }
        // The package has no Python of its own, and loading one changes nothing that children inherit.
        QVERIFY(package.seen().filter(u"PYTHON"_s).isEmpty());
        QVERIFY(package.seen().filter(u"LC_CTYPE"_s).isEmpty());
    }

    void packagedPython()
    {
        Package package;
        package.setVariable(u"PYTHONHOME"_s, u"/inherited"_s);
        package.write(
            u"share/tidewright/python" TIDEWRIGHT_PYTHON "/libpython" TIDEWRIGHT_PYTHON ".so"_s, "");
        package.startHanging();
        const QString home = package.path(u"share/tidewright/python" TIDEWRIGHT_PYTHON ""_s);
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
    }

    void endsWhenAskedTo_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void endsWhenAskedTo()
    {
        QFETCH(int, number);
        Package package;
        package.startHanging();
        const pid_t kubectl = package.read(u"libexec/tidewright/pid"_s).trimmed().toInt();
        package.end(number);
        QVERIFY(
            package.read(u"home/.config/com.brindle.Tidewright/settings.json"_s).contains("TidewrightFrame"));
        QTRY_COMPARE(::kill(kubectl, 0), -1);
    }

    /// Whoever started the program has stopped reading what it prints.
    void nobodyReads()
    {
        Package package;
        const tidewright::Pipe pipe = tidewright::test::fullPipe();
        package.program.setChildProcessModifier([writer = pipe.writeEnd.get()] {
            ::dup2(writer, STDOUT_FILENO);
            ::dup2(writer, STDERR_FILENO);
        });
        package.startHanging();
        package.end();
    }

    void secondStart_data()
    {
        // outcome (a window on that kubeconfig; "forward"; "apart": its own program), shell (makes the second
        // start what it is; both are in FOLDER), KUBECONFIG of the first and, unless it sets one, of the
        // second, kubeconfig of the settings
        const Table<QString, QString, QString, QString> table;
        table.row("the same", u"forward"_s);
        table.row("the usual file by name", u"forward"_s, u"export KUBECONFIG=$HOME/.kube/config"_s);
        table.row("the same, relative", u"forward"_s, u"export KUBECONFIG=./prod:"_s, u"FOLDER/prod"_s);
        table.row("outweighed by the settings", u"forward"_s, "", u"prod"_s, u"/chosen"_s);
        table.row("another", u"/staging"_s, u"export KUBECONFIG=/staging"_s);
        table.row("another than the settings'", u"/staging"_s, u"export KUBECONFIG=/staging"_s, u"prod"_s,
            u"/chosen"_s);
        table.row(
            "a list", u"FOLDER/a:FOLDER/./b/../c:/d"_s, u"export KUBECONFIG=:a:./b/../c:/d"_s, u"prod"_s);
        table.row("none any more", u"FOLDER/home/.kube/config"_s, u"export KUBECONFIG="_s, u"prod"_s);
        table.row("not UTF-8", u"apart"_s, u"export KUBECONFIG=$(printf '/\\377')"_s);
        table.row("other settings", u"apart"_s, u"export XDG_CONFIG_HOME=$PWD/other KUBECONFIG=/demo"_s);
        table.row("another display", u"apart"_s, u"export DISPLAY=:77"_s);
        table.row("another Wayland display", u"apart"_s, u"export WAYLAND_DISPLAY=wayland-77"_s);
        table.row("another build", u"apart"_s, u"cp $0 $0.new; mv $0.new $0"_s);
        table.row("the first hangs", u"apart"_s, u"kill -STOP $FIRST"_s);
    }

    void secondStart()
    {
        auto [outcome, shell, inherited, setting] = Table<QString, QString, QString, QString>::current();
        SessionBus bus;
        Package package;
        const QString folder = package.path();
        if (!setting.isEmpty()) {
            package.write(u"home/.config/com.brindle.Tidewright/settings.json"_s,
                R"({"defaultKubeConfigPath": ")" + setting.toUtf8() + R"("})");
        }
        package.setVariable(u"DBUS_SESSION_BUS_ADDRESS"_s, bus.address);
        package.setVariable(u"KUBECONFIG"_s, inherited.replace(u"FOLDER"_s, folder));
        package.program.setWorkingDirectory(folder);
        package.startHanging();
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
            QTRY_VERIFY(second.state() == QProcess::NotRunning
                || Package::printsLine(second, output, "windoe did load"));
            QCOMPARE(second.state() == QProcess::Running, apart);
            second.kill();
            second.waitForFinished();
            QVERIFY(apart || (second.exitStatus() == QProcess::NormalExit && second.exitCode() == 0));
        }
        if (opens) {
            QTRY_VERIFY(package.seen().contains(u"KUBECONFIG="_s + outcome.replace(u"FOLDER"_s, folder)));
        }
        ::kill(first, SIGCONT);
        package.end();
        QCOMPARE(package.program.readAllStandardOutput().count("windoe did load"), opens ? 2 : 1);
    }

    /// A launcher's call is taken, whatever it adds. What no start says is refused, and the program goes on.
    void garbageFromTheBus()
    {
        SessionBus bus;
        Package package;
        package.setVariable(u"DBUS_SESSION_BUS_ADDRESS"_s, bus.address);
        package.startHanging();
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
        package.end();
        QVERIFY(!package.program.readAllStandardOutput().contains("windoe did load"));
    }

    void withASessionBusThatHangs()
    {
        Package package;
        QLocalServer bus; // takes connections and never says a word
        QVERIFY(bus.listen(package.path(u"bus"_s)));
        package.setVariable(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path="_s + bus.fullServerName());
        package.startHanging();
        QVERIFY(bus.hasPendingConnections());
    }
};

QTEST_GUILESS_MAIN(tst_start)
#include "tst_start.moc"
