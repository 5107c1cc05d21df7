// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/view/LogScroll.h"

#include <QElapsedTimer>

namespace tidewright {

/// The selected part of a log document, and how the mouse and the keyboard change it. It is a part of the
/// stored text, so it survives scrolling, filtering and arriving text. Main thread; what it is made with
/// outlives it.
class LogSelection : public QObject
{
    Q_OBJECT
public:
    LogSelection(const LogDocument &document, LogLineCache &lines, LogScroll &scroll);

    bool isEmpty() const { return m_anchor == m_cursor; }
    /// The selected bytes of the store, also those that are not shown.
    LogRange range() const;
    /// Those that are shown, and how many they are.
    std::vector<LogRange> shownRanges() const { return m_document.shownRanges(range()); }
    qint64 shownSize() const;
    void selectAll() { select(0, m_document.size()); }
    void clear() { select(0, 0); }
    /// Puts the selected text on the clipboard; a long one a little later, from the background.
    void copy();

    /// The left button at a point of the screen; `extend` moves the free end of what is selected already.
    void press(QPoint point, bool extend);
    void doubleClick(QPoint point);
    /// Scrolls while the point lies beyond the screen.
    void drag(QPoint point);
    void release();
    /// Leaves the selection as it is.
    void stopDragging();
    /// Moves the free end; one that has not been begun begins at the top of the screen. False when the key
    /// moves nothing.
    bool takeKey(const QKeyEvent &event);

Q_SIGNALS:
    void changed();
    /// Something that the user should know, as a sentence.
    void noticed(const QString &sentence);

private:
    enum class Unit { Character, Word, Line };

    void select(qint64 anchor, qint64 cursor);
    LogRange unitAround(const LogHit &hit, Unit unit);
    void start(QPoint point, Unit unit, bool extend);
    void extendTo(QPoint point);
    void scrollWhileDragging();
    LogHit hitAfter(LogHit from, int key, bool toEnd);
    LogHit hitRowsAway(LogHit from, qint64 rows);

    const LogDocument &m_document;
    LogLineCache &m_lines;
    LogScroll &m_scroll;
    qint64 m_anchor = 0; ///< stored positions
    qint64 m_cursor = 0;
    Unit m_unit = Unit::Character;
    LogRange m_pressed; ///< what the mouse was pressed on
    bool m_dragging = false;
    QPoint m_dragPoint;
    QTimer m_dragTimer;
    QElapsedTimer m_sinceDoubleClick;
};

} // namespace tidewright
