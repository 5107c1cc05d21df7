// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollArea>
#include <QTimer>

class QGraphicsOpacityEffect;
class QPropertyAnimation;
class QTableWidget;

namespace tidewright {

/// The cell of the colour index that shows a source's colour.
class ColorBoxCellView : public QWidget
{
    Q_OBJECT
public:
    explicit ColorBoxCellView(QWidget *parent = nullptr);

    QFrame *colorBox() const { return m_colorBox; }
    /// An invalid colour leaves the box unfilled, with its frame alone.
    void setColor(const QColor &color);

private:
    QFrame *m_colorBox;
};

/// The panel over the log that names each source beside its colour, and says how it is doing. It fades while
/// the pointer and the keyboard are elsewhere, so that the log can be read through it. A click or the space
/// bar shows or hides a source.
class ColorIndexView : public QScrollArea
{
    Q_OBJECT
public:
    /// How a source is doing, in its row.
    struct State
    {
        QString text;
        QString note; ///< on a line of its own below the text
        QString image; ///< name of the picture beside the text
        QString details; ///< tool tip of the row
        bool hidden = false;
    };

    explicit ColorIndexView(QWidget *parent);

    QTableWidget *table() const { return m_table; }
    /// Takes all rows away.
    void clear();
    void addRow(const QString &name, const QColor &color);
    void setState(int row, const State &state);

    /// The size that shows all rows, as far as `available` allows.
    QSize fittingSize(QSize available) const;
    /// Shows the panel for a moment.
    void announce();

    void mouseEntered();
    void mouseExited();

Q_SIGNALS:
    void sourceClicked(int row);

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int wantedWidth(int column) const;
    void fadeTo(qreal opacity);
    void fadeWhenUnused();

    QTableWidget *m_table;
    QGraphicsOpacityEffect *m_opacity;
    QPropertyAnimation *m_fade;
    QTimer m_announced;
};

} // namespace tidewright
