// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"
#include "core/WindowState.h"

class QWidget;

namespace tidewright {

/// Asks over `view`'s window whether the named objects are to be deleted, and deletes them. The command names
/// no context and no namespace: it acts where the window does, and only while the window shows what it showed
/// when the question was asked; otherwise the console says why nothing was deleted. `finished` is called on
/// the main thread after the command has ended, whatever its outcome. Main thread.
void confirmAndDelete(QWidget &view, WindowState &window, const ResourceKind &kind, const QStringList &names,
    std::function<void()> finished);

} // namespace tidewright
