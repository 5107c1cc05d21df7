// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/Utf8.h"

#include <QStringDecoder>

#include <unicode/utf8.h>

namespace tidewright {

namespace {

bool isTrimmed(char32_t c)
{
    return c == U'\t' || (c >= U'\n' && c <= U'\r') || c == 0x85 || c == 0x2028 || c == 0x2029
        || QChar::category(c) == QChar::Separator_Space;
}

char32_t characterOf(QByteArrayView bytes)
{
    const auto lead = static_cast<unsigned char>(bytes.front());
    char32_t c = lead < 0x80 ? lead : lead < 0xE0 ? lead & 0x1F : lead < 0xF0 ? lead & 0x0F : lead & 0x07;
    for (const char byte : bytes.sliced(1)) {
        c = (c << 6) | (static_cast<unsigned char>(byte) & 0x3F);
    }
    return c;
}

} // namespace

std::optional<QString> decodeUtf8(QByteArrayView bytes)
{
    if (!QUtf8StringView(bytes.data(), bytes.size()).isValidUtf8()) {
        return std::nullopt;
    }
    return QString::fromUtf8(bytes);
}

QString shownUtf8(QByteArrayView bytes)
{
    if (QUtf8StringView(bytes.data(), bytes.size()).isValidUtf8()) {
        using Flag = QStringDecoder::Flag;
        return QStringDecoder(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom)(bytes);
    }
    QString text;
    text.reserve(bytes.size());
    for (qsizetype at = 0; at < bytes.size();) {
        qsizetype next = at;
        UChar32 character = 0;
        U8_NEXT(bytes.data(), next, bytes.size(), character);
        if (character < 0) {
            text += QChar(QChar::ReplacementCharacter);
            ++at;
        } else {
            text += QChar::fromUcs4(static_cast<char32_t>(character));
            at = next;
        }
    }
    return text;
}

qsizetype bytesShownAs(QStringView beginning, QByteArrayView bytes)
{
    static constexpr QByteArrayView replacement("\xef\xbf\xbd");
    qsizetype count = 0;
    for (const QChar c : beginning) {
        const char16_t unit = c.unicode();
        if (unit == QChar::ReplacementCharacter && !bytes.sliced(count).startsWith(replacement)) {
            ++count;
        } else if (!c.isLowSurrogate()) { // counted with the other half
            count += unit < 0x80 ? 1 : unit < 0x800 ? 2 : c.isHighSurrogate() ? 4 : 3;
        }
    }
    return count;
}

QByteArray trimmedUtf8(QByteArray bytes)
{
    const QByteArrayView all(bytes);
    qsizetype end = all.size();
    while (end > 0) {
        qsizetype begin = end - 1;
        while (begin > 0 && isContinuation(all[begin])) {
            --begin;
        }
        if (!isTrimmed(characterOf(all.sliced(begin, end - begin)))) {
            break;
        }
        end = begin;
    }
    qsizetype start = 0;
    while (start < end) {
        qsizetype next = start + 1;
        while (next < end && isContinuation(all[next])) {
            ++next;
        }
        if (!isTrimmed(characterOf(all.sliced(start, next - start)))) {
            break;
        }
        start = next;
    }
    bytes.truncate(end);
    bytes.remove(0, start);
    return bytes;
}

qsizetype incompleteUtf8Tail(QByteArrayView bytes)
{
    for (qsizetype back = 1; back <= qMin<qsizetype>(3, bytes.size()); ++back) {
        if (isContinuation(bytes[bytes.size() - back])) {
            continue;
        }
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
        const qsizetype length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC2 ? 2 : 1;
        return length > back && byte < 0xF5 ? back : 0; // 0xC0, 0xC1 and 0xF5 onwards begin no character
    }
    return 0;
}

} // namespace tidewright
