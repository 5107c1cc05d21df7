// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"

#include <QStringList>

namespace tidewright {

class SharedContentViewController;

/// Whether a command can tell the container of a pod in `table` by its names; the window's console says why
/// when none can. Main thread.
bool canCopyInto(const SharedContentViewController &table, const ContainerPair &container);

/// Copies local files and folders (absolute paths) into a container of a pod in `table`, one after the other
/// in their order, each with a logged `kubectl cp` in the window's context and namespace. The table is shown
/// as loading until the last one has been started; until that has ended, the window's console says which one
/// it is at. A path with a colon is left out and the console says so: kubectl takes it for "POD:PATH",
/// and 1.33 refuses it in every form. Nothing is copied when `canCopyInto` says so; a console names
/// what is left when the table's window is closed or the context leads elsewhere. Main thread; returns at
/// once.
void copyIntoContainer(SharedContentViewController &table, const ContainerPair &container,
    const QStringList &paths, const QString &destination);

} // namespace tidewright
