// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"

namespace tidewright {

/// Opens a shell in a container, bash where there is one, in the user's terminal: once the window is settled
/// where it was asked for. Otherwise its console says why none was opened. The terminal's kubectl has a copy
/// of the window's view of the kubeconfig, and goes on without the window. Main thread.
void openContainerShell(WindowState &window, const ContainerPair &container);

} // namespace tidewright
