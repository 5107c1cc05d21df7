// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogTime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstring>

namespace tidewright {

namespace {

constexpr qsizetype shortest = 20; // 2026-03-01T09:30:00Z
constexpr qsizetype longest = log_time::longestTimestamp;
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

/// Behind the next line feed, or the end.
qint64 nextLine(const LogBytes &bytes, qint64 from)
{
    constexpr qint64 step = qint64(1) << 20;
    while (from < bytes.size()) {
        const QByteArrayView piece = bytes.piece(from, step);
        const void *found = std::memchr(piece.data(), '\n', static_cast<std::size_t>(piece.size()));
        if (found) {
            return from + (static_cast<const char *>(found) - piece.data()) + 1;
        }
        from += piece.size();
    }
    return from;
}

} // namespace

namespace log_time {

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

std::optional<qint64> nanoseconds(QByteArrayView timestamp)
{
    if (timestamp.size() < shortest || timestamp.size() > longest || !fitsDate(timestamp)) {
        return std::nullopt;
    }
    const auto seconds = secondsOf(timestamp);
    qsizetype at = shortest - 1;
    qint64 fraction = 0;
    if (timestamp[at] == '.') {
        qint64 unit = billion / 10;
        for (++at; at < timestamp.size() && isDigit(timestamp[at]); ++at, unit /= 10) {
            fraction += unit * (timestamp[at] - '0');
        }
    }
    const auto offset = zoneOffset(timestamp.sliced(at));
    if (!seconds || !offset) {
        return std::nullopt;
    }
    return (*seconds - *offset) * billion + fraction;
}

QByteArrayView leading(QByteArrayView line)
{
    const QByteArrayView begin = line.first(std::min(line.size(), longest + 1));
    const auto blank = std::find(begin.cbegin(), begin.cend(), ' ');
    const QByteArrayView timestamp = begin.first(blank - begin.cbegin());
    return blank != begin.cend() && nanoseconds(timestamp) ? timestamp : QByteArrayView();
}

std::optional<qint64> completed(const QString &text, QByteArrayView example)
{
    const QByteArray typed = text.trimmed().toLatin1();
    if (const auto whole = nanoseconds(typed)) {
        return whole;
    }
    const qsizetype zone = std::max({example.indexOf('Z'), example.indexOf('+'), example.lastIndexOf('-')});
    if (!nanoseconds(example) || zone < shortest - 1) {
        return std::nullopt;
    }
    QByteArrayList parts = typed.split(':');
    parts.resize(std::max<qsizetype>(parts.size(), 3), "00");
    for (QByteArray &part : parts) {
        part = part.rightJustified(2, '0');
    }
    const QByteArray whole
        = example.first(11).toByteArray() + parts.join(':') + example.sliced(zone).toByteArray();
    return nanoseconds(whole);
}

std::optional<qint64> firstLineSince(const LogBytes &bytes, qint64 moment)
{
    for (qint64 line = 0; line < bytes.size();) {
        const QByteArray begin = bytes.read(line, std::min<qint64>(longest + 1, bytes.size() - line));
        const QByteArrayView timestamp = leading(begin);
        if (!timestamp.isEmpty() && *nanoseconds(timestamp) >= moment) {
            return line;
        }
        line = nextLine(bytes, line);
    }
    return std::nullopt;
}

} // namespace log_time

} // namespace tidewright
