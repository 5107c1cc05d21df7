// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FakeCluster.h"
#include "app/AppDelegate.h"
#include "app/content/PrimaryContentController.h"
#include "app/state/KubeSplitViewController.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/window/MainWindowController.h"
#include "pods/console/ConsoleTextView.h"
#include "pods/console/ConsoleViewController.h"
#include "pods/table/PodController.h"
#include "resources/table/ResourceTableView.h"
#include "support/OpenQuestion.h"
#include "support/Patience.h"

#include <QAction>
#include <QLabel>
#include <QTest>

/// The application on a fake cluster with three pods and two deployments; `open` gives it a window.
struct App
{
    App()
    {
        using namespace Qt::StringLiterals;
        cluster.answer(u"get po"_s,
            "web-1\ttrue\tRunning\t0\t\t2020-01-01T00:00:00Z\tapp side\n"
            "db-1\ttrue\tRunning\t0\t\t2020-01-01T00:00:00Z\tapp\n"
            "web-2\ttrue\tRunning\t0\t\t2020-01-01T00:00:00Z\tapp\n");
        cluster.answer(u"get deploy"_s, "alpha\t1\t1\t1\t1\tT\nbeta\t1\t1\t1\t1\tT\n");
        cluster.settings.set(u"defaultKubeConfigPath"_s, cluster.kubeConfig());
    }
    ~App() { delegate.applicationWillTerminate(); }

    /// Opens a window and waits until all tables have been loaded that are without being seen.
    void open()
    {
        delegate.newDocument();
        frame = delegate.mainWindow();
        QVERIFY(QTest::qWaitForWindowActive(frame));
        for (const tidewright::SharedContentViewController *each : content().tables()) {
            QTRY_VERIFY(
                !content().isLoadedUnseen(*each) || (each->rowsAsOf().isValid() && !each->isLoading()));
        }
    }
    tidewright::MainWindowController &page() const { return *frame->currentPage(); }
    tidewright::KubeSplitViewController &state() const { return page().state(); }
    tidewright::PrimaryContentController &content() const { return page().primaryContentController(); }
    tidewright::SharedContentViewController &table() const { return *content().shownTable(); }
    tidewright::PodController &pods() const
    {
        return *qobject_cast<tidewright::PodController *>(
            content().tableControllerForScope(QStringLiteral("pod")));
    }
    QString console() const { return page().windowConsoleController().consoleTextView()->toPlainText(); }
    /// The command of that title in the menus.
    QAction &command(const QString &title) const
    {
        for (QAction *action : frame->findChildren<QAction *>()) {
            if (action->text().remove(u'&') == title) {
                return *action;
            }
        }
        qFatal("no command %s", qPrintable(title));
    }

    tidewright::test::OpenQuestion question() const { return tidewright::test::OpenQuestion::over(*frame); }
    void answer(const QString &title) const
    {
        question().press(title);
        QTRY_VERIFY(!question());
    }
    /// Whether the question has a label that begins so, which says what and where.
    bool asks(const QString &text) const { return question().says(text); }

    FakeCluster cluster;
    tidewright::AppDelegate delegate;
    tidewright::ClusterWindowFrame *frame = nullptr;
};
