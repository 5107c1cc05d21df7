// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop.h"
#include "FakeCluster.h"
#include "app/content/KindTabs.h"

struct ClusterForApp
{
    FakeCluster cluster;
};

/// The application on a fake cluster with three pods and two deployments; `open` gives it a window.
struct App : ClusterForApp, Desktop
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

    /// Opens a window and waits until all tables have been loaded that are without being seen.
    void open()
    {
        openWindow();
        QVERIFY(QTest::qWaitForWindowActive(frame));
        for (const tidewright::KindTab &tab : tidewright::kindTabs()) {
            if (tab.isLoadedUnseen) {
                const tidewright::SharedContentViewController *each = content().tableNamed(tab.key());
                QTRY_VERIFY(each->rowsAsOf().isValid() && !each->isLoading());
            }
        }
    }
};
