// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/kubeconfig/KubeConfigFiles.h"

#include <QDir>

namespace tidewright {

QString kubeConfigFiles(const QString &configPath)
{
    const QString list = configPath.isEmpty() ? qEnvironmentVariable("KUBECONFIG") : configPath;
    QStringList files = list.split(QLatin1Char(':'), Qt::SkipEmptyParts);
    if (files.isEmpty()) {
        files = {usualKubeConfig()};
    }
    for (QString &file : files) {
        file = QDir::current().absoluteFilePath(file);
        if (!file.contains(QLatin1String(".."))) { // what ".." leads to depends on links
            file = QDir::cleanPath(file);
        }
    }
    return files.join(QLatin1Char(':'));
}

QString usualKubeConfig()
{
    return QDir::homePath() + QLatin1String("/.kube/config");
}

} // namespace tidewright
