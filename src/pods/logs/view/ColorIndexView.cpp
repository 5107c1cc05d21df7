// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/ColorIndexView.h"

#include "platform/text/DisplayText.h"
#include "resources/widgets/NamedImages.h"

#include <QEvent>
#include <QFrame>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPropertyAnimation>
#include <QTableWidget>

#include <algorithm>

namespace tidewright {

namespace {

constexpr int boxSide = 13;
constexpr qreal shown = 1.0;
constexpr qreal faded = 0.2;
constexpr int fadeMilliseconds = 300;
constexpr int announceMilliseconds = 4000;
enum Column { NameColumn, BoxColumn, StateColumn, ColumnCount };

/// The log's colours, whatever the palette of the desktop.
QPalette panelPalette(QPalette palette)
{
    QColor background = namedColour(QStringLiteral("solarized-base02"));
    background.setAlpha(
        254); // below what is opaque Qt paints nothing anew, and the faded panel would show old text
    const QColor text = namedColour(QStringLiteral("solarized-base2"));
    for (const auto role : {QPalette::Base, QPalette::Window, QPalette::AlternateBase}) {
        palette.setColor(role, background);
    }
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::HighlightedText}) {
        palette.setColor(role, text);
    }
    palette.setColor(QPalette::Highlight, namedColour(QStringLiteral("solarized-base01")));
    return palette;
}

} // namespace

ColorIndexView::ColorIndexView(QWidget *parent)
    : QScrollArea(parent)
    , m_table(new QTableWidget(0, ColumnCount))
    , m_opacity(new QGraphicsOpacityEffect(this))
    , m_fade(new QPropertyAnimation(m_opacity, "opacity", this))
{
    setPalette(panelPalette(palette()));
    setFrameShape(QFrame::StyledPanel);
    setWidgetResizable(true);
    // The table scrolls, the panel around it never does, however low it is.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_table->setMinimumSize(1, 1);
    setFocusProxy(m_table);
    m_opacity->setOpacity(shown);
    setGraphicsEffect(m_opacity);
    m_fade->setDuration(fadeMilliseconds);
    m_announced.setSingleShot(true);
    m_announced.setInterval(announceMilliseconds);
    m_announced.callOnTimeout(this, &ColorIndexView::fadeWhenUnused);

    m_table->setAccessibleName(tr("Color Index"));
    m_table->setAccessibleDescription(tr("The space bar shows or hides a container's text."));
    m_table->setFrameShape(QFrame::NoFrame);
    m_table->setShowGrid(false);
    m_table->horizontalHeader()->hide();
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 8);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTextElideMode(Qt::ElideMiddle);
    m_table->setWordWrap(false);
    m_table->setTabKeyNavigation(false);
    m_table->setFocusPolicy(Qt::TabFocus); // after a click the keyboard is still the log's
    m_table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_table->horizontalHeader()->setMinimumSectionSize(0);
    m_table->horizontalHeader()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    m_table->horizontalHeader()->setSectionResizeMode(BoxColumn, QHeaderView::ResizeToContents);
    m_table->horizontalHeader()->setSectionResizeMode(StateColumn, QHeaderView::ResizeToContents);
    m_table->installEventFilter(this);
    connect(m_table, &QTableWidget::cellClicked, this, [this](int row, int) { Q_EMIT sourceClicked(row); });
    setWidget(m_table);
}

void ColorIndexView::clear()
{
    m_table->setRowCount(0);
}

void ColorIndexView::addRow(const QString &name, const QColor &color)
{
    const int row = m_table->rowCount();
    m_table->insertRow(row);
    m_table->setItem(row, NameColumn, new QTableWidgetItem(name));
    auto *box = new ColorBoxCellView;
    box->setColor(color);
    m_table->setCellWidget(row, BoxColumn, box);
    m_table->setItem(row, StateColumn, new QTableWidgetItem);
}

void ColorIndexView::setState(int row, const State &state)
{
    QTableWidgetItem *name = m_table->item(row, NameColumn);
    QTableWidgetItem *item = m_table->item(row, StateColumn);
    if (!name || !item) {
        return;
    }
    const QString text = state.hidden ? tr("hidden, %1").arg(state.text) : state.text;
    item->setText(state.note.isEmpty() ? text : text + QLatin1Char('\n') + state.note);
    m_table->setRowHeight(row, m_table->fontMetrics().size(0, item->text()).height() + 8);
    item->setIcon(namedImage(state.image));
    QFont font = m_table->font();
    font.setStrikeOut(state.hidden);
    name->setFont(font);
    const QString hint = state.hidden ? tr("Click to show this container's text.")
                                      : tr("Click to hide this container's text.");
    const QString tip = name->text() + QLatin1Char('\n')
        + (state.details.isEmpty() ? hint : state.details.trimmed() + QLatin1Char('\n') + hint);
    name->setToolTip(display_text::toolTip(tip));
    item->setToolTip(display_text::toolTip(tip));
}

int ColorIndexView::wantedWidth(int column) const
{
    int widest = column == BoxColumn ? 26 : 0;
    for (int row = 0; column != BoxColumn && row < m_table->rowCount(); ++row) {
        const QTableWidgetItem *item = m_table->item(row, column);
        const int icon = item->icon().isNull() ? 0 : 24;
        widest = std::max(widest, m_table->fontMetrics().size(0, item->text()).width() + icon + 14);
    }
    return widest;
}

QSize ColorIndexView::fittingSize(QSize available) const
{
    m_table->ensurePolished();
    int width = 2 * frameWidth();
    for (int column = 0; column < ColumnCount; ++column) {
        width += wantedWidth(column);
    }
    const int height = 2 * frameWidth() + m_table->verticalHeader()->length();
    const int bar = height > available.height() ? style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
    return QSize(width + bar, height).boundedTo(available);
}

void ColorIndexView::announce()
{
    m_announced.start();
    fadeTo(shown);
}

void ColorIndexView::mouseEntered()
{
    m_announced.stop();
    fadeTo(shown);
}

void ColorIndexView::mouseExited()
{
    if (!m_table->hasFocus()) {
        fadeTo(faded);
    }
}

void ColorIndexView::fadeWhenUnused()
{
    if (!underMouse()) {
        mouseExited();
    }
}

void ColorIndexView::fadeTo(qreal opacity)
{
    if (m_fade->state() == QPropertyAnimation::Running ? m_fade->endValue() == opacity
                                                       : m_opacity->opacity() == opacity) {
        return;
    }
    m_fade->stop();
    m_fade->setEndValue(opacity);
    m_fade->start();
}

void ColorIndexView::enterEvent(QEnterEvent *event)
{
    QScrollArea::enterEvent(event);
    mouseEntered();
}

void ColorIndexView::leaveEvent(QEvent *event)
{
    QScrollArea::leaveEvent(event);
    mouseExited();
}

void ColorIndexView::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    // What the names leave of it, or three fifths: they are not squeezed to nothing by a long note.
    const int left = width() - wantedWidth(NameColumn) - wantedWidth(BoxColumn) - 2 * frameWidth();
    m_table->horizontalHeader()->setMaximumSectionSize(std::max({1, left, width() * 3 / 5}));
}

bool ColorIndexView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn) {
        mouseEntered();
    } else if (event->type() == QEvent::FocusOut) {
        fadeWhenUnused();
    } else if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if ((key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter)
            && m_table->currentRow() >= 0) {
            Q_EMIT sourceClicked(m_table->currentRow());
            return true;
        }
    }
    return QScrollArea::eventFilter(watched, event);
}

ColorBoxCellView::ColorBoxCellView(QWidget *parent)
    : QWidget(parent)
    , m_colorBox(new QFrame)
{
    setAttribute(Qt::WA_TransparentForMouseEvents); // the table hears the click
    m_colorBox->setFixedSize(boxSide, boxSide);
    m_colorBox->setFrameShape(QFrame::Box);
    // In a table the roles would be the table's.
    m_colorBox->setBackgroundRole(QPalette::Window);
    m_colorBox->setForegroundRole(QPalette::WindowText);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 0, 6, 0);
    layout->addWidget(m_colorBox, 0, Qt::AlignCenter);
}

void ColorBoxCellView::setColor(const QColor &color)
{
    m_colorBox->setAutoFillBackground(color.isValid());
    if (color.isValid()) {
        QPalette palette = m_colorBox->palette();
        palette.setColor(QPalette::Window, color);
        palette.setColor(QPalette::WindowText, color);
        m_colorBox->setPalette(palette);
    }
}

} // namespace tidewright
