// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/RandomString.h"

#include <QRandomGenerator>

#include <random>

namespace tidewright {

QString randomString(int count)
{
    constexpr std::u16string_view alphabet = u"abcdefghijklmnopqrstuvwxyz0123456789";
    std::uniform_int_distribution<size_t> place(0, alphabet.size() - 1);
    QString result;
    for (int drawn = 0; drawn < count; ++drawn) {
        result.append(QChar(alphabet[place(*QRandomGenerator::system())]));
    }
    return result;
}

} // namespace tidewright
