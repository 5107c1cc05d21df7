// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <optional>

namespace tidewright {

class WindowState;

// What commands share that send YAML files to the cluster. Main thread.

/// Whether the window shows one context and one namespace, and may change something there. Otherwise its
/// console says `notDone` ("Nothing was created") and why.
bool canTakeFilesIn(WindowState &window, const QString &notDone);

/// "-R", "-f" and the files and folders at `paths` in one argument. Nothing when kubectl cannot be told of
/// one of them, and the window's console says so.
std::optional<QStringList> fileArguments(
    WindowState &window, const QStringList &paths, const QString &notDone);

} // namespace tidewright
