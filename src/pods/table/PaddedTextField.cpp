// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/table/PaddedTextField.h"

namespace tidewright {

void PaddedTextField::paint(
    QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem cell(option);
    cell.textElideMode = Qt::ElideMiddle; // what tells the names of one workload apart stands at their ends
    paintPadded(painter, cell, index, qRound(leftPadding));
}

} // namespace tidewright
