// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// The files that `configPath` stands for, absolute, those of KUBECONFIG or kubectl's own when it is empty: a
/// value for KUBECONFIG. Equal for the same files, but for links.
QString kubeConfigFiles(const QString &configPath);
/// kubectl's own: ~/.kube/config.
QString usualKubeConfig();

} // namespace tidewright
