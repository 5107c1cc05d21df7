// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/text/LogDocument.h"
#include "pods/logs/view/LogLineLayout.h"

#include <QCache>

namespace tidewright {

/// A place in the text of the laid-out lines: before a UTF-16 unit, or behind the last one, of a line.
struct LogHit
{
    qint64 line = 0;
    int row = 0; ///< of the line's
    qsizetype unit = 0;
};

/// The lines of a document laid out for a view, those that were used last. Main thread; the document outlives
/// it.
class LogLineCache
{
public:
    explicit LogLineCache(const LogDocument &document, const LogAppearance &appearance = {});

    /// A line's layout, good until the next call of any of these.
    const LogLineLayout &layout(qint64 line);
    /// The bytes of a line as shown.
    QByteArray bytes(qint64 line) const;
    /// Whether a line goes on with one that was too long.
    bool continues(qint64 line) const;
    /// What is looked for.
    void setPattern(const LogPattern &pattern);
    /// The matches that reach into a line, in its bytes; a match may begin before it and end behind it. Good
    /// until the next call of any of these.
    const std::vector<LogRange> &matches(qint64 line);
    int rows(qint64 line) { return m_wrapWidth > 0 ? layout(line).rows() : 1; }
    /// In pixels.
    int height(qint64 line) { return rows(line) * m_appearance.rowHeight; }
    /// The last line; -1 when there is none.
    qint64 last() const { return m_document.shown().lineCount() - 1; }
    /// The place of a stored position (of the next one that is shown, should it not be), and back. There must
    /// be text.
    LogHit hitOf(qint64 position);
    qint64 positionOf(const LogHit &hit);

    const LogAppearance &appearance() const { return m_appearance; }
    /// To be changed through this alone: all layouts go.
    LogAppearance &changeAppearance();
    /// 0 does not wrap.
    void setWrapWidth(qreal width);
    /// Without wrapping, what lies farther to the right than this need not be laid out.
    void setNeededWidth(qreal width) { m_neededWidth = width; }
    /// Something else is shown.
    void clear();

private:
    struct Entry
    {
        qint64 end; ///< the last line of a text may grow
        LogLineLayout layout;
    };

    struct Found
    {
        qint64 end; ///< of the text that was looked at
        std::vector<LogRange> ranges;
    };

    LogLineText textOf(qint64 line, const LogLook &look) const;
    LogLook lookBefore(qint64 line);

    const LogDocument &m_document;
    LogAppearance m_appearance;
    qreal m_wrapWidth = 0;
    qreal m_neededWidth = 0;
    QCache<qint64, Entry> m_lines;
    LogPattern m_pattern;
    QCache<qint64, Found> m_found;
};

} // namespace tidewright
