// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace tidewright {

/// The folders of a preference, in which children look for programs behind their PATH (child_environment):
/// those with the helper programs that sign in to clusters for kubectl. Any thread.
namespace program_folders {

/// The folders of the preference, as the user wrote them.
QStringList added();
/// Keeps them: each on its own, or several with colons between them, as in PATH.
void setAdded(const QStringList &folders);
/// What PATH gets for such a folder, "~" expanded; empty for a relative one, which would depend on where a
/// program runs.
QString inPath(const QString &folder);

} // namespace program_folders

} // namespace tidewright
