// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Availability.h"

#include <QCoreApplication>

namespace tidewright {

QString availabilityImage(qint64 available, qint64 wanted)
{
    if (available >= wanted) {
        return QStringLiteral("NSStatusAvailable");
    }
    return available >= 1 ? QStringLiteral("NSStatusPartiallyAvailable")
                          : QStringLiteral("NSStatusUnavailable");
}

QString availabilityText(qint64 available, qint64 wanted)
{
    if (wanted <= 0 && available <= 0) {
        return QCoreApplication::translate("Availability", "None wanted");
    }
    if (available >= wanted) {
        return QCoreApplication::translate("Availability", "Available");
    }
    return available >= 1 ? QCoreApplication::translate("Availability", "Partly available")
                          : QCoreApplication::translate("Availability", "Unavailable");
}

} // namespace tidewright
