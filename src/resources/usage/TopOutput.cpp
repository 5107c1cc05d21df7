// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/usage/TopOutput.h"

#include "resources/kinds/FieldText.h"

#include <cmath>

namespace tidewright {

namespace {

double amountOf(const QString &quantity)
{
    const double amount = quantityOf(quantity);
    return std::isfinite(amount) && amount >= 0 ? amount : -1;
}

} // namespace

Usages usagesOf(const QByteArray &printed, bool withNamespace)
{
    constexpr qsizetype wordsOfPod = 3;
    constexpr qsizetype wordsOfNode = 5;
    Usages usages;
    for (const QByteArray &line : printed.split('\n')) {
        QStringList words = QString::fromUtf8(line).simplified().split(QLatin1Char(' '));
        const QString nameSpace = withNamespace && words.size() > 1 ? words.takeFirst() : QString();
        if (words.size() != wordsOfPod && words.size() != wordsOfNode) {
            continue;
        }
        const qsizetype bytesAt = words.size() == wordsOfNode ? 3 : 2;
        const Usage usage{amountOf(words.at(1)), amountOf(words.at(bytesAt))};
        if (usage != Usage()) {
            usages.insert({nameSpace, words.first()}, usage);
        }
    }
    return usages;
}

} // namespace tidewright
