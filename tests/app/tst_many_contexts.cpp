// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeCluster.h"
#include "app/AppDelegate.h"
#include "app/toolbar/ClusterToolBar.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/state/KubeSplitViewController.h"
#include "app/window/MainWindowController.h"
#include "app/toolbar/SearchableComboBox.h"
#include "core/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "support/Patience.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

/// Two windows, of which one has two tabs, on one kubeconfig of the demo cluster.
struct Windows
{
    Windows()
    {
        setUserDefaultsForTesting(&settings);
        qputenv("XDG_DATA_HOME", QFile::encodeName(folder.path()));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder.path()));
        applicationRecord() = {};
        setKubectlPath(qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"));
        settings.set(u"defaultKubeConfigPath"_s, demo.kubeconfig());
        UserKubeConfig::setPreference(UserKubeConfig::Follows::WindowInFront);
        delegate.newDocument();
        first = delegate.mainWindow();
    }
    ~Windows() { delegate.applicationWillTerminate(); }

    static void load(ClusterWindowFrame *frame, const QString &context, const QString &nameSpace)
    {
        KubeSplitViewController &state = frame->currentPage()->state();
        QTRY_VERIFY_WITH_TIMEOUT(state.namespaceList().enabled, 20'000);
        state.chooseContext(context);
        QTRY_VERIFY_WITH_TIMEOUT(state.namespaceList().enabled && state.currentContext() == context, 20'000);
        state.chooseNamespace(nameSpace);
        QTRY_COMPARE(frame->currentPage()->state().currentNamespace(), nameSpace);
    }

    /// What any kubectl of the user's would now act on.
    QString current() const
    {
        const Outcome context = demo.kubectl({u"config"_s, u"current-context"_s});
        const Outcome nameSpace
            = demo.kubectl({u"config"_s, u"view"_s, u"--minify"_s, u"-ojsonpath={..namespace}"_s});
        return context.output.trimmed() + u' ' + nameSpace.output.trimmed();
    }

    QTemporaryDir folder;
    UserDefaults settings{folder.filePath(u"settings.json"_s)};
    DemoProcess demo{{u"--still"_s}, qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL")};
    AppDelegate delegate;
    ClusterWindowFrame *first = nullptr;
};

} // namespace

class TestManyContexts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theKubeConfigFollowsTheWindowInFront()
    {
        Windows windows;
        QVERIFY(windows.demo.isReady());
        Windows::load(windows.first, u"demo-harbor"_s, u"default"_s);
        windows.delegate.newDocument();
        ClusterWindowFrame *second = windows.delegate.mainWindow();
        QVERIFY(second != windows.first);
        Windows::load(second, u"demo-lighthouse"_s, u"night-shift"_s);
        windows.first->activateWindow();
        windows.first->addTab();
        Windows::load(windows.first, u"demo-harbor"_s, u"kube-system"_s);
        const QString third = u"demo-harbor kube-system"_s;
        QTRY_COMPARE_WITH_TIMEOUT(windows.current(), third, 20'000);
        for (int round = 0; round < 2; ++round) {
            second->activateWindow();
            QTRY_COMPARE_WITH_TIMEOUT(windows.current(), u"demo-lighthouse night-shift"_s, 20'000);
            windows.first->activateWindow();
            QTRY_COMPARE_WITH_TIMEOUT(windows.current(), third, 20'000);
            windows.first->walkTabs(1);
            QTRY_COMPARE_WITH_TIMEOUT(windows.current(), u"demo-harbor default"_s, 20'000);
            windows.first->walkTabs(1);
            QTRY_COMPARE_WITH_TIMEOUT(windows.current(), third, 20'000);
        }
    }

    void longListsDoNotStopTheWindow()
    {
        constexpr int contexts = 500;
        constexpr int namespaces = 2000;
        FakeCluster cluster;
        QByteArray contextNames = "context-7\n";
        for (int number = 0; number < contexts; ++number) {
            contextNames += "context-" + QByteArray::number(number) + '\t';
        }
        QByteArray names;
        for (int number = 0; number < namespaces; ++number) {
            names += "team-" + QByteArray::number(number) + ' ';
        }
        cluster.answer(u"contexts"_s, contextNames);
        cluster.answer(u"namespaces"_s, names);
        cluster.settings.set(u"defaultKubeConfigPath"_s, cluster.kubeConfig());

        // The longest time in which the window answered nothing, once it is there.
        QElapsedTimer clock;
        qint64 longest = 0;
        QTimer beat;
        beat.setTimerType(Qt::PreciseTimer);
        connect(&beat, &QTimer::timeout, this, [&] { longest = std::max(longest, clock.restart()); });

        AppDelegate delegate;
        delegate.newDocument();
        ClusterWindowFrame *frame = delegate.mainWindow();
        QVERIFY(QTest::qWaitForWindowExposed(frame));
        clock.start();
        beat.start(1);
        KubeSplitViewController &state = frame->currentPage()->state();
        QTRY_COMPARE(state.currentNamespace(), u"team-0"_s);
        for (const auto &[list, typed, chosen] : {
                 std::tuple(frame->currentPage()->toolBar().contextPopupButton(), u"499"_s, u"context-499"_s),
                 std::tuple(
                     frame->currentPage()->toolBar().namespacesPopupButton(), u"1998"_s, u"team-1998"_s),
             }) {
            QTRY_VERIFY(list->isEnabled());
            list->showPopup();
            auto *search = list->findChild<QLineEdit *>();
            QTRY_VERIFY(search && search->isVisible());
            for (const QChar &key : typed) {
                QTest::keyClick(search, key.toLatin1());
            }
            QTest::keyClick(search, Qt::Key_Return);
            QTRY_COMPARE(list->currentText(), chosen);
            QTRY_VERIFY(state.namespaceList().enabled);
        }
        QCOMPARE(state.currentContext() + state.currentNamespace(), u"context-499team-1998"_s);
        beat.stop();
        qInfo("longest stall: %lld ms", longest);
        // A tenth of a second is felt. Sanitizers and busy machines get their share.
        QVERIFY2(longest < 400, qPrintable(QString::number(longest)));
        delegate.applicationWillTerminate();
    }
};

QTEST_MAIN(TestManyContexts)
#include "tst_many_contexts.moc"
