// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/view/LogLineCache.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>

namespace tidewright {

/// Shows the text of a log document, however long: only the lines on the screen are laid out. While it is
/// scrolled to the end it follows the text; scrolled up it stays where it is. Selections are parts of the
/// stored text, so they survive scrolling, filtering and arriving text.
class LogView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    /// The document outlives the view.
    explicit LogView(LogDocument &document, QWidget *parent = nullptr);

    LogDocument &document() const { return m_document; }
    /// Of source n, entry n modulo their number; an invalid one stands for the view's own text colour.
    void setSourceColours(const QList<QColor> &colours);
    void setTextFont(const QFont &font);
    void setBackground(const QColor &color);
    const LogAppearance &appearance() const { return m_lines.appearance(); }
    /// What stands in the view while there is no text.
    void setHint(const QString &hint);
    QString hint() const { return m_hint; }

    bool isWrapping() const { return m_wrapping; }
    void setWrapping(bool wrapping);
    /// Larger (1), smaller (-1) or usual (0) text.
    void zoom(int direction);

    bool isFollowing() const { return m_following; }
    /// Scrolls to the end and stays there.
    void follow();
    /// Scrolls until a part of the stored text can be seen, and follows no more.
    void reveal(const LogRange &range);
    /// The stored position of the first character on the screen.
    qint64 topPosition();
    /// The line at the top of the screen and how many pixels of it lie above.
    std::pair<qint64, int> top() const { return {m_top.line, m_top.pixel}; }

    /// Marks what a pattern finds, and the match at a stored position (-1: none) more than others.
    void setHighlight(const LogPattern &pattern, qint64 current);

    bool hasSelection() const { return m_anchor != m_cursor; }
    /// The bytes of it that are shown.
    qint64 selectedSize() const;
    /// The selected bytes of the store, those that are shown.
    std::vector<LogRange> selectedRanges() const;
    void selectAll();
    /// Puts the selected text on the clipboard; a long one a little later, from the background.
    void copy();
    /// The text on the screen.
    QString visibleText();

Q_SIGNALS:
    void followingChanged(bool following);
    void selectionChanged();
    /// Something that the user should know, as a sentence.
    void noticed(const QString &sentence);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Top
    {
        qint64 line = 0;
        int pixel = 0;

        friend auto operator<=>(const Top &, const Top &) = default;
    };
    enum class Unit { Character, Word, Line };
    struct Hit
    {
        qint64 line = 0;
        int row = 0;
        qsizetype unit = 0;
    };

    // Scrolling
    void refresh();
    void replaced();
    void updateScrollBars(const Top &bottom);
    Top bottom();
    Top moved(Top from, qint64 pixels);
    void scrollBy(qint64 pixels);
    void setTop(Top top);
    void keepTopWhile(const std::function<void()> &change);
    void updateWrapWidth();
    void updateNeededWidth();
    int lineHeight(qint64 line) { return m_lines.rows(line) * appearance().rowHeight; }
    int pageHeight() const;
    qint64 lastLine() const { return m_document.shown().lineCount() - 1; }

    // Painting
    static constexpr int margin = 14; ///< also room for the mark of a continued line
    std::vector<LogHighlight> highlights(qint64 line, const LogLineLayout &layout);

    // Selecting
    Hit hitAt(QPoint point);
    Hit hitOf(qint64 position);
    qint64 positionOf(const Hit &hit);
    LogRange unitAround(const Hit &hit, Unit unit);
    void startSelection(QPoint point, Unit unit, bool extend);
    void dragTo(QPoint point);
    void select(qint64 anchor, qint64 cursor);
    bool moveCursor(QKeyEvent *event);
    Hit hitAfter(Hit from, int key, bool toEnd);
    Hit hitRowsAway(Hit from, qint64 rows);
    void scrollByKey(QKeyEvent *event);
    void scrollWhileDragging();

    LogDocument &m_document;
    LogLineCache m_lines;
    QFont m_usualFont;
    int m_zoom = 0;
    bool m_wrapping = true;
    bool m_following = true;
    bool m_toldFollowing = true; ///< what the signal last said
    Top m_top;
    qint64 m_topLinePosition = 0; ///< where the top line begins in the store
    std::optional<qint64> m_wantedTop; ///< a stored position that what is shown has not reached yet
    qreal m_widest = 0; ///< of the lines that have been seen
    QString m_hint;

    qint64 m_current = -1;

    qint64 m_anchor = 0; ///< of the selection, stored positions
    qint64 m_cursor = 0;
    Unit m_unit = Unit::Character;
    LogRange m_pressed; ///< what the mouse was pressed on
    bool m_dragging = false;
    QPoint m_dragPoint;
    QTimer m_dragTimer;
    QElapsedTimer m_sinceDoubleClick;
};

} // namespace tidewright
