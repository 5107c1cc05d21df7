// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// What the process knows about the kubeconfig that its windows share. Main thread only.
struct ApplicationRecord
{
    /// The context most recently made current in a kubeconfig by KubeCtl::useContext; empty at first.
    QString appContext;
    /// The namespace most recently set by KubeCtl::setNamespace, or "All Namespaces"; empty at first.
    QString appNamespace;
};

ApplicationRecord &applicationRecord();

/// The absolute path of the packaged kubectl; empty until start-up, or a test, sets it once before the first
/// run.
QString kubectlPath();
void setKubectlPath(const QString &path);

} // namespace tidewright
