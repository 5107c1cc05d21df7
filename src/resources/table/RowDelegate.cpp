// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/RowDelegate.h"

#include "platform/text/DisplayText.h"
#include "resources/listing/ArrangingModel.h"
#include "resources/widgets/NamedImages.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QToolTip>

namespace tidewright {

void RowDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (const QString image = index.data(ArrangingModel::ImageNameRole).toString(); !image.isEmpty()) {
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->icon = namedImage(image);
        option->decorationSize = QSize(12, 12);
    }
    const QColor colour = namedColour(index.data(ArrangingModel::ColourNameRole).toString());
    if (colour.isValid() && !(option->state & QStyle::State_Selected)) {
        option->palette.setColor(QPalette::Text, colour);
    }
}

bool RowDelegate::helpEvent(
    QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    const bool fits = sizeHint(option, index).width() + 2 * sidePadding <= option.rect.width();
    const QString text = fits ? QString() : index.data().toString();
    QToolTip::showText(event->globalPos(), display_text::toolTip(text), view);
    return true;
}

QString RowDelegate::displayText(const QVariant &value, const QLocale &locale) const
{
    return QStyledItemDelegate::displayText(display_text::name(value.toString()), locale);
}

void RowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    paintPadded(painter, option, index, sidePadding);
}

void RowDelegate::paintPadded(
    QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index, int leftPadding) const
{
    QStyleOptionViewItem cell(option);
    cell.state &= ~QStyle::State_HasFocus; // the row is the unit; a frame around one cell only distracts
    const QStyle *style = cell.widget ? cell.widget->style() : QApplication::style();
    style->drawPrimitive(
        QStyle::PE_PanelItemViewItem, &cell, painter, cell.widget); // the whole cell's background
    const auto alignment = index.data(Qt::TextAlignmentRole).value<Qt::Alignment>();
    cell.rect.adjust(leftPadding, 0, -(alignment & Qt::AlignRight ? numberPadding : sidePadding), 0);
    QStyledItemDelegate::paint(painter, cell, index);
}

} // namespace tidewright
