// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/ContainersTable.h"

#include "platform/text/DisplayText.h"
#include "resources/widgets/NamedImages.h"

#include <QHeaderView>
#include <QScrollBar>

namespace tidewright {

namespace {

constexpr int mostContainers = 100;
constexpr int narrowestColumn = 220;
constexpr int highestTable = 280;
constexpr qsizetype longestCell = 300;

QString fitted(const QString &text)
{
    return display_text::shortened(display_text::clean(text), longestCell, 6);
}

} // namespace

ContainersTable::ContainersTable()
{
    setAccessibleName(tr("Containers"));
    setEditTriggers(NoEditTriggers);
    setSelectionMode(NoSelection);
    setFocusPolicy(Qt::StrongFocus);
    setTabKeyNavigation(false);
    setFrameShape(NoFrame);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    verticalHeader()->setHighlightSections(false);
    verticalHeader()->setSectionsClickable(false);
    verticalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignTop);
    hide();
}

void ContainersTable::show(const std::vector<ContainerFacts> &containers)
{
    clear();
    setRowCount(6);
    setVerticalHeaderLabels(
        {tr("State"), tr("Last state"), tr("Restarts"), tr("Image"), tr("Ports"), tr("Probes")});
    const int columns = static_cast<int>(std::min<std::size_t>(containers.size(), mostContainers));
    setColumnCount(columns);
    for (int column = 0; column < columns; ++column) {
        addContainer(column, containers[static_cast<std::size_t>(column)]);
    }
    setVisible(columns > 0);
    layOut();
}

void ContainersTable::addContainer(int column, const ContainerFacts &facts)
{
    setHorizontalHeaderItem(column, new QTableWidgetItem(fitted(facts.name)));
    const QString none(QChar(0x2013));
    int row = 0;
    for (const QString &text :
        {facts.state, facts.lastState, facts.restarts, facts.image, facts.ports, facts.probes}) {
        auto *item = new QTableWidgetItem(text.isEmpty() ? none : fitted(text));
        item->setToolTip(display_text::toolTip(text));
        item->setTextAlignment(Qt::AlignLeft | Qt::AlignTop);
        if ((row == 0 && facts.isInTrouble) || (row == 1 && facts.hadTrouble)) {
            item->setForeground(namedColour(row == 0 ? QStringLiteral("red") : QStringLiteral("orange")));
        }
        setItem(row++, column, item);
    }
}

void ContainersTable::resizeEvent(QResizeEvent *event)
{
    QTableWidget::resizeEvent(event);
    layOut();
}

/// As wide as the table when that is enough for all of them.
void ContainersTable::layOut()
{
    if (columnCount() == 0) {
        return;
    }
    const int width = std::max(narrowestColumn, viewport()->width() / columnCount());
    for (int column = 0; column < columnCount(); ++column) {
        setColumnWidth(column, width);
    }
    resizeRowsToContents();
    const bool scrolls = width * columnCount() > viewport()->width();
    const int needed = horizontalHeader()->sizeHint().height() + verticalHeader()->length()
        + (scrolls ? horizontalScrollBar()->sizeHint().height() : 0) + 2;
    setFixedHeight(std::min(needed, highestTable));
}

} // namespace tidewright
