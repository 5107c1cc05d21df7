// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/EventsTable.h"

#include "platform/text/DisplayText.h"
#include "resources/kinds/KubeTableItem.h"
#include "resources/widgets/NamedImages.h"

#include <QHeaderView>

namespace tidewright {

namespace {

constexpr std::size_t mostEvents = 500;
constexpr qsizetype longestMessage = 2000;
enum Column { Age, Type, Reason, Message, Count, ColumnCount };

} // namespace

EventsTable::EventsTable()
    : QTableWidget(0, ColumnCount)
{
    setAccessibleName(tr("Events"));
    setHorizontalHeaderLabels({tr("Age"), tr("Type"), tr("Reason"), tr("Message"), tr("Count")});
    setEditTriggers(NoEditTriggers);
    setSelectionMode(NoSelection);
    setTabKeyNavigation(false);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setWordWrap(true);
    setFrameShape(NoFrame);
    setVerticalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setSectionResizeMode(Message, QHeaderView::Stretch);
    for (const auto &[column, width] : {std::pair(Age, 70), {Type, 80}, {Reason, 140}, {Count, 60}}) {
        setColumnWidth(column, width);
    }
}

void EventsTable::show(const std::vector<ObjectEvent> &events, double now)
{
    const std::size_t rows = std::min(events.size(), mostEvents);
    setRowCount(static_cast<int>(rows));
    horizontalHeader()->setVisible(rows > 0);
    for (std::size_t row = 0; row < rows; ++row) {
        addEvent(static_cast<int>(row), events[row], now);
    }
    resizeRowsToContents();
    scrollToTop();
}

void EventsTable::addEvent(int row, const ObjectEvent &event, double now)
{
    const QString age = event.time ? formatAge(now - static_cast<double>(*event.time), false) : QString();
    int column = 0;
    for (const QString &text : {age, event.type, event.reason, event.message, event.count}) {
        auto *item
            = new QTableWidgetItem(display_text::shortened(display_text::clean(text), longestMessage, 20));
        item->setToolTip(display_text::toolTip(text));
        item->setTextAlignment(Qt::AlignTop | (column == Count ? Qt::AlignRight : Qt::AlignLeft));
        if (event.type == QLatin1String("Warning")) {
            item->setForeground(namedColour(QStringLiteral("orange")));
        }
        setItem(row, column++, item);
    }
}

void EventsTable::resizeEvent(QResizeEvent *event)
{
    QTableWidget::resizeEvent(event);
    resizeRowsToContents();
}

} // namespace tidewright
