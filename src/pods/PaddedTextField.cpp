// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/PaddedTextField.h"

#include <QApplication>

namespace tidewright {

void PaddedTextField::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem background(option);
    background.state &= ~QStyle::State_HasFocus;
    const QStyle *style = option.widget ? option.widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_PanelItemViewRow, &background, painter, option.widget);
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &background, painter, option.widget);
    QStyleOptionViewItem text(option);
    text.rect.setLeft(text.rect.left() + qRound(leftPadding));
    RowDelegate::paint(painter, text, index);
}

} // namespace tidewright
