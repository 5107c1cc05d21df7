// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/content/PrimaryContentController.h"
#include "app/state/KubeSplitViewController.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/window/MainWindowController.h"
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ApplyFiles.h"
#include "resources/changes/DiffView.h"
#include "support/OpenQuestion.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QSignalSpy>
#include <QTest>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

/// What files declare is compared and applied with real clients on the demo cluster.
class TestApply : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { mainQueue(); }

    void whatKubectlDiffSays_data()
    {
        QTest::addColumn<ShellResult>("result");
        QTest::addColumn<qsizetype>("objects");
        QTest::addColumn<QString>("failure");
        const QByteArray two
            = "diff -u -N /tmp/a /tmp/b\n--- a\n+++ b\n@@ -1 +1 @@\n-diff x\n+diff y\ndiff -u c d";
        QTest::newRow("differences") << ShellResult{two, {}, 1} << qsizetype(2) << QString();
        QTest::newRow("with a warning")
            << ShellResult{two, u"Warning: old"_s, 1} << qsizetype(2) << QString();
        QTest::newRow("none") << ShellResult{{}, {}, 0} << qsizetype(0) << QString();
        QTest::newRow("a fault that ends with 1")
            << ShellResult{{}, u"error: no file"_s, 1} << qsizetype(0) << u"error: no file"_s;
        QTest::newRow("half a comparison") << ShellResult{two, u"lost"_s, 2} << qsizetype(0) << u"lost"_s;
        QTest::newRow("killed") << ShellResult{two, {}, {}, 9} << qsizetype(0)
                                << u"The command was ended by signal 9."_s;
        QTest::newRow("another program's words") << ShellResult{"hello", {}, 0} << qsizetype(0)
                                                 << u"kubectl diff printed what is no comparison."_s;
    }
    void whatKubectlDiffSays()
    {
        QFETCH(ShellResult, result);
        const FileComparison found = FileComparison::read(result);
        QTEST(found.objectCount(), "objects");
        QTEST(found.failure, "failure");
    }

    /// A removed line of YAML's "---" looks like the head of a file.
    void linesOfADiff()
    {
        bool isInHeader = false;
        QByteArray kinds;
        for (const auto *line : {u"diff -u a b", u"--- a", u"+++ b", u"@@ -1,2 +1,2 @@", u" same", u"--- x",
                 u"+++ y", u"", u"diff -u c d", u"new file", u"--- c"}) {
            kinds += "CHAR"[int(diffLine(QStringView(line), isInHeader))];
        }
        QCOMPARE(kinds, "HHHHCRACHHH");
    }

    void aLargeDiffIsCutAndSavedWhole()
    {
        QTemporaryDir folder;
        const QByteArray diff = "diff -u a b\n" + QByteArray("+\xC3\xA4line\n").repeated(200'000) + "+end";
        DiffView view(diff);
        const auto *text = view.findChild<QPlainTextEdit *>();
        const QByteArray shown = text->toPlainText().toUtf8();
        QVERIFY(diff.startsWith(shown) && shown.endsWith("line") && shown.size() > DiffView::shownAtMost - 20
            && shown.size() <= DiffView::shownAtMost);
        const auto *note = view.findChild<QLabel *>();
        view.saveTo(folder.filePath(u"none/x"_s));
        QTRY_VERIFY(note->text().contains(u"could not be saved: "_s));
        view.saveTo(folder.filePath(u"x"_s));
        QTRY_VERIFY(note->text().startsWith(u"Saved to "_s));
        QFile saved(folder.filePath(u"x"_s));
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(saved.readAll(), diff + '\n');
    }

    void comparedAskedApplied_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<QString>("refusal"); // this client asks the server more than the demo cluster tells
        QTest::newRow("today's") << qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL") << QString();
        QTest::newRow("1.20")
            << qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL_OLD")
            << u"||Nothing was applied: error: /v1, Kind=ConfigMap doesn't support dry-run"_s;
    }
    void comparedAskedApplied()
    {
        QFETCH(QString, client);
        QFETCH(QString, refusal);
        QTemporaryDir folder;
        UserDefaults settings(folder.filePath(u"settings.json"_s));
        setUserDefaultsForTesting(&settings);
        const auto restored = qScopeGuard([] { setUserDefaultsForTesting(nullptr); });
        applicationRecord() = {};
        setKubectlPath(client);
        qputenv("KUBECTL_EXTERNAL_DIFF", "echo diff nonsense");
        DemoProcess demo(QStringList(u"--still"_s), client);
        QVERIFY(demo.isReady());
        settings.set(u"defaultKubeConfigPath"_s, demo.kubeconfig());
        AppDelegate delegate;
        const auto ended = qScopeGuard([&delegate] { delegate.applicationWillTerminate(); });
        delegate.newDocument();
        MainWindowController &page = *delegate.mainWindow()->currentPage();
        RecordingConsole console;
        page.state().setConsole(&console);
        QTRY_VERIFY_WITH_TIMEOUT(page.state().namespaceList().enabled, 20'000);
        page.state().chooseNamespace(u"shop"_s);
        const auto declare = [&](const QByteArray &data) {
            return QStringList(demo.writeFile(u"tide, 1.yaml"_s,
                "apiVersion: v1\nkind: ConfigMap\nmetadata: {name: tide}\ndata: " + data + '\n'));
        };
        const auto stored = [&] {
            return demo
                .kubectl({u"--context=demo-harbor"_s, u"-nshop"_s, u"get"_s, u"configmap"_s, u"tide"_s,
                    u"-ojsonpath={.data.level}"_s})
                .output;
        };
        const auto apply = [&](const QByteArray &data) {
            console.entries.clear();
            page.primaryContentController().applyFrom(declare(data), ChangePlace(page.state()));
        };
        const auto asks = [&] { return OpenQuestion::over(*delegate.mainWindow()); };

        apply("{level: high}");
        if (!refusal.isEmpty()) {
            QTRY_VERIFY_WITH_TIMEOUT(console.entries.join(u'\n').contains(refusal), 20'000);
            QVERIFY(!asks());
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(asks(), 20'000);
        QVERIFY(asks().message().contains(u"\n+  level: high\n"_s)
            && asks().says(u"Context: demo-harbor\nNamespace: shop"_s));
        asks().press(u"Cancel"_s);
        QCOMPARE(stored(), QString());
        for (const QString &level : {u"high"_s, u"low"_s}) {
            apply("{level: " + level.toLatin1() + '}');
            QTRY_VERIFY_WITH_TIMEOUT(asks(), 20'000);
            asks().press(u"Apply"_s);
            QTRY_VERIFY_WITH_TIMEOUT(console.entries.join(u'\n').contains(u"|configmap/tide "_s), 20'000);
            QCOMPARE(stored(), level);
        }
        apply("{level: low}");
        QTRY_VERIFY_WITH_TIMEOUT(console.entries.join(u'\n').contains(
                                     u"|Nothing was applied: the cluster has all of it already|"_s),
            20'000);
        apply("[what");
        QTRY_VERIFY_WITH_TIMEOUT(
            console.entries.join(u'\n').contains(u"||Nothing was applied: error: "_s), 20'000);
        QVERIFY(!asks());
    }
};

QTEST_MAIN(TestApply)
#include "tst_apply.moc"
