// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/kinds/ObjectName.h"
#include "resources/kinds/ResourceKind.h"

class QWidget;

namespace tidewright {

/// Opens an object in the user's editor, in its own namespace; asks over `view`'s window before, where the
/// context is protected. The window's console says why nothing was edited when that is so. `finished` is
/// called after the edit has ended, whatever its outcome, unless `view` goes first. Main thread.
void confirmAndEdit(QWidget &view, WindowState &window, const ResourceKind &kind, const ObjectName &object,
    std::function<void()> finished);

} // namespace tidewright
