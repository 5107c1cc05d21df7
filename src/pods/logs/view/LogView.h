// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/view/LogSelection.h"

namespace tidewright {

/// Something that happened between two lines: drawn there, no part of the text.
struct LogMark
{
    qint64 position = 0; ///< of the first stored byte behind it
    QString text;
};

/// Shows the text of a log document, however long: only the lines on the screen are laid out. Paints, and
/// brings mouse and keys to what is shown (`scroll`) and what is selected (`selection`).
class LogView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    /// The document outlives the view.
    explicit LogView(LogDocument &document, QWidget *parent = nullptr);

    LogScroll &scroll() { return m_scroll; }
    LogSelection &selection() { return m_selection; }
    /// Of source n, entry n modulo their number; an invalid one stands for the view's own text colour.
    void setSourceColours(const QList<QColor> &colours);
    void setTextFont(const QFont &font);
    void setBackground(const QColor &color);
    const LogAppearance &appearance() const { return m_lines.appearance(); }
    /// Of source n, entry n: shown in front of its lines, while that is wanted.
    void setSourceNames(const QStringList &names);
    void showSourceNames(bool shown);
    bool showsSourceNames() const { return m_showsNames; }
    /// Behind all marks so far.
    void addMark(const LogMark &mark);
    void clearMarks();
    const std::vector<LogMark> &marks() const { return m_marks; }
    /// What stands in the view while there is no text.
    void setHint(const QString &hint);
    QString hint() const { return m_hint; }
    /// Larger (1), smaller (-1) or usual (0) text.
    void zoom(int direction);
    /// Marks what a pattern finds, and the match at a stored position (-1: none) more than others.
    void setHighlight(const LogPattern &pattern, qint64 current);
    /// The text on the screen.
    QString visibleText();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override { m_scroll.barsMoved(dx, dy); }
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
    void replaced();
    void updateGutter();
    void drawName(QPainter &painter, qint64 line, int y);
    void drawMarks(QPainter &painter, qint64 line, int y);
    std::vector<LogHighlight> highlights(qint64 line, const LogLineLayout &layout);

    LogDocument &m_document;
    QFont m_usualFont;
    int m_zoom = 0;
    LogLineCache m_lines;
    LogScroll m_scroll;
    LogSelection m_selection;
    QString m_hint;
    QStringList m_names; ///< of the sources
    bool m_showsNames = false;
    std::vector<LogMark> m_marks; ///< in ascending order
    qint64 m_currentMatch = -1;
};

} // namespace tidewright
