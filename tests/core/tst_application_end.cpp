// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

class TestApplicationEnd : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void leavesNoChild_data()
    {
        QTest::addColumn<int>("signal");
        QTest::addColumn<QString>("kinds");
        const QString kinds = u"rsdbb"_s;
        QTest::newRow("quit") << 0 << kinds;
        QTest::newRow("quit with hundreds") << 0 << QString(200, u'r');
        QTest::newRow("killed hard") << SIGKILL << kinds;
        QTest::newRow("terminated") << SIGTERM << kinds;
        QTest::newRow("aborted") << SIGABRT << kinds;
    }
    void leavesNoChild()
    {
        QFETCH(int, signal);
        QFETCH(QString, kinds);
        const QTemporaryDir folder;
        const QTemporaryDir survivors;
        QProcess application;
        application.start(QStringLiteral(SHELL_HOLDER_PATH),
            {fakeToolPath(), folder.path(), kinds + u'k', survivors.path()});
        QVERIFY(application.waitForStarted());
        QTRY_COMPARE(pidsIn(survivors.path()).size(), 1);
        const qint64 survivor = pidsIn(survivors.path()).first();
        const auto end = qScopeGuard([=] { ::kill(static_cast<pid_t>(survivor), SIGKILL); });
        QTRY_COMPARE(pidsIn(folder.path()).size(), kinds.size());
        const QList<qint64> children = pidsIn(folder.path());
        QVERIFY(std::all_of(children.cbegin(), children.cend(), isAlive));
        if (signal == 0) {
            application.closeWriteChannel();
        } else {
            ::kill(static_cast<pid_t>(application.processId()), signal);
        }
        QVERIFY(application.waitForFinished(20'000));
        QCOMPARE(application.exitStatus(), signal == 0 ? QProcess::NormalExit : QProcess::CrashExit);
        for (const qint64 child : children) {
            QTRY_VERIFY(!isAlive(child));
        }
        QVERIFY(isAlive(survivor));
    }
};

QTEST_GUILESS_MAIN(TestApplicationEnd)
#include "tst_application_end.moc"
