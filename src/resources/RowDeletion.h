// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/ResourceKind.h"
#include "resources/WindowState.h"

class QWidget;

namespace tidewright {

/// Why kubectl cannot do something to these objects, given by name, that is not to hit others: a sentence
/// without its beginning, or the empty text when it can.
QString whyNotByName(const ResourceKind &kind, const QStringList &names, const QString &nameSpace);

/// Asks over `view`'s window whether the named objects are to be deleted, and deletes them. The command names
/// no context and no namespace, so it starts only once the kubeconfig agrees with the window, and only while
/// the window shows what it showed when the question was asked; otherwise the console says why nothing was
/// deleted. `finished` is called on the main thread after the command has ended, whatever its outcome. Main
/// thread.
void confirmAndDelete(QWidget &view, WindowState &window, const ResourceKind &kind, const QStringList &names,
    std::function<void()> finished);

} // namespace tidewright
