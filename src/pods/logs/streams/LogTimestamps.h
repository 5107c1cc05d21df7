// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/text/LogTime.h"

#include <QByteArray>

#include <optional>

namespace tidewright {

/// Reads the output of a `kubectl logs --timestamps` of one container, so that its next stream can begin
/// where the last one has ended: kubectl takes whole seconds (`--since-time`) and repeats the lines of the
/// last one; those are left out here, also the begin of one that was cut. One stream at a time uses it, on
/// its thread; the next one may once that has ended.
class LogTimestamps
{
public:
    /// The timestamps are part of what is handed on when they are to be `shown`.
    explicit LogTimestamps(bool shown)
        : m_shown(shown)
    {
    }

    /// The next stream begins, at `last()` or before.
    void resume();
    /// What is new of a piece of output, cut anywhere.
    QByteArray take(QByteArrayView piece);
    /// What was held back: the stream has ended.
    QByteArray finish();
    /// The timestamp of the last line; empty before the first.
    const QByteArray &last() const { return m_last; }

private:
    enum class Place { Begin, Text, Untimed, Skipped };

    void beginLine(QByteArrayView timestamp, QByteArray &result);
    qsizetype takeBegin(QByteArrayView piece, QByteArray &result);
    void takeText(QByteArrayView text, QByteArray &result);

    const bool m_shown;
    Place m_place = Place::Begin;
    QByteArray m_begin; ///< of a line, while it may still be part of a timestamp
    QByteArray m_last;
    int m_lines = 0; ///< that have this timestamp
    qint64 m_bytes = 0; ///< of the text of the last of them, with its end

    // While what is known already comes once more:
    std::optional<qint64> m_knownUntil; ///< nanoseconds
    int m_knownLines = 0; ///< of that moment
    qint64 m_knownBytes = 0; ///< of the last of these
    qint64 m_toSkip = 0; ///< bytes of the line
};

} // namespace tidewright
