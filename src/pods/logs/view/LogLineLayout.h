// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/text/LogLineText.h"

#include <QFont>
#include <QPainter>
#include <QTextLayout>

namespace tidewright {

/// What all lines of a log view have in common.
struct LogAppearance
{
    QFont font; ///< of fixed pitch
    qreal cellWidth = 0;
    int rowHeight = 0;
    int ascent = 0;
    QColor background;
    QColor text; ///< of a source without a colour
    QList<QColor> sources; ///< source n takes entry n modulo their number; invalid ones stand for none

    void measure(const QFont &newFont);
    /// Of the characters: what the look asks for, or one that can be told from what is behind it.
    QColor colourOf(const LogLook &look) const;
    QColor wantedColour(const LogLook &look) const;
    QColor backgroundOf(const LogLook &look) const; ///< invalid when it is the view's own
};

/// A part of a line in a colour of its own, in UTF-16 units.
struct LogHighlight
{
    qsizetype start = 0;
    qsizetype end = 0;
    QColor background;
    QColor text;
};

/// One line of a log, laid out in rows of equal height. Lines of one-cell characters are drawn straight from
/// a grid, others through a text layout, which knows wide, combining and right-to-left characters. Main
/// thread.
class LogLineLayout
{
public:
    /// Rows are at most `width` wide; 0 does not wrap, and then only the first `needed` pixels are sure to be
    /// laid out.
    LogLineLayout(LogLineText text, const LogAppearance &appearance, qreal width, qreal needed);
    LogLineLayout(const LogLineLayout &) = delete;
    LogLineLayout &operator=(const LogLineLayout &) = delete;

    const LogLineText &text() const { return m_text; }
    int rows() const { return m_rows; }
    /// Of the widest row; a guess when not all is laid out.
    qreal width() const;
    /// Whether the first so many pixels are laid out.
    bool covers(qreal needed) const { return m_laidOut == m_text.text.size() || m_widest >= needed; }
    /// The row of a unit, and its horizontal place.
    int rowOf(qsizetype unit) const;
    qreal xOf(qsizetype unit) const;
    /// The first unit of a row, and the one nearest to a point.
    qsizetype rowStart(int row) const;
    qsizetype unitAt(int row, qreal x) const;

    /// Draws the rows from `firstRow` to before `lastRow` with the line's upper left corner at `origin`, as
    /// far as they lie between `left` and `right`. Highlights that come later lie above.
    void draw(QPainter &painter, QPointF origin, int firstRow, int lastRow, qreal left, qreal right,
        const std::vector<LogHighlight> &highlights) const;

private:
    void layOut(qreal width, qsizetype units);
    void drawGridRow(QPainter &painter, QPointF origin, int row, qreal left, qreal right,
        const std::vector<LogHighlight> &highlights) const;
    void drawCells(QPainter &painter, QPointF origin, qsizetype start, qsizetype end, const LogLook &look,
        const LogHighlight *highlight) const;
    QTextCharFormat formatOf(const LogLook &look) const;

    const LogLineText m_text;
    const LogAppearance &m_appearance;
    int m_rows = 1;
    qsizetype m_laidOut = 0; ///< units, all but in a long line that is not wrapped
    qreal m_widest = 0; ///< of what is laid out
    qsizetype m_columns = 0; ///< of a grid's row
    std::unique_ptr<QTextLayout> m_layout; ///< null for a grid
};

} // namespace tidewright
