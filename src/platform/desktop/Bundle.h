// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright::bundle {

/// Absolute path of an executable of the package (../libexec/tidewright beside the program's own folder), or
/// the empty text when it is not there or not executable.
QString auxiliaryExecutable(const QString &name);

/// Absolute path of a file of the package (../share/tidewright), or the empty text when it is not there.
QString resource(const QString &relativePath);

/// The version for people, such as "1.2 beta", and the number of the build.
QString shortVersionString();
QString buildNumber();

/// The user's folder for caches and for application data, without the application's own name.
QString cachesFolder();
QString applicationSupportFolder();

} // namespace tidewright::bundle
