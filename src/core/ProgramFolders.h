// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/Environment.h"

#include <QStringList>

namespace tidewright {

/// Where children look for programs. Each has a fixed PATH, whatever the desktop's is, and behind it the
/// folders of a preference: those with the helper programs that sign in to clusters for kubectl. Any thread.
namespace program_folders {

/// The folders of the preference, as the user wrote them.
QStringList added();
/// Keeps them: each on its own, or several with colons between them, as in PATH.
void setAdded(const QStringList &folders);
/// What PATH gets for such a folder, "~" expanded; empty for a relative one, which would depend on where a
/// program runs.
QString inPath(const QString &folder);

/// The fixed PATH and the added folders.
void setPath(Environment &environment);
/// The added folders behind the PATH that is there, for programs which keep the user's own.
void appendTo(Environment &environment);

} // namespace program_folders

} // namespace tidewright
