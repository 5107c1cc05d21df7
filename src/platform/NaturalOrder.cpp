// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/NaturalOrder.h"

namespace tidewright {

namespace {

constexpr char digitRunMark = '0';

/// Appends a run of digits as a mark, its length without leading zeros, and the digits: longer numbers sort later.
qsizetype appendNumber(QStringView text, qsizetype begin, QByteArray &key)
{
    qsizetype end = begin;
    while (end < text.size() && text[end] >= u'0' && text[end] <= u'9') {
        ++end;
    }
    qsizetype first = begin;
    while (first + 1 < end && text[first] == u'0') {
        ++first;
    }
    const qsizetype length = end - first;
    key.append(digitRunMark);
    for (qsizetype rest = length; ; rest -= 254) {
        key.append(static_cast<char>(qMin<qsizetype>(rest, 255)));
        if (rest <= 254) {
            break;
        }
    }
    for (qsizetype i = first; i < end; ++i) {
        key.append(static_cast<char>(text[i].unicode()));
    }
    return end;
}

void appendFolded(QStringView run, QByteArray &key)
{
    for (const QChar c : run) {
        const char16_t folded = c.unicode() < 128 ? c.toLower().unicode() : c.toCaseFolded().unicode();
        if (folded < 128) {
            key.append(static_cast<char>(folded));
        } else {
            // Above every ASCII byte, in code-unit order.
            key.append('\xff').append(static_cast<char>(folded >> 8)).append(static_cast<char>(folded & 0xFF));
        }
    }
}

} // namespace

QByteArray naturalSortKey(QStringView text)
{
    QByteArray key;
    key.reserve(text.size() * 2 + 8);
    for (qsizetype i = 0; i < text.size();) {
        if (text[i] >= u'0' && text[i] <= u'9') {
            i = appendNumber(text, i, key);
            continue;
        }
        const qsizetype begin = i;
        while (i < text.size() && (text[i] < u'0' || text[i] > u'9')) {
            ++i;
        }
        appendFolded(text.sliced(begin, i - begin), key);
    }
    key.append('\0').append(text.toUtf8());
    return key;
}

} // namespace tidewright
