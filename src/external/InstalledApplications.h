// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

class QComboBox;

namespace tidewright {

/// Adds to the two lists the titles of the known terminals and editors that are installed, in a fixed order,
/// each once; what is in the lists already stays. Says on standard output when the application folders cannot
/// be listed. Main thread.
void scanInstalledApplications(QComboBox &terminals, QComboBox &editors);

/// The command line that opens a file in the editor of that title, in a window of its own, and ends when the
/// window is closed; the file's path goes behind it. Nothing for a title that is not known (compared exactly)
/// or has no such editor on this system.
std::optional<QString> editorCommandLine(const QString &title);

} // namespace tidewright
