// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kubeconfig/KubeConfigList.h"

#include "core/KubeCtl.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace tidewright::kubeconfig_list {

namespace {

constexpr QLatin1Char separator(':');
constexpr qsizetype longestVariable = 128 * 1024; // what the kernel takes
constexpr qsizetype mostShown = 3;

} // namespace

QStringList files(const QString &list)
{
    return list.split(separator, Qt::SkipEmptyParts);
}

std::optional<QString> ofEnvironment()
{
    const QByteArray variable = qgetenv("KUBECONFIG");
    const QString text = QFile::decodeName(variable);
    if (QFile::encodeName(text) != variable) {
        return std::nullopt;
    }
    const QStringList paths = files(text);
    if (QDir::currentPath().isEmpty() && !std::all_of(paths.begin(), paths.end(), QDir::isAbsolutePath)) {
        return std::nullopt;
    }
    return paths.isEmpty() ? QString() : kubeConfigFiles(text);
}

bool isComplete(const QString &list)
{
    const QStringList paths = files(list);
    return list.size() < longestVariable && std::all_of(paths.begin(), paths.end(), [](const QString &path) {
        return path.startsWith(QLatin1Char('/'));
    });
}

QString shown(const QString &list)
{
    const QStringList paths = files(list);
    if (paths.size() < 2) {
        return list;
    }
    QStringList names;
    for (const QString &path : paths.first(qMin(mostShown, paths.size()))) {
        const QString name = path.section(QLatin1Char('/'), -1);
        const auto hasName
            = [&name](const QString &other) { return other.section(QLatin1Char('/'), -1) == name; };
        const bool isUnique = std::count_if(paths.begin(), paths.end(), hasName) == 1;
        names.append(isUnique ? name : path.section(QLatin1Char('/'), -2));
    }
    return names.join(QLatin1String(", ")) + (paths.size() > mostShown ? QStringLiteral(", …") : QString());
}

} // namespace tidewright::kubeconfig_list
