// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/store/LineSplitter.h"

#include "platform/text/TerminalText.h"
#include "platform/text/Utf8.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <cstring>

namespace tidewright {

namespace {

constexpr qint64 lookBack = 256;
constexpr qint64 lookAhead = 64;
constexpr qint64 windowBegin = LineSplitter::longestLine - lookBack;
constexpr qint64 windowEnd = LineSplitter::longestLine + lookAhead;

qsizetype outsideOfEscape(const QByteArray &window, qsizetype cut)
{
    const qsizetype escape = QByteArrayView(window).first(cut).lastIndexOf('\x1b');
    if (escape <= 0) {
        return cut;
    }
    return terminal_text::EscapeReader(QLatin1String(window)).endAt(escape) > cut ? escape : cut;
}

/// How many of the window's bytes still belong to the line.
qsizetype cutIn(const QByteArray &window)
{
    qsizetype begin = 0;
    while (begin < 3 && isContinuation(window[begin])) {
        ++begin;
    }
    qsizetype cut = lookBack;
    while (cut > lookBack - 3 && isContinuation(window[cut])) {
        --cut;
    }
    const QByteArrayView bytes = QByteArrayView(window).sliced(begin);
    const QString before = shownUtf8(bytes.first(cut - begin));
    const QString text = before + shownUtf8(bytes.sliced(cut - begin));
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(before.size());
    if (!finder.isAtBoundary() && finder.toPreviousBoundary() > 0) {
        cut = begin + bytesShownAs(QStringView(before).left(finder.position()), bytes);
    }
    return outsideOfEscape(window, cut);
}

/// The next of these bytes, or the end.
const char *next(const char *from, const char *end, char byte)
{
    const void *found = std::memchr(from, byte, static_cast<std::size_t>(end - from));
    return found ? static_cast<const char *>(found) : end;
}

} // namespace

void LineSplitter::feed(QByteArrayView piece, std::vector<qint64> &starts)
{
    const char *at = piece.data();
    const char *const end = at + piece.size();
    const char *lineFeed = nullptr;
    const char *carriageReturn = nullptr;
    while (at < end) {
        if (m_place == Place::BehindReturn) {
            m_place = Place::BehindEnd;
            if (*at == '\n') {
                ++at;
                ++m_position;
                continue;
            }
        }
        if (m_place == Place::BehindEnd) {
            m_place = Place::Inside;
            m_length = 0;
            m_window.clear();
            ++m_lines;
            starts.push_back(m_position);
        }
        if (!lineFeed || lineFeed < at) {
            lineFeed = next(at, end, '\n');
        }
        if (!carriageReturn || carriageReturn < at) {
            carriageReturn = next(at, end, '\r');
        }
        const char *stop = std::min(lineFeed, carriageReturn);
        takeText(at, stop - at, starts);
        at = stop;
        if (at < end) {
            m_place = *at == '\n' ? Place::BehindEnd : Place::BehindReturn;
            ++at;
            ++m_position;
        }
    }
}

void LineSplitter::takeText(const char *text, qint64 length, std::vector<qint64> &starts)
{
    const auto pass = [&](qint64 count) {
        text += count;
        length -= count;
        m_length += count;
        m_position += count;
    };
    while (length > 0) {
        if (m_length < windowBegin) {
            pass(std::min(length, windowBegin - m_length));
            continue;
        }
        const qint64 count = std::min(length, windowEnd - m_length);
        m_window.append(text, count);
        pass(count);
        if (m_length == windowEnd) {
            m_length = m_window.size() - cutIn(m_window);
            starts.push_back(m_position - m_length);
            m_window.clear();
        }
    }
}

} // namespace tidewright
