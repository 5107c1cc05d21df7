// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogPattern.h"

#include "platform/text/Utf8.h"
#include "pods/logs/text/LogLineText.h"

#include <algorithm>
#include <cstring>

namespace tidewright {

namespace {

constexpr qsizetype windowLength = 64 * 1024;
constexpr qsizetype windowOverlap = 4 * 1024;

bool isAscii(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() < 0x80; });
}

char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

/// Where the bytes stand next, in whatever case; null when nowhere.
const char *findInAnyCase(const char *from, const char *end, const QByteArray &lower)
{
    const auto found = std::search(
        from, end, lower.cbegin(), lower.cend(), [](char a, char b) { return lowerCase(a) == b; });
    return found == end ? nullptr : found;
}

/// The place at or before `at` where a character begins, or the end.
qsizetype characterBegin(QByteArrayView line, qsizetype at)
{
    if (at >= line.size()) {
        return line.size();
    }
    for (qsizetype begin = at; begin >= std::max<qsizetype>(0, at - 3); --begin) {
        if (!isContinuation(line[begin])) {
            return begin;
        }
    }
    return at; // part of no character
}

/// The text as an expression that matches it alone.
QString quoted(const QString &text)
{
    QString pattern;
    for (const QChar c : text) {
        if (c.unicode() < 0x80 && !c.isLetterOrNumber()) {
            pattern += QLatin1Char('\\');
        }
        pattern += c;
    }
    return pattern;
}

} // namespace

LogPattern::LogPattern(const QString &text, bool caseSensitive, bool isRegularExpression)
    : m_text(text)
    , m_caseSensitive(caseSensitive)
    , m_isExpression(isRegularExpression)
    , m_isBytes(!isRegularExpression && (caseSensitive || isAscii(text))
          && !text.contains(QChar::ReplacementCharacter)) // which may stand for any byte
{
    if (m_isBytes) {
        m_bytes = caseSensitive ? text.toUtf8() : text.toLower().toUtf8();
        return;
    }
    QString pattern = isRegularExpression ? text : quoted(text);
    if (!caseSensitive) {
        pattern.prepend(QLatin1String("(?i)"));
    }
    m_expression = RegularExpression(pattern);
}

LogPattern LogPattern::quick() const
{
    LogPattern other = *this;
    other.m_expression = m_expression.withEffort(RegularExpression::quickEffort);
    return other;
}

LogPattern::Matches LogPattern::matches(QByteArrayView line, std::size_t most) const
{
    Matches result;
    if (isEmpty() || line.isEmpty()) {
        return result;
    }
    const auto find = [&](QByteArrayView text) {
        m_isBytes ? findBytes(text, most, result.ranges) : findExpression(text, most, result);
    };
    if (!std::memchr(line.data(), '\x1b', static_cast<std::size_t>(line.size()))) {
        find(line);
        return result;
    }
    const PlainLine plain(line);
    find(plain.bytes());
    for (LogRange &range : result.ranges) {
        const qint64 start = plain.place(range.start);
        const qint64 end = range.length > 0 ? plain.place(range.end() - 1) + 1 : start;
        range = {start, end - start};
    }
    return result;
}

void LogPattern::findBytes(QByteArrayView line, std::size_t most, std::vector<LogRange> &found) const
{
    const char *const end = line.data() + line.size();
    const char *at = line.data();
    while (found.size() < most && at < end) {
        at = m_caseSensitive ? static_cast<const char *>(::memmem(at, static_cast<std::size_t>(end - at),
                 m_bytes.constData(), static_cast<std::size_t>(m_bytes.size())))
                             : findInAnyCase(at, end, m_bytes);
        if (!at) {
            return;
        }
        found.push_back({at - line.data(), m_bytes.size()});
        at += m_bytes.size();
    }
}

void LogPattern::findExpression(QByteArrayView line, std::size_t most, Matches &result) const
{
    std::vector<LogRange> &found = result.ranges;
    for (qsizetype start = 0; start < line.size() && found.size() < most;) {
        // What stands before the window is seen, so that it is no begin of the line or of a word.
        const qsizetype seen = characterBegin(line, std::max<qsizetype>(0, start - windowOverlap));
        const qsizetype end = characterBegin(line, start + windowLength);
        const bool isLast = end == line.size();
        const QString text = shownUtf8(line.sliced(seen, end - seen));
        const QStringView view(text);
        qint64 unit = start == 0 ? 0 : shownUtf8(line.sliced(seen, start - seen)).size();
        qint64 byte = start;
        // What begins in the overlap is left to the next window.
        const qsizetype limit = isLast ? line.size() : characterBegin(line, end - windowOverlap);
        const RegularExpression::Matches matches
            = m_expression.nonEmptyMatches(text, unit, most - found.size());
        result.cutOff = result.cutOff || matches.cutOff;
        for (const TextRange &range : matches.ranges) {
            byte += bytesShownAs(view.mid(unit, range.start - unit), line.sliced(byte));
            unit = range.start;
            if (byte >= limit) {
                break;
            }
            found.push_back({byte, bytesShownAs(view.mid(range.start, range.length), line.sliced(byte))});
        }
        start = found.empty() ? limit : std::max<qsizetype>(limit, found.back().end());
    }
}

} // namespace tidewright
