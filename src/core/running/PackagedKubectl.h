// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tidewright {

/// What the package's own list (share/tidewright/manifest.json, written when it is built) says of its
/// kubectl.
struct PackagedKubectl
{
    QString version; ///< such as "v1.33.1"
    QByteArray sha256; ///< hexadecimal, lower case

    /// Nothing when the bytes are no such list.
    static std::optional<PackagedKubectl> read(const QByteArray &manifest);
    /// The list of this package; nothing when it has none.
    static std::optional<PackagedKubectl> ofPackage();

    /// Whether the file is another one than was packaged, as a sentence; empty when it is the same. Reads all
    /// of it: never on the main thread.
    QString difference(const QString &path) const;
};

} // namespace tidewright
