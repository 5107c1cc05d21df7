// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "support/TestSupport.h"

namespace tidewright::test {

/// A window whose context, namespace and kubeconfig a test sets as it likes.
class StubWindow : public WindowState
{
public:
    QString currentContext() const override { return context; }
    QString currentNamespace() const override { return nameSpace; }
    QString kubeConfigPath() const override { return facade.configPath; }
    KubeCtl &kubeCtl() override { return facade; }
    Console *console() override { return &recorded; }
    bool liveUpdates() const override { return live; }
    void whenSettled(std::function<void(const QString &)> completion) override
    {
        ++settledAsked;
        if (whenAsked) {
            whenAsked();
        }
        completion(obstacle);
    }

    void openLogs(const std::vector<ContainerPair> &containers, LogScope scope) override
    {
        logsOpened.push_back(containers);
        logScopes.push_back(scope);
    }

    QString context;
    QString nameSpace;
    bool live = false;
    KubeCtl facade;
    RecordingConsole recorded;
    std::vector<std::vector<ContainerPair>> logsOpened;
    std::vector<LogScope> logScopes;
    QString obstacle; ///< why nothing may be started
    int settledAsked = 0;
    std::function<void()> whenAsked;
};

} // namespace tidewright::test
