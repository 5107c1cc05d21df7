// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/kubeconfig/KubeConfigContents.h"

#include <optional>

namespace tidewright {

class Shell;

/// The argument list that reads the kubeconfig, as KubeConfigContents.
QStringList readKubeConfigArguments();
/// Reads what the kubeconfigs in the shell's environment hold, twice when there is no context in them: they
/// may be being written. Nothing when that failed, and `failure` says why then. Blocks: never on the main
/// thread.
std::optional<KubeConfigContents> readKubeConfig(Shell &shell, QString &failure);

} // namespace tidewright
