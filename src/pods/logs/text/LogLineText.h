// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/store/SourceRuns.h"
#include "pods/logs/text/LogLook.h"

#include <QString>

namespace tidewright {

/// What one line of a log shows: its characters without escape sequences and control characters, tabs filled
/// up with spaces, NUL as a visible sign.
struct LogLineText
{
    struct Run
    {
        qsizetype start; ///< the first UTF-16 unit
        LogLook look;
    };

    QString text;
    /// For each UTF-16 unit, and for the end, the byte of the line that it comes from.
    std::vector<qint32> bytes;
    std::vector<Run> runs; ///< each goes on to the next
    LogLook lookBehind; ///< what a text that goes on with this one begins with
    bool isGrid = true; ///< every unit is a character of one cell, drawn from left to right

    /// The first unit that comes from that byte or one behind.
    qsizetype unitOf(qint64 byte) const;
};

/// The line's end, if it has one, is left out; bytes that are not UTF-8 show as U+FFFD. The runs cover it, in
/// bytes from its begin, which has that look. Any thread.
LogLineText makeLineText(
    QByteArrayView line, const std::vector<SourceRuns::Run> &sources, const LogLook &look = {});

/// A line without its escape sequences.
class PlainLine
{
public:
    explicit PlainLine(QByteArrayView line);

    const QByteArray &bytes() const { return m_bytes; }
    /// The place in the line of one of these bytes.
    qint64 place(qint64 index) const;

private:
    struct Part
    {
        qint64 index; ///< of its first byte among those that are left
        qint64 place;
    };

    QByteArray m_bytes;
    std::vector<Part> m_parts;
};

/// A part of a log as text for other programs: without escape sequences and control characters, but with
/// tabs; lines end with a line feed.
QString plainText(QByteArray bytes);

} // namespace tidewright
