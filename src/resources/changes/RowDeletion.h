// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/kinds/ObjectName.h"
#include "resources/kinds/ResourceKind.h"

class QWidget;

namespace tidewright {

/// Asks over `view`'s window whether these objects are to be deleted, and deletes them. The command names no
/// context, and a namespace only where the window shows all of them, then one command for each: it acts where
/// the window does, and only while the window shows what it showed when the question was asked; otherwise the
/// console says why nothing was deleted. `finished` is called on the main thread after the last command has
/// ended, whatever its outcome. Main thread.
void confirmAndDelete(QWidget &view, WindowState &window, const ResourceKind &kind,
    const ObjectNames &objects, std::function<void()> finished);

} // namespace tidewright
