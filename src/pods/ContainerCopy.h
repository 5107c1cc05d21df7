// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/WindowState.h"

#include <QStringList>

namespace tidewright {

class SharedContentViewController;

/// Whether the table's window shows one namespace; its console says when it does not. Main thread.
bool canCopyFrom(const SharedContentViewController &table);

/// Copies local files and folders (absolute paths) into a container of a pod in `table`, one after the other
/// in their order, each with a logged `kubectl cp` in the window's context and namespace. The table is shown
/// as loading until the last one has been started; until that has ended, the window's console says which one
/// it is at. A path with a colon is left out and the console says so: kubectl takes it for "POD:PATH", and 1.33
/// refuses it in every form. In all namespaces nothing is copied, and the console says why; the main window's
/// console names what is left when the table's window is closed. Main thread; returns at once.
void copyIntoContainer(SharedContentViewController &table, const ContainerPair &container,
    const QStringList &paths, const QString &destination);

} // namespace tidewright
