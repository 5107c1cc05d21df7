// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace tidewright {

/// The environment of a process: name to value, both as the bytes the kernel hands over (they need not be
/// UTF-8).
using Environment = QMap<QByteArray, QByteArray>;

/// A copy of this process's environment at the moment of the call.
Environment currentEnvironment();

/// A path as people type it, with "~" or "~/" at its beginning standing for the user's home folder.
QString withTildeExpanded(const QString &path);

} // namespace tidewright
