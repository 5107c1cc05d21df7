// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/WindowState.h"
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
    void agreeWithKubeConfig(std::function<void(bool)> completion) override
    {
        ++agreementsAsked;
        if (whenAsked) {
            whenAsked();
        }
        completion(agrees);
    }

    void openLogs(const std::vector<ContainerPair> &containers) override { logsOpened.push_back(containers); }

    QString context;
    QString nameSpace;
    KubeCtl facade;
    RecordingConsole recorded;
    std::vector<std::vector<ContainerPair>> logsOpened;
    bool agrees = true;
    int agreementsAsked = 0;
    std::function<void()> whenAsked;
};

} // namespace tidewright::test
