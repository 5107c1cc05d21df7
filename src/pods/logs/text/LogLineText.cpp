// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogLineText.h"

#include "platform/text/TerminalText.h"
#include "platform/text/Utf8.h"
#include "pods/logs/text/SgrSequence.h"

#include <algorithm>

namespace tidewright {

namespace {

constexpr qsizetype tabStop = 8;
constexpr char16_t escape = 0x1B;
constexpr char16_t controlSequence = 0x9B;
constexpr QChar signForNul(0x2400);

bool isControl(char16_t unit)
{
    return unit < 0x20 || terminal_text::isBetween(unit, 0x7F, 0x9F);
}

QChar harmless(char16_t unit)
{
    const bool separates = unit == 0x2028 || unit == 0x2029;
    return terminal_text::isReserved(unit) ? QChar(QChar::ReplacementCharacter)
        : separates                        ? QChar(u' ')
                                           : QChar(unit);
}

class Builder
{
public:
    Builder(QByteArrayView line, const std::vector<SourceRuns::Run> &sources, const LogLook &look)
        : m_bytes(line)
        , m_input(shownUtf8(line))
        , m_sources(sources)
        , m_look(look)
    {
        m_line.text.reserve(m_input.size());
        m_line.bytes.reserve(static_cast<std::size_t>(m_input.size()) + 1);
    }

    LogLineText build()
    {
        const QStringView input(m_input);
        terminal_text::EscapeReader<QStringView> escapes(input);
        for (qsizetype at = 0; at < input.size();) {
            const char16_t unit = input[at].unicode();
            if (unit == escape || unit == controlSequence) {
                const qsizetype end = escapes.endAt(at);
                applySgr(input.sliced(at, end - at), m_look);
                skip(input, at, end);
                at = end;
                continue;
            }
            take(unit);
            skip(input, at, at + 1);
            ++at;
        }
        m_line.bytes.push_back(m_end);
        m_line.lookBehind = m_look;
        return std::move(m_line);
    }

private:
    void skip(QStringView input, qsizetype from, qsizetype to)
    {
        m_byte += static_cast<qint32>(bytesShownAs(input.sliced(from, to - from), m_bytes.sliced(m_byte)));
        if (!isLineEnd(input[to - 1])) {
            m_end = m_byte;
        }
        while (m_source + 1 < m_sources.size() && m_byte >= m_sources[m_source].range.end()) {
            ++m_source;
        }
    }

    static bool isLineEnd(QChar c) { return c == u'\n' || c == u'\r'; }

    void take(char16_t unit)
    {
        if (unit == 0) {
            put(signForNul);
        } else if (unit == u'\t') {
            do {
                put(u' ');
            } while (m_line.text.size() % tabStop != 0);
        } else if (unit == u'\b') {
            eraseLast();
        } else if (!isControl(unit) && !terminal_text::changesDirection(unit)) {
            put(harmless(unit));
        }
    }

    void put(QChar c)
    {
        m_look.source = m_sources.empty() ? 0 : m_sources[m_source].source;
        if (m_line.runs.empty() || m_line.runs.back().look != m_look) {
            m_line.runs.push_back({m_line.text.size(), m_look});
        }
        m_line.isGrid = m_line.isGrid && terminal_text::isBetween(c.unicode(), 0x20, 0x7E);
        m_line.text.append(c);
        m_line.bytes.push_back(m_byte);
    }

    /// Takes back the last character, as a backspace followed by another character does on paper.
    void eraseLast()
    {
        const bool pair = m_line.text.size() > 1 && m_line.text.back().isLowSurrogate();
        for (int i = 0; i < (pair ? 2 : 1) && !m_line.text.isEmpty(); ++i) {
            m_line.text.chop(1);
            m_line.bytes.pop_back();
        }
        while (!m_line.runs.empty() && m_line.runs.back().start >= m_line.text.size()) {
            m_line.runs.pop_back();
        }
    }

    const QByteArrayView m_bytes;
    const QString m_input;
    const std::vector<SourceRuns::Run> &m_sources;
    LogLineText m_line;
    LogLook m_look;
    std::size_t m_source = 0;
    qint32 m_byte = 0;
    qint32 m_end = 0; ///< behind the last byte that is not part of the line's end
};

} // namespace

qsizetype LogLineText::unitOf(qint64 byte) const
{
    const auto found = std::lower_bound(bytes.cbegin(), bytes.cend(), byte);
    return std::min<qsizetype>(found - bytes.cbegin(), text.size());
}

LogLineText makeLineText(
    QByteArrayView line, const std::vector<SourceRuns::Run> &sources, const LogLook &look)
{
    return Builder(line, sources, look).build();
}

PlainLine::PlainLine(QByteArrayView line)
{
    const QLatin1String text(line); // escape sequences are ASCII
    terminal_text::EscapeReader<QLatin1String> escapes(text);
    m_bytes.reserve(line.size());
    for (qsizetype at = 0; at < line.size();) {
        if (line[at] == '\x1b') {
            at = escapes.endAt(at);
            continue;
        }
        qsizetype end = line.indexOf('\x1b', at);
        end = end < 0 ? line.size() : end;
        m_parts.push_back({m_bytes.size(), at});
        m_bytes.append(line.sliced(at, end - at));
        at = end;
    }
}

qint64 PlainLine::place(qint64 index) const
{
    const auto behind = std::upper_bound(m_parts.cbegin(), m_parts.cend(), index,
        [](qint64 wanted, const Part &part) { return wanted < part.index; });
    const Part &part = *std::prev(behind);
    return part.place + index - part.index;
}

QString plainText(QByteArray bytes)
{
    if (bytes.contains('\0')) {
        bytes.replace(QByteArray(1, '\0'), QString(signForNul).toUtf8());
    }
    return terminal_text::withoutControls(shownUtf8(bytes));
}

} // namespace tidewright
