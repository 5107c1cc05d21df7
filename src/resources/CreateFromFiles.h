// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <functional>

namespace tidewright {

class WindowState;

/// Creates what the YAML files and folders at `paths` declare, in the window's context and namespace; the
/// command and its outcome go to the window's console. `finished` is called on the main thread once kubectl
/// has ended, whatever its outcome, unless the window is gone by then. Main thread.
void createFromFiles(WindowState &window, const QStringList &paths, std::function<void()> finished);

} // namespace tidewright
