// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Bundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace tidewright::bundle {

namespace {

QFileInfo inPackage(const char *folder, const QString &name)
{
    return QFileInfo(QDir::cleanPath(
        QCoreApplication::applicationDirPath() + QLatin1String(folder) + QLatin1Char('/') + name));
}

} // namespace

QString auxiliaryExecutable(const QString &name)
{
    const QFileInfo file = inPackage("/../libexec/tidewright", name);
    return file.isFile() && file.isExecutable() ? file.absoluteFilePath() : QString();
}

QString resource(const QString &relativePath)
{
    const QFileInfo file = inPackage("/../share/tidewright", relativePath);
    return file.exists() ? file.absoluteFilePath() : QString();
}

QString shortVersionString()
{
    return QStringLiteral(TIDEWRIGHT_VERSION);
}

QString buildNumber()
{
    return QStringLiteral(TIDEWRIGHT_BUILD);
}

QString cachesFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
}

QString applicationSupportFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

} // namespace tidewright::bundle
