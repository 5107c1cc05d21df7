// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/streams/LogTimestamps.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <utility>

namespace tidewright {

namespace {

constexpr qsizetype shortest = 20; // 2026-03-01T09:30:00Z
constexpr qsizetype longest = 35; // nine digits behind the point and +02:00
constexpr qint64 billion = 1'000'000'000;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<int> number(QByteArrayView text, qsizetype from, qsizetype length)
{
    int value = 0;
    const char *const begin = text.data() + from;
    const auto [end, error] = std::from_chars(begin, begin + length, value);
    return error == std::errc() && end == begin + length && isDigit(*begin) ? std::optional(value)
                                                                            : std::nullopt;
}

/// Whether the bytes can be the begin of "2026-03-01T09:30:00": '0' stands for any digit.
bool fitsDate(QByteArrayView text)
{
    static constexpr QByteArrayView form("0000-00-00T00:00:00");
    for (qsizetype i = 0; i < std::min(text.size(), form.size()); ++i) {
        if (form[i] == '0' ? !isDigit(text[i]) : text[i] != form[i]) {
            return false;
        }
    }
    return true;
}

/// In seconds: of "Z", "+02:00", "-05:30".
std::optional<int> zoneOffset(QByteArrayView zone)
{
    if (zone == "Z") {
        return 0;
    }
    if (zone.size() != 6 || (zone[0] != '+' && zone[0] != '-') || zone[3] != ':') {
        return std::nullopt;
    }
    const auto hours = number(zone, 1, 2);
    const auto minutes = number(zone, 4, 2);
    if (!hours || !minutes) {
        return std::nullopt;
    }
    const int seconds = *hours * 3600 + *minutes * 60;
    return zone[0] == '-' ? -seconds : seconds;
}

std::optional<qint64> secondsOf(QByteArrayView text)
{
    std::array<int, 6> parts{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        static constexpr std::array<qsizetype, 6> places{0, 5, 8, 11, 14, 17};
        const auto part = number(text, places[i], i == 0 ? 4 : 2);
        if (!part) {
            return std::nullopt;
        }
        parts[i] = *part;
    }
    namespace time = std::chrono;
    const time::year_month_day day{time::year(parts[0]), time::month(static_cast<unsigned>(parts[1])),
        time::day(static_cast<unsigned>(parts[2]))};
    if (!day.ok() || parts[3] > 23 || parts[4] > 59 || parts[5] > 60) {
        return std::nullopt;
    }
    return time::seconds(time::sys_days(day).time_since_epoch()).count() + parts[3] * 3600 + parts[4] * 60
        + parts[5];
}

} // namespace

std::optional<qint64> logNanoseconds(QByteArrayView timestamp)
{
    if (timestamp.size() < shortest || timestamp.size() > longest || !fitsDate(timestamp)) {
        return std::nullopt;
    }
    const auto seconds = secondsOf(timestamp);
    qsizetype at = shortest - 1;
    qint64 nanoseconds = 0;
    if (timestamp[at] == '.') {
        qint64 unit = billion / 10;
        for (++at; at < timestamp.size() && isDigit(timestamp[at]); ++at, unit /= 10) {
            nanoseconds += unit * (timestamp[at] - '0');
        }
    }
    const auto offset = zoneOffset(timestamp.sliced(at));
    if (!seconds || !offset) {
        return std::nullopt;
    }
    return (*seconds - *offset) * billion + nanoseconds;
}

QByteArrayView leadingTimestamp(QByteArrayView line)
{
    const QByteArrayView begin = line.first(std::min(line.size(), longest + 1));
    const auto blank = std::find(begin.cbegin(), begin.cend(), ' ');
    const QByteArrayView timestamp = begin.first(blank - begin.cbegin());
    return blank != begin.cend() && logNanoseconds(timestamp) ? timestamp : QByteArrayView();
}

void LogTimestamps::resume()
{
    m_place = Place::Begin;
    m_begin.clear();
    if (!m_knownUntil) { // or the last stream has not come that far
        m_knownUntil = logNanoseconds(m_last);
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
    const qint64 moment = m_knownUntil ? *logNanoseconds(timestamp) : 0;
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
    if (!isWhole && fitsDate(m_begin)) {
        return piece.size();
    }
    const QByteArray begin = std::exchange(m_begin, {});
    const QByteArrayView timestamp = leadingTimestamp(begin);
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
