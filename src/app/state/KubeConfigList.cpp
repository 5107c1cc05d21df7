// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/KubeConfigList.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace tidewright::kubeconfig_list {

namespace {

constexpr QLatin1Char separator(':');
constexpr qsizetype longestVariable = 128 * 1024; // what the kernel takes
constexpr qsizetype mostShown = 3;

/// Without the parts that lead nowhere. What ".." leads to depends on links.
QString tidied(const QString &path)
{
    return path.contains(QLatin1String("..")) ? path : QDir::cleanPath(path);
}

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
    const QString folder = QDir::currentPath(); // empty when it is gone
    QStringList paths = files(text);
    for (QString &path : paths) {
        if (!QDir::isAbsolutePath(path)) {
            if (folder.isEmpty()) {
                return std::nullopt;
            }
            path.prepend(folder + QLatin1Char('/'));
        }
        path = tidied(path);
    }
    return paths.join(separator);
}

bool isComplete(const QString &list)
{
    const QStringList paths = files(list);
    return list.size() < longestVariable && std::all_of(paths.begin(), paths.end(), [](const QString &path) {
        return path.startsWith(QLatin1Char('/'));
    });
}

QString usual()
{
    return QDir::homePath() + QLatin1String("/.kube/config");
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
