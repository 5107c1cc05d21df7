// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/NaturalOrder.h"

#include <QVarLengthArray>

namespace tidewright {

namespace {

constexpr char digitRunMark = '0';

using Buffer = QVarLengthArray<char, 256>;

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

/// Appends a run of digits as a mark, its length without leading zeros, and the digits: longer numbers sort
/// later.
qsizetype appendNumber(QStringView text, qsizetype begin, Buffer &key)
{
    qsizetype end = begin;
    while (end < text.size() && isDigit(text[end])) {
        ++end;
    }
    qsizetype first = begin;
    while (first + 1 < end && text[first] == u'0') {
        ++first;
    }
    key.append(digitRunMark);
    for (qsizetype rest = end - first;; rest -= 254) {
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

void appendFolded(QChar c, Buffer &key)
{
    const char16_t unit = c.unicode();
    const char16_t folded = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A'))
        : unit < 128                                     ? unit
                                                         : c.toCaseFolded().unicode();
    if (folded >= 128) { // above every ASCII byte, in code-unit order
        key.append('\xff');
        key.append(static_cast<char>(folded >> 8));
    }
    key.append(static_cast<char>(folded & 0xFF));
}

} // namespace

QByteArray naturalSortKey(QStringView text)
{
    Buffer key;
    bool ascii = true;
    for (qsizetype i = 0; i < text.size();) {
        if (isDigit(text[i])) {
            i = appendNumber(text, i, key);
        } else {
            ascii = ascii && text[i].unicode() < 128;
            appendFolded(text[i++], key);
        }
    }
    key.append('\0');
    if (ascii) {
        for (const QChar c : text) {
            key.append(static_cast<char>(c.unicode()));
        }
    } else {
        const QByteArray utf8 = text.toUtf8();
        key.append(utf8.constData(), utf8.size());
    }
    return QByteArray(key.constData(), key.size());
}

} // namespace tidewright
