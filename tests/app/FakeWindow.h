// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FakeCluster.h"
#include "app/kubeconfig/UserKubeConfig.h"
#include "app/state/KubeSplitViewController.h"
#include "support/Patience.h"

/// The state of one window on a fake cluster, with the user's file that follows it. Its console is the main
/// window's while it lives.
struct FakeWindow
{
    FakeWindow()
    {
        tidewright::setMainConsoleLookup([this] { return &console; });
        state.setConsole(&console);
        QObject::connect(&state, &tidewright::KubeSplitViewController::clusterSettingsChanged, &state,
            [this] { ++reloads; });
    }
    explicit FakeWindow(FakeCluster &cluster)
        : FakeWindow()
    {
        load(cluster.kubeConfig());
        cluster.forgetCalls();
    }
    ~FakeWindow() { tidewright::setMainConsoleLookup({}); }

    void load(const QString &kubeConfig)
    {
        state.viewWillAppear(kubeConfig);
        QTRY_VERIFY(state.namespaceList().enabled);
        QCOMPARE(answered(), ran);
    }

    void untilSettled()
    {
        QTRY_COMPARE(place(), shown().replace(tidewright::allNamespaces, QStringLiteral("default")));
    }
    inline static const QString ran = QStringLiteral("ran");
    /// What becomes of a command: `ran`, or why it does not run.
    std::shared_ptr<QString> ask()
    {
        auto answer = std::make_shared<QString>();
        state.whenSettled(
            [answer](const QString &obstacle) { *answer = obstacle.isEmpty() ? ran : obstacle; });
        return answer;
    }
    QString answered()
    {
        const auto answer = ask();
        return QTest::qWaitFor([&] { return !answer->isEmpty(); }, 30'000) ? *answer
                                                                           : QStringLiteral("(no answer)");
    }

    QString shown() const { return state.currentContext() + u'/' + state.currentNamespace(); }
    /// Where a child acts that is started now.
    QString place() { return FakeCluster::placeOf(*state.kubeCtl().makeShell()); }

    tidewright::UserKubeConfig file;
    FakeConsole console;
    tidewright::KubeSplitViewController state{file};
    int reloads = 0;
};
