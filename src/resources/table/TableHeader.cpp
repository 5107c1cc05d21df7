// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/TableHeader.h"

#include "platform/text/DisplayText.h"
#include "resources/table/RowDelegate.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyleOptionHeader>
#include <QToolTip>

namespace tidewright {

namespace {

constexpr int leftPadding = RowDelegate::sidePadding + 2;
constexpr int rightPadding = RowDelegate::numberPadding + 2;
constexpr int verticalPadding = 5;
constexpr int arrowSize = 9;
constexpr int arrowGap = 4;

} // namespace

TableHeader::TableHeader(QWidget *parent)
    : QHeaderView(Qt::Horizontal, parent)
{
    setSectionsClickable(true);
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

QString TableHeader::title(int section) const
{
    return model()->headerData(section, Qt::Horizontal).toString();
}

bool TableHeader::viewportEvent(QEvent *event)
{
    if (event->type() != QEvent::ToolTip) {
        return QHeaderView::viewportEvent(event);
    }
    const auto *help = static_cast<QHelpEvent *>(event);
    const QString text = explanation(logicalIndexAt(help->pos()));
    QToolTip::showText(help->globalPos(), display_text::toolTip(text), this);
    return true;
}

void TableHeader::paintSection(QPainter *painter, const QRect &rect, int section) const
{
    painter->save();
    painter->fillRect(rect, palette().window());
    painter->setPen(palette().color(QPalette::Mid));
    painter->drawLine(rect.bottomLeft(), rect.bottomRight());

    const QVariant wanted = model()->headerData(section, Qt::Horizontal, Qt::TextAlignmentRole);
    const auto alignment = wanted.isValid() ? wanted.value<Qt::Alignment>() : defaultAlignment();
    QRect room = rect.adjusted(leftPadding, 0, -rightPadding, -1);
    if (isSortIndicatorShown() && sortIndicatorSection() == section) {
        // On the side where the text does not stand, which therefore stays where it is.
        const bool before = alignment & Qt::AlignRight;
        QStyleOptionHeader arrow;
        arrow.initFrom(this);
        arrow.rect = QStyle::alignedRect(Qt::LeftToRight,
            Qt::AlignVCenter | (before ? Qt::AlignLeft : Qt::AlignRight), {arrowSize, arrowSize}, room);
        arrow.sortIndicator = sortIndicatorOrder() == Qt::AscendingOrder ? QStyleOptionHeader::SortDown
                                                                         : QStyleOptionHeader::SortUp;
        style()->drawPrimitive(QStyle::PE_IndicatorHeaderArrow, &arrow, painter, this);
        room.adjust(before ? arrowSize + arrowGap : 0, 0, before ? 0 : -arrowSize - arrowGap, 0);
    }
    painter->setPen(palette().color(QPalette::WindowText));
    const QString shown = fontMetrics().elidedText(title(section), Qt::ElideRight, room.width());
    painter->drawText(room, int(alignment | Qt::TextSingleLine), shown);
    painter->restore();
}

QSize TableHeader::sectionSizeFromContents(int section) const
{
    const int arrow = isSortIndicatorShown() ? arrowSize + arrowGap : 0;
    return {fontMetrics().horizontalAdvance(title(section)) + leftPadding + rightPadding + arrow,
        fontMetrics().height() + 2 * verticalPadding + 1};
}

} // namespace tidewright
