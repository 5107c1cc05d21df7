// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/view/LogLineCache.h"

#include <QAbstractScrollArea>

namespace tidewright {

/// Which part of a log document a scroll area shows, and its scroll bars. While it is at the end it follows
/// the text; scrolled up it stays where it is. Main thread; the document, the lines and the area outlive it.
class LogScroll : public QObject
{
    Q_OBJECT
public:
    /// The upper edge of the screen: a line and how many pixels of it lie above.
    struct Top
    {
        qint64 line = 0;
        int pixel = 0;

        friend auto operator<=>(const Top &, const Top &) = default;
    };

    LogScroll(QAbstractScrollArea &area, const LogDocument &document, LogLineCache &lines);

    const Top &top() const { return m_top; }
    /// Where the upper left corner of the top line lies on the screen.
    QPoint origin() const;
    int height() const { return m_area.viewport()->height(); }
    /// What a page key scrolls by, in pixels: whole rows.
    int pageHeight() const;
    /// The stored position of the first character on the screen.
    qint64 topPosition();
    /// The place in the text nearest to a point of the screen; there must be text.
    LogHit hitAt(QPoint point);

    /// Room to the left of the text, in pixels; it stays there when the text is scrolled sideways.
    void setGutter(int width);
    int gutter() const { return m_gutter; }
    bool isWrapping() const { return m_wrapping; }
    void setWrapping(bool wrapping);
    bool isFollowing() const { return m_following; }
    /// Scrolls to the end and stays there.
    void follow();
    void scrollTo(Top top);
    void scrollBy(qint64 pixels) { scrollTo(moved(m_top, pixels)); }
    /// Scrolls until a stored position can be seen, and follows no more.
    void reveal(qint64 position);
    /// Scrolls as a key asks for; false when it asks for nothing of the kind.
    bool takeKey(const QKeyEvent &event);
    /// What QAbstractScrollArea::scrollContentsBy is told.
    void barsMoved(int dx, int dy);

    /// Rows are laid out anew by `change`; the character at the top stays there.
    void keepTopWhile(const std::function<void()> &change);
    /// Brings the top of the screen, the scroll bars and the picture into line with the document.
    void refresh();
    /// The document shows something else.
    void replaced();

Q_SIGNALS:
    void followingChanged(bool following);

private:
    const LogAppearance &appearance() const { return m_lines.appearance(); }
    Top bottom();
    Top moved(Top from, qint64 pixels);
    void updateBars(const Top &bottom);
    void updateWrapWidth();
    void updateNeededWidth();
    void revealSideways(const LogHit &hit);

    static constexpr int margin = 14; ///< also room for the mark of a continued line

    QAbstractScrollArea &m_area;
    const LogDocument &m_document;
    LogLineCache &m_lines;
    int m_gutter = 0;
    bool m_wrapping = true;
    bool m_following = true;
    bool m_toldFollowing = true; ///< what the signal last said
    Top m_top;
    qint64 m_topLinePosition = 0; ///< where the top line begins in the store
    std::optional<qint64> m_wantedTop; ///< a stored position that what is shown has not reached yet
    qreal m_widest = 0; ///< of the lines that have been seen
};

} // namespace tidewright
