// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <functional>

namespace tidewright {

class WindowState;

/// "Nothing was created", the beginning of what the console says when nothing was.
QString nothingCreated();

/// Whether the window shows one context and one namespace; the window's console says what is missing. Main
/// thread.
bool canCreateIn(WindowState &window);

/// Creates what the YAML files and folders at `paths` declare, in the window's context and namespace; the
/// command and its outcome go to the window's console. `finished` is called on the main thread once kubectl
/// has ended, whatever its outcome, unless the window is gone by then. Main thread.
void createFromFiles(WindowState &window, const QStringList &paths, std::function<void()> finished);

} // namespace tidewright
