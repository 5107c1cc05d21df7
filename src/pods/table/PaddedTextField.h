// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/table/RowDelegate.h"

namespace tidewright {

/// A text cell whose text starts `leftPadding` points from the left edge.
class PaddedTextField : public RowDelegate
{
    Q_OBJECT
public:
    using RowDelegate::RowDelegate;

    qreal leftPadding = 10.0;

protected:
    void paint(
        QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace tidewright
