// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/WindowState.h"

#include <QStringList>

namespace tidewright {

/// Copies local files and folders into a container, one after the other in their order, each with a logged
/// `kubectl cp` in the window's context and namespace. While it goes on, the window's console says which one
/// it is at. In all namespaces nothing is copied, and the console says why. Main thread; returns at once.
void copyIntoContainer(WindowState &window, const ContainerPair &container, const QStringList &paths,
    const QString &destination);

} // namespace tidewright
