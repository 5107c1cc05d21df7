// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/LogDocument.h"
#include "pods/LogLineLayout.h"

#include <QCache>

namespace tidewright {

/// The lines of a document laid out for a view, those that were used last. Main thread; the document outlives
/// it.
class LogLineCache
{
public:
    explicit LogLineCache(const LogDocument &document);

    /// A line's layout, good until the next call of any of these.
    const LogLineLayout &layout(qint64 line);
    /// The bytes of a line as shown.
    QByteArray bytes(qint64 line) const;
    int rows(qint64 line) { return m_wrapWidth > 0 ? layout(line).rows() : 1; }

    const LogAppearance &appearance() const { return m_appearance; }
    /// To be changed through this alone: all layouts go.
    LogAppearance &changeAppearance();
    /// 0 does not wrap.
    void setWrapWidth(qreal width);
    /// Without wrapping, what lies farther to the right than this need not be laid out.
    void setNeededWidth(qreal width) { m_neededWidth = width; }
    /// Something else is shown.
    void clear() { m_lines.clear(); }

private:
    struct Entry
    {
        qint64 end; ///< the last line of a text may grow
        LogLineLayout layout;
    };

    const LogDocument &m_document;
    LogAppearance m_appearance;
    qreal m_wrapWidth = 0;
    qreal m_neededWidth = 0;
    QCache<qint64, Entry> m_lines;
};

} // namespace tidewright
