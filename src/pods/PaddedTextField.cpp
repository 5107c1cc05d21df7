// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/PaddedTextField.h"

namespace tidewright {

void PaddedTextField::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    paintPadded(painter, option, index, qRound(leftPadding));
}

} // namespace tidewright
