// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Usage.h"

#include <cmath>

namespace tidewright {

namespace {

const QString &unknown()
{
    static const QString dash(QChar(0x2013));
    return dash;
}

} // namespace

QString usedCoresText(double cores)
{
    constexpr int decimals = 3;
    return cores < 0 ? unknown() : QString::number(cores, 'f', decimals);
}

QString usedBytesText(double bytes)
{
    constexpr int digits = 4;
    if (bytes < 0) {
        return unknown();
    }
    return bytes < 0x1p30 ? QStringLiteral("%1 Mi").arg(std::ceil(bytes / 0x1p20), 0, 'f', 0)
                          : QStringLiteral("%1 Gi").arg(bytes / 0x1p30, 0, 'g', digits);
}

double usedSortKey(double amount)
{
    return amount < 0 ? std::nan("") : amount;
}

Column asUsage(Column column, const QString &explanation)
{
    column.alignment = Qt::AlignRight | Qt::AlignVCenter;
    column.showsUsage = true;
    column.explanation = explanation + QLatin1Char('\n')
        + QObject::tr("As “kubectl top” tells it, every 30 seconds while the column is shown.");
    return hiddenAtFirst(std::move(column));
}

} // namespace tidewright
