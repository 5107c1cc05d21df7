// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

namespace tidewright {

/// Draws the cells of all resource tables: resolves the names of state images and text colours that the model
/// gives, and leaves room beside the text.
class RowDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// Room on both sides of every cell, in pixels at 100 %; the header leaves the same.
    static constexpr int sidePadding = 6;
    /// Behind numbers, so that they stand apart from the text in the next column.
    static constexpr int numberPadding = 16;

    /// The tool tip of a cell is its text, where that does not fit.
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
        const QModelIndex &index) override;
    QString displayText(const QVariant &value, const QLocale &locale) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
    void paint(
        QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void paintPadded(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index,
        int leftPadding) const;
};

} // namespace tidewright
