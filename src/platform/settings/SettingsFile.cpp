// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/settings/SettingsFile.h"

#include "platform/text/Timestamp.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace tidewright {

namespace {

constexpr qint64 largestFile = 32 << 20;

using Content = SettingsFile::Content;
using State = SettingsFile::State;

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

QString tooLarge()
{
    return QStringLiteral("it is larger than %1 MB").arg(largestFile >> 20);
}

Content inaccessible(const QString &reason)
{
    return {State::Inaccessible, {}, reason};
}

Content damaged(const QString &reason)
{
    return {State::Damaged, {}, reason};
}

Content parse(const QByteArray &bytes)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (document.isObject()) {
        return {State::Sound, document.object(), {}};
    }
    if (bytes.isEmpty()) {
        return damaged(QStringLiteral("it is empty"));
    }
    if (error.error == QJsonParseError::NoError) {
        return damaged(QStringLiteral("it holds no JSON object"));
    }
    return damaged(QStringLiteral("%1 at byte %2").arg(error.errorString()).arg(error.offset));
}

Content readOpened(int descriptor)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return inaccessible(errorText(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        return inaccessible(QStringLiteral("it is not an ordinary file"));
    }
    if (status.st_size > largestFile) {
        return damaged(tooLarge());
    }
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly)) {
        return inaccessible(file.errorString());
    }
    const QByteArray bytes = file.read(status.st_size);
    if (file.error() != QFileDevice::NoError) {
        return inaccessible(file.errorString());
    }
    return parse(bytes);
}

/// A name beside `path` that no file has yet.
QByteArray nameForDamaged(const QByteArray &path)
{
    const auto now = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(currentTime()));
    const QByteArray first = path + ".broken-" + now.toString(QStringLiteral("yyyyMMdd-HHmmss")).toLatin1();
    QByteArray name = first;
    struct stat status = {};
    for (int number = 2; ::lstat(name.constData(), &status) == 0; ++number) {
        name = first + '-' + QByteArray::number(number);
    }
    return name;
}

QJsonObject changed(QJsonObject values, const SettingsChanges &changes)
{
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        values.insert(change.key(), change.value()); // an undefined value removes the key
    }
    return values;
}

} // namespace

SettingsFile::SettingsFile(const QString &path)
    : m_path(QFile::encodeName(path))
{
}

QString SettingsFile::displayPath() const
{
    return QFile::decodeName(m_path);
}

SettingsFile::Content SettingsFile::read() const
{
    // Not waiting for the other end, should it be a pipe.
    const FileDescriptor file(::open(m_path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.isOpen()) {
        return readOpened(file.get());
    }
    return errno == ENOENT || errno == ENOTDIR ? Content() : inaccessible(errorText(errno));
}

SettingsFile::Outcome SettingsFile::change(const SettingsChanges &changes, const QJsonObject &lastKnown) const
{
    if (const int error = makeFolder()) {
        return failure(error);
    }
    const FileLock lock(m_path + ".lock");
    return lock.error() == 0 ? changeLocked(changes, lastKnown) : failure(lock.error());
}

/// The folder of the settings is the user's alone; one that is a link is taken as it is.
int SettingsFile::makeFolder() const
{
    const QString folder = QFileInfo(displayPath()).path();
    QDir().mkpath(QFileInfo(folder).path());
    const QByteArray encoded = QFile::encodeName(folder);
    if (::mkdir(encoded.constData(), S_IRWXU) != 0 && errno != EEXIST) {
        return errno;
    }
    struct stat status = {};
    if (::lstat(encoded.constData(), &status) == 0 && S_ISDIR(status.st_mode)
        && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        ::chmod(encoded.constData(), S_IRWXU); // in vain when it is not ours
    }
    return 0;
}

SettingsFile::Outcome SettingsFile::changeLocked(
    const SettingsChanges &changes, const QJsonObject &lastKnown) const
{
    const FileIdentity identity = this->identity(); // others wait for the lock
    const Content current = read();
    if (current.state == State::Inaccessible) {
        return {false, {}, {},
            QStringLiteral("The settings file %1 cannot be used: %2. It stays as it is; settings that are "
                           "changed now last until Tidewright quits.")
                .arg(displayPath(), current.reason)};
    }
    const QByteArray target = followLinks(m_path);
    if (target.isEmpty()) {
        return failure(errno);
    }
    Outcome outcome{true, current.values, identity, {}};
    const bool isDamaged = current.state == State::Damaged;
    outcome.values = changed(isDamaged ? lastKnown : current.values, changes);
    if (outcome.values == current.values && !isDamaged) {
        return outcome;
    }
    const QByteArray bytes = QJsonDocument(outcome.values).toJson();
    const QByteArray aside = isDamaged ? nameForDamaged(target) : QByteArray();
    const int error
        = bytes.size() > largestFile ? EFBIG : replaceFile(target, bytes, outcome.identity, aside);
    if (error != 0) {
        return failure(error);
    }
    if (isDamaged) {
        outcome.notice
            = QStringLiteral("The settings file %1 was damaged (%2). It was set aside as %3, unchanged; "
                             "settings that only it held are back at their defaults.")
                  .arg(displayPath(), current.reason, QFile::decodeName(aside));
    }
    return outcome;
}

SettingsFile::Outcome SettingsFile::failure(int error) const
{
    return {false, {}, {},
        QStringLiteral("The settings could not be saved in %1: %2. They last until Tidewright quits, unless "
                       "a later change can be saved.")
            .arg(displayPath(), errorText(error))};
}

} // namespace tidewright
