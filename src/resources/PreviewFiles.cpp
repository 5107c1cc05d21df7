// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/PreviewFiles.h"

#include "platform/Diagnostics.h"
#include "platform/Timestamp.h"
#include "resources/WindowState.h"

#include <QFile>
#include <QSaveFile>
#include <QSet>

namespace tidewright {

namespace {

constexpr double reuseSeconds = 5;

QSet<QString> &writtenFiles()
{
    static QSet<QString> paths;
    return paths;
}

/// What went wrong, or the empty text.
QString writePrivately(const QString &path, const QByteArray &text)
{
    if (cacheDirectory().isEmpty()) {
        return QStringLiteral("there is no cache directory");
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)
        || file.write(text) != text.size() || !file.commit()) {
        return file.errorString();
    }
    return {};
}

} // namespace

QString PreviewFiles::pathFor(const QString &nameSpace, const QString &name)
{
    QString fileName = nameSpace + QLatin1Char('-') + name + QLatin1String(".yaml");
    fileName.replace(QLatin1Char('/'), QLatin1Char('_')); // whatever a listing may hold, the file stays in its folder
    return cacheDirectory() + QLatin1Char('/') + fileName;
}

std::optional<PreviewItem> PreviewFiles::recent(const QString &path) const
{
    const auto cached = m_cacheTimes.constFind(path);
    if (cached == m_cacheTimes.constEnd() || currentTime() - cached->time > reuseSeconds) {
        return std::nullopt;
    }
    return cached->item;
}

PreviewItem PreviewFiles::store(const QString &path, const QString &title, const QByteArray &text)
{
    PreviewItem item{title, QString::fromUtf8(text), path};
    const QString failure = writePrivately(path, text);
    if (failure.isEmpty()) {
        writtenFiles().insert(path);
    } else {
        writeDiagnostic(QLatin1String("Unable to write cache file: ") + failure);
        item.filePath.clear();
    }
    m_cacheTimes.removeIf([](const auto &entry) { return currentTime() - entry.value().time > reuseSeconds; });
    m_cacheTimes.insert(path, {currentTime(), item});
    return item;
}

void PreviewFiles::removeAll()
{
    for (const QString &path : std::as_const(writtenFiles())) {
        QFile::remove(path);
    }
    writtenFiles().clear();
}

} // namespace tidewright
