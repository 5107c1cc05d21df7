// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

class QFileDialog;

namespace tidewright {

/// Absolute paths of what is selected in the list of one of Qt's own file dialogs, in the order in which the
/// user chose them; those chosen together, with Shift or a frame, from top to bottom. Folders too, which the
/// dialog itself leaves out of selectedFiles() when it is asked for files.
QStringList selectedInList(const QFileDialog &dialog);

} // namespace tidewright
