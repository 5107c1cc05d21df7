// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/PreviewFiles.h"

#include "platform/desktop/Diagnostics.h"
#include "platform/process/FileDescriptor.h"
#include "platform/text/Timestamp.h"
#include "platform/text/Utf8.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QObject>
#include <QSaveFile>
#include <QSet>

#include <fcntl.h>
#include <mutex>
#include <sys/file.h>

namespace tidewright {

namespace {

QString &cacheFolder()
{
    static QString path;
    return path;
}

constexpr double reuseSeconds = 5;
constexpr qsizetype shownAtMost = qsizetype(4) << 20; // bytes
constexpr qsizetype longestShownLine = 4096; // of one that is laid out within a few milliseconds

QString withBrokenLines(const QString &text)
{
    QString broken;
    broken.reserve(text.size() + text.size() / longestShownLine);
    for (qsizetype begin = 0; begin < text.size();) {
        const qsizetype lineEnd = text.indexOf(QLatin1Char('\n'), begin);
        const qsizetype end = lineEnd < 0 ? text.size() : lineEnd + 1;
        while (end - begin > longestShownLine) {
            const qsizetype part = text.at(begin + longestShownLine - 1).isHighSurrogate()
                ? longestShownLine - 1
                : longestShownLine;
            broken.append(QStringView(text).mid(begin, part)).append(QLatin1Char('\n'));
            begin += part;
        }
        broken.append(QStringView(text).mid(begin, end - begin));
        begin = end;
    }
    return broken;
}

/// What this process has begun to write, on any thread.
struct WrittenFiles
{
    std::mutex mutex;
    QSet<QString> paths;
};

WrittenFiles &writtenFiles()
{
    static auto *files = new WrittenFiles; // a thread may still be writing while the process ends
    return *files;
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
    if (cacheDirectory().isEmpty()) {
        return QStringLiteral("there is no cache folder");
    }
    {
        const std::lock_guard lock(writtenFiles().mutex);
        writtenFiles().paths.insert(path); // first: whoever asked for it may be gone when it is written
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)
        || file.write(text) != text.size() || !file.commit()) {
        return file.errorString();
    }
    return {};
}

QString PreviewFiles::shownText(const QByteArray &text, const QString &path)
{
    QByteArray shown = text.left(shownAtMost);
    shown.chop(text.size() > shownAtMost ? incompleteUtf8Tail(shown) : 0);
    QString result = withBrokenLines(QString::fromUtf8(shown));
    if (shown.size() < text.size()) {
        const QString size = QLocale().formattedDataSize(text.size());
        result += QLatin1String("\n\n")
            + (path.isEmpty()
                    ? QObject::tr("# This is the beginning of %1. The whole could not be written to a file.")
                          .arg(size)
                    : QObject::tr("# This is the beginning of %1. The whole is in the file %2")
                          .arg(size, path));
    }
    return result;
}

std::optional<PreviewItem> PreviewFiles::recent(const QString &context, const QString &path) const
{
    const auto cached = m_cacheTimes.constFind(path);
    if (cached == m_cacheTimes.constEnd() || cached->context != context) {
        return std::nullopt;
    }
    const double age = currentTime() - cached->time;
    if (age < 0 || age > reuseSeconds) { // the clock may have been set back
        return std::nullopt;
    }
    return cached->item;
}

void PreviewFiles::store(const QString &context, PreviewItem item, const QString &writeFailure)
{
    const QString path = item.filePath;
    if (!writeFailure.isEmpty()) {
        writeDiagnostic(QLatin1String("Unable to write cache file: ") + writeFailure);
        item.filePath.clear();
    }
    m_cacheTimes.removeIf(
        [](const auto &entry) { return currentTime() - entry.value().time > reuseSeconds; });
    m_cacheTimes.insert(path, {currentTime(), context, std::move(item)});
}

void PreviewFiles::removeAll()
{
    WrittenFiles &files = writtenFiles();
    const std::lock_guard lock(files.mutex);
    for (const QString &path : std::as_const(files.paths)) {
        QFile::remove(path);
    }
    files.paths.clear();
}

void PreviewFiles::sweep()
{
    // Locked for as long as a process lives that has files there.
    static FileDescriptor folder;
    const QDir place(cacheDirectory());
    folder = FileDescriptor(::open(QFile::encodeName(place.path()).constData(), O_RDONLY | O_CLOEXEC));
    if (::flock(folder.get(), LOCK_EX | LOCK_NB) == 0) {
        for (const QString &name : place.entryList(
                 {QStringLiteral("*.yaml"), QStringLiteral("*.yaml.*")}, QDir::Files | QDir::Hidden)) {
            QFile::remove(place.filePath(name));
        }
    }
    ::flock(folder.get(), LOCK_SH);
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
