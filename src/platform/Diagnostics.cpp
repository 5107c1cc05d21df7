// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Diagnostics.h"

#include <cstdio>

namespace tidewright {

void writeDiagnostic(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

} // namespace tidewright
