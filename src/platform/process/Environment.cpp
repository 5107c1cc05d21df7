// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/Environment.h"

#include <QDir>

#include <unistd.h>

namespace tidewright {

Environment currentEnvironment()
{
    Environment environment;
    for (char **entry = environ; entry && *entry; ++entry) {
        const QByteArrayView pair(*entry);
        const qsizetype equals = pair.indexOf('=');
        if (equals > 0) {
            environment.insert(pair.first(equals).toByteArray(), pair.sliced(equals + 1).toByteArray());
        }
    }
    return environment;
}

QString withTildeExpanded(const QString &path)
{
    const bool inHome = path == QLatin1String("~") || path.startsWith(QLatin1String("~/"));
    return inHome ? QDir::homePath() + path.mid(1) : path;
}

} // namespace tidewright
