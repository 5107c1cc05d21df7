// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kubeconfig/KubeConfigBackup.h"

#include "platform/settings/AtomicFile.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tidewright {

namespace {

const auto suffix = QStringLiteral(".tidewright-copy");
constexpr qint64 largestFile = 16 << 20;

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

std::vector<KubeConfigBackup::Entry> KubeConfigBackup::entriesOf(const QString &files)
{
    std::vector<Entry> entries;
    for (const QString &path : files.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        const QString file = QFile::decodeName(followLinks(QFile::encodeName(path)));
        if (QFileInfo(file).isFile()) {
            entries.push_back({file, file + suffix});
        }
    }
    return entries;
}

KubeConfigBackup::KubeConfigBackup(const QString &files)
{
    for (const Entry &entry : entriesOf(files)) {
        if (QFileInfo(entry.file).size() > largestFile) {
            m_problem = QStringLiteral("%1 is too large to keep a copy of.").arg(entry.file);
            return;
        }
        QFile original(entry.file); // its copy has its permissions
        if (!original.copy(entry.copy)) {
            m_problem = QStringLiteral("No copy of %1 could be kept beside it: %2.")
                            .arg(entry.file, original.errorString());
            return;
        }
        m_entries.push_back(entry);
    }
}

KubeConfigBackup::~KubeConfigBackup()
{
    for (const Entry &entry : m_entries) {
        const QByteArray now = bytesOf(entry.file);
        if (!now.isEmpty() || now == bytesOf(entry.copy)) {
            QFile::remove(entry.copy);
        }
    }
}

QString KubeConfigBackup::putBack(const Entry &entry)
{
    if (std::rename(QFile::encodeName(entry.copy).constData(), QFile::encodeName(entry.file).constData())
        == 0) {
        return {};
    }
    return QStringLiteral("%1 could not be put back (%2); its copy is %3.")
        .arg(entry.file, QString::fromLocal8Bit(std::strerror(errno)), entry.copy);
}

QString KubeConfigBackup::restore() const
{
    QStringList lost;
    for (const Entry &entry : m_entries) {
        if (QFileInfo::exists(entry.copy) && bytesOf(entry.file) != bytesOf(entry.copy)) {
            lost.append(putBack(entry));
        }
    }
    lost.removeAll(QString());
    return lost.join(QLatin1Char('\n'));
}

QString KubeConfigBackup::recover(const QString &files, const std::function<bool()> &readsWell)
{
    std::vector<Entry> left = entriesOf(files);
    std::erase_if(left, [](const Entry &entry) { return !QFileInfo::exists(entry.copy); });
    QStringList lost;
    const bool isWell = left.empty() || readsWell();
    for (const Entry &entry : left) {
        if (isWell && QFileInfo(entry.file).size() > 0) {
            QFile::remove(entry.copy);
        } else {
            lost.append(putBack(entry));
        }
    }
    lost.removeAll(QString());
    return lost.join(QLatin1Char('\n'));
}

} // namespace tidewright
