// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/RandomString.h"

#include <QRandomGenerator>

namespace tidewright {

QString randomString(int count)
{
    static constexpr QLatin1String alphabet("abcdefghijklmnopqrstuvwxyz0123456789");
    QString result;
    while (result.size() < count) {
        result += alphabet[QRandomGenerator::system()->bounded(alphabet.size())];
    }
    return result;
}

} // namespace tidewright
