// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/PackagedKubectl.h"

#include "platform/desktop/Bundle.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace tidewright {

namespace {

constexpr qint64 longestManifest = 1 << 20;

} // namespace

std::optional<PackagedKubectl> PackagedKubectl::read(const QByteArray &manifest)
{
    const QJsonObject entry = QJsonDocument::fromJson(manifest)[QLatin1String("kubectl")].toObject();
    const PackagedKubectl kubectl{
        entry[QLatin1String("version")].toString(), entry[QLatin1String("sha256")].toString().toLatin1()};
    constexpr qsizetype digits = 64;
    return kubectl.sha256.size() == digits ? std::optional(kubectl) : std::nullopt;
}

std::optional<PackagedKubectl> PackagedKubectl::ofPackage()
{
    QFile file(bundle::resource(QStringLiteral("manifest.json")));
    return file.open(QIODevice::ReadOnly) ? read(file.read(longestManifest)) : std::nullopt;
}

QString PackagedKubectl::difference(const QString &path) const
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file)) {
        return QStringLiteral("%1 could not be compared with the kubectl of this package: %2.")
            .arg(path, file.errorString());
    }
    const QByteArray found = hash.result().toHex();
    return found == sha256
        ? QString()
        : QStringLiteral("%1 is not the kubectl that this package came with (%2): its SHA-256 is %3, and the "
                         "package's list says %4. Install Tidewright again, unless you replaced it yourself.")
              .arg(path, version, QString::fromLatin1(found), QString::fromLatin1(sha256));
}

} // namespace tidewright
