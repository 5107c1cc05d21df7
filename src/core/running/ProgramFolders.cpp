// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/ProgramFolders.h"

#include "platform/process/Environment.h"
#include "platform/settings/UserDefaults.h"

#include <QDir>

namespace tidewright::program_folders {

namespace {

const auto settingKey = QStringLiteral("helperProgramFolders"); // a list as in PATH

} // namespace

QStringList added()
{
    return userDefaults().string(settingKey).value_or(QString()).split(QLatin1Char(':'), Qt::SkipEmptyParts);
}

void setAdded(const QStringList &folders)
{
    QStringList kept;
    for (const QString &folder : folders.join(QLatin1Char(':')).split(QLatin1Char(':'))) {
        if (!folder.trimmed().isEmpty()) {
            kept.append(folder.trimmed());
        }
    }
    if (kept.isEmpty()) {
        userDefaults().remove(settingKey);
    } else {
        userDefaults().set(settingKey, kept.join(QLatin1Char(':')));
    }
}

QString inPath(const QString &folder)
{
    const QString path = withTildeExpanded(folder);
    return QDir::isAbsolutePath(path) ? QDir::cleanPath(path) : QString();
}

} // namespace tidewright::program_folders
