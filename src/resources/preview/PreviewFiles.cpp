// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/PreviewFiles.h"

#include "platform/desktop/Diagnostics.h"
#include "platform/text/Timestamp.h"

#include <QFile>
#include <QSaveFile>
#include <QSet>

namespace tidewright {

namespace {

QString &cacheFolder()
{
    static QString path;
    return path;
}

constexpr double reuseSeconds = 5;

QSet<QString> &writtenFiles()
{
    static QSet<QString> paths;
    return paths;
}

} // namespace

QString PreviewFiles::pathFor(const QString &nameSpace, const QString &name)
{
    QString fileName = nameSpace + QLatin1Char('-') + name + QLatin1String(".yaml");
    fileName.replace(
        QLatin1Char('/'), QLatin1Char('_')); // whatever a listing may hold, the file stays in its folder
    return cacheDirectory() + QLatin1Char('/') + fileName;
}

QString PreviewFiles::write(const QString &path, const QByteArray &text)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)
        || file.write(text) != text.size() || !file.commit()) {
        return file.errorString();
    }
    return {};
}

std::optional<PreviewItem> PreviewFiles::recent(const QString &context, const QString &path) const
{
    const auto cached = m_cacheTimes.constFind(path);
    if (cached == m_cacheTimes.constEnd() || cached->context != context
        || currentTime() - cached->time > reuseSeconds) {
        return std::nullopt;
    }
    return cached->item;
}

void PreviewFiles::store(const QString &context, PreviewItem item, const QString &writeFailure)
{
    const QString path = item.filePath;
    if (writeFailure.isEmpty()) {
        writtenFiles().insert(path);
    } else {
        writeDiagnostic(QLatin1String("Unable to write cache file: ") + writeFailure);
        item.filePath.clear();
    }
    m_cacheTimes.removeIf(
        [](const auto &entry) { return currentTime() - entry.value().time > reuseSeconds; });
    m_cacheTimes.insert(path, {currentTime(), context, std::move(item)});
}

void PreviewFiles::removeAll()
{
    for (const QString &path : std::as_const(writtenFiles())) {
        QFile::remove(path);
    }
    writtenFiles().clear();
}

QString cacheDirectory()
{
    return cacheFolder();
}

void setCacheDirectory(const QString &path)
{
    cacheFolder() = path;
}

} // namespace tidewright
