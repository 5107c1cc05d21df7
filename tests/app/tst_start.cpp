// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

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
            {u"XDG_CACHE_HOME"_s, u"XDG_CONFIG_HOME"_s, u"XDG_DATA_HOME"_s, u"KUBECONFIG"_s}) {
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
    package.write(u"libexec/tidewright/kubectl"_s,
        "#!/bin/sh\necho \"$KUBECONFIG\" > \"${0%/*}/seen\"\nexec sleep 1000\n",
        QFile::ReadOwner | QFile::ExeOwner);
    package.write(u"home/.config/com.brindle.Tidewright/settings.json"_s,
        R"({"defaultKubeConfigPath": "~/my config"})");
    package.program.start();
    const QString home = package.folder.filePath(u"home"_s);
    QFile seen(package.folder.filePath(u"libexec/tidewright/seen"_s));
    QTRY_VERIFY(seen.exists() && seen.size() > 0);
    QVERIFY(seen.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(seen.readAll()).trimmed(), home + u"/my config"_s);
    const QFileInfo cache(home + u"/.cache/com.brindle.Tidewright"_s);
    QCOMPARE(cache.permissions() & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QTRY_VERIFY(package.program.bytesAvailable() > 0);
    QCOMPARE(package.program.readAllStandardOutput(), "windoe did load\n"_ba);
    package.program.kill();
    QVERIFY(package.program.waitForFinished());
}

QTEST_GUILESS_MAIN(tst_start)
#include "tst_start.moc"
