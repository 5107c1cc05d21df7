// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/streams/LogTimestamps.h"

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

constexpr qsizetype longest = log_time::longestTimestamp;

} // namespace

void LogTimestamps::resume()
{
    m_place = Place::Begin;
    m_begin.clear();
    if (!m_knownUntil) { // or the last stream has not come that far
        m_knownUntil = log_time::nanoseconds(m_last);
        m_knownLines = m_lines;
        m_knownBytes = m_bytes + m_toSkip;
    }
    m_lines = 0;
    m_toSkip = 0;
}

/// The begin of a line, once it is known what time it has; none when it has none.
void LogTimestamps::beginLine(QByteArrayView timestamp, QByteArray &result)
{
    m_place = timestamp.isEmpty() ? Place::Untimed : Place::Text;
    if (timestamp.isEmpty()) {
        return;
    }
    m_toSkip = 0;
    const bool isSame = timestamp == m_last;
    const qint64 moment = m_knownUntil ? *log_time::nanoseconds(timestamp) : 0;
    if (m_knownUntil && moment < *m_knownUntil) {
        m_place = Place::Skipped;
        return;
    }
    m_lines = isSame ? m_lines + 1 : 1;
    m_last = timestamp.toByteArray();
    if (m_knownUntil && moment == *m_knownUntil && m_lines < m_knownLines) {
        m_place = Place::Skipped;
        return;
    }
    if (m_knownUntil && moment == *m_knownUntil && m_lines == m_knownLines) {
        m_toSkip = m_knownBytes;
        m_bytes = 0;
        m_knownUntil.reset();
        return;
    }
    m_knownUntil.reset();
    m_bytes = 0;
    if (m_shown) {
        result += timestamp.toByteArray() + ' ';
    }
}

/// How many bytes of the piece belong to the begin of the line.
qsizetype LogTimestamps::takeBegin(QByteArrayView piece, QByteArray &result)
{
    const qsizetype before = m_begin.size();
    m_begin += piece.first(std::min(piece.size(), longest + 1 - before));
    const qsizetype blank = m_begin.indexOf(' ');
    const bool isWhole = blank >= 0 || m_begin.size() > longest || m_begin.contains('\n');
    if (!isWhole && log_time::fitsDate(m_begin)) {
        return piece.size();
    }
    const QByteArray begin = std::exchange(m_begin, {});
    const QByteArrayView timestamp = log_time::leading(begin);
    beginLine(timestamp, result);
    if (!timestamp.isEmpty()) {
        return timestamp.size() + 1 - before;
    }
    takeText(QByteArrayView(begin).first(before), result); // holds no line end
    return 0;
}

void LogTimestamps::takeText(QByteArrayView text, QByteArray &result)
{
    if (m_place == Place::Text) {
        const qint64 skipped = std::min<qint64>(m_toSkip, text.size());
        m_toSkip -= skipped;
        m_bytes += text.size();
        result += text.sliced(skipped);
    } else if (m_place == Place::Untimed) {
        result += text;
    }
}

QByteArray LogTimestamps::take(QByteArrayView piece)
{
    QByteArray result;
    result.reserve(piece.size());
    while (!piece.isEmpty()) {
        if (m_place == Place::Begin) {
            piece = piece.sliced(takeBegin(piece, result));
            continue;
        }
        const auto lineFeed = std::find(piece.cbegin(), piece.cend(), '\n');
        const bool isEnd = lineFeed != piece.cend();
        const qsizetype length = lineFeed - piece.cbegin() + (isEnd ? 1 : 0);
        takeText(piece.first(length), result);
        piece = piece.sliced(length);
        if (isEnd) {
            m_place = Place::Begin;
        }
    }
    return result;
}

QByteArray LogTimestamps::finish()
{
    QByteArray result;
    if (m_place == Place::Begin && !m_begin.isEmpty()) {
        const QByteArray begin = std::exchange(m_begin, {});
        beginLine({}, result);
        takeText(begin, result);
    }
    return result;
}

} // namespace tidewright
