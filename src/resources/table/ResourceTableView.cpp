// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/ResourceTableView.h"

#include "platform/text/DisplayText.h"
#include "resources/table/RowDelegate.h"
#include "resources/table/TableHeader.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <numeric>

namespace tidewright {

ResourceTableView::ResourceTableView(ArrangingModel &model, QWidget *parent)
    : QTableView(parent)
    , m_model(model)
    , m_header(new TableHeader(this))
{
    setModel(&model);
    setItemDelegate(new RowDelegate(this));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setWordWrap(false);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setFrameShape(QFrame::NoFrame);
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 10);
    setUpHeader();
    connect(&model, &QAbstractItemModel::layoutChanged, this, &ResourceTableView::announceVisibleRows);
    connect(&model, &QAbstractItemModel::rowsInserted, this, &ResourceTableView::announceVisibleRows);
    connect(&model, &QAbstractItemModel::rowsRemoved, this, &ResourceTableView::announceVisibleRows);
    connect(&model, &QAbstractItemModel::modelReset, this, &ResourceTableView::announceVisibleRows);
    connect(&model, &QAbstractItemModel::dataChanged, this, &ResourceTableView::announceVisibleRows);
}

void ResourceTableView::setUpHeader()
{
    QHeaderView *header = m_header;
    setHorizontalHeader(header);
    header->setHighlightSections(false);
    header->setStretchLastSection(true);
    header->setSectionsMovable(true);
    header->setMinimumSectionSize(40);
    header->setSortIndicatorClearable(true);
    header->setSortIndicator(-1, Qt::AscendingOrder); // rows stand as they came until the user sorts
    setSortingEnabled(true);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QWidget::customContextMenuRequested, this, &ResourceTableView::showHeaderMenu);
    // Sent before a column counts as hidden.
    connect(
        header, &QHeaderView::sectionResized, this, &ResourceTableView::columnsChanged, Qt::QueuedConnection);
    setUsageProblem({});
}

bool ResourceTableView::needsUsage() const
{
    const std::vector<Column> &columns = m_model.columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].showsUsage && !isColumnHidden(static_cast<int>(i))) {
            return true;
        }
    }
    return m_model.rowFilter().readsUsage();
}

void ResourceTableView::setUsageProblem(const QString &problem)
{
    const std::vector<Column> &columns = m_model.columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Column &column = columns[i];
        m_header->explain(static_cast<int>(i),
            column.showsUsage && !problem.isEmpty() ? tr("There are no figures: %1").arg(problem)
                                                    : column.explanation);
    }
}

bool ResourceTableView::clickedRowIsSelected() const
{
    return clickedRow() >= 0 && selectionModel()->isRowSelected(clickedRow());
}

int ResourceTableView::selectedRowCount() const
{
    const QItemSelection selection = selectionModel()->selection();
    return std::accumulate(selection.cbegin(), selection.cend(), 0,
        [](int count, const QItemSelectionRange &range) { return count + range.height(); });
}

std::vector<int> ResourceTableView::selectedRowsInOrder() const
{
    std::vector<int> rows = selectedRowsAsChosen();
    std::sort(rows.begin(), rows.end());
    return rows;
}

/// Ranges of a selection do not overlap, and here they are as wide as the table.
std::vector<int> ResourceTableView::selectedRowsAsChosen() const
{
    std::vector<int> rows;
    for (const QItemSelectionRange &range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            rows.push_back(row);
        }
    }
    return rows;
}

void ResourceTableView::setEmptyText(const QString &sentence, const QString &details)
{
    constexpr qsizetype longest = 4000;
    constexpr int mostLines = 60;
    const std::pair shown(display_text::name(sentence),
        display_text::clean(display_text::shortened(details, longest, mostLines)));
    if (shown == std::pair(m_emptySentence, m_emptyDetails)) {
        return;
    }
    std::tie(m_emptySentence, m_emptyDetails) = shown;
    setAccessibleDescription(
        m_model.rowCount() == 0 ? m_emptySentence + QLatin1Char('\n') + m_emptyDetails : QString());
    viewport()->update();
}

int ResourceTableView::chosenRowCount() const
{
    return clickedRowIsGone() ? 0 : clickedRow() >= 0 ? 1 : selectedRowCount();
}

ObjectName ResourceTableView::objectAt(int row, const QString &windowNamespace) const
{
    const Row &item = m_model.arrangedRow(row);
    return {item->nameSpace.isEmpty() ? windowNamespace : item->nameSpace, item->name};
}

ObjectNames ResourceTableView::chosenObjects(const QString &windowNamespace) const
{
    if (clickedRowIsGone()) {
        return {}; // a refresh removed it while its menu was open
    }
    return clickedRow() >= 0 ? ObjectNames{objectAt(clickedRow(), windowNamespace)}
                             : selectedObjects(windowNamespace);
}

ObjectNames ResourceTableView::selectedObjects(const QString &windowNamespace) const
{
    ObjectNames objects;
    for (const int row : selectedRowsInOrder()) {
        objects.append(objectAt(row, windowNamespace));
    }
    return objects;
}

std::pair<int, int> ResourceTableView::visibleRows() const
{
    const int rows = m_model.rowCount();
    if (rows == 0) {
        return {-1, -1};
    }
    const int first = rowAt(0);
    const int last = rowAt(viewport()->height() - 1);
    return {first < 0 ? 0 : first, last < 0 ? rows - 1 : last};
}

void ResourceTableView::contextMenuEvent(QContextMenuEvent *event)
{
    const bool byMouse = event->reason() == QContextMenuEvent::Mouse;
    m_clickedRow = byMouse ? QPersistentModelIndex(indexAt(event->pos())) : QPersistentModelIndex();
    m_rowWasClicked = m_clickedRow.isValid();
    viewport()->update();
    const QPointer<ResourceTableView> self(this);
    Q_EMIT contextMenuRequested(
        byMouse ? event->globalPos() : viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft()));
    if (!self) {
        return; // the window was closed under the menu
    }
    m_clickedRow = QPersistentModelIndex();
    m_rowWasClicked = false;
    viewport()->update();
}

void ResourceTableView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::RightButton) {
        QTableView::mousePressEvent(event);
    }
}

/// Not the `activated` of the base class: some desktops have that sent for a single click.
void ResourceTableView::mouseDoubleClickEvent(QMouseEvent *event)
{
    QTableView::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier
        && indexAt(event->position().toPoint()).isValid()) {
        Q_EMIT opened();
    }
}

void ResourceTableView::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Space) {
        event->ignore(); // belongs to the preview, not to the selection
    } else if (isEnter && (event->modifiers() & ~Qt::KeypadModifier) == 0) {
        if (!event->isAutoRepeat() && selectedRowCount() > 0) {
            Q_EMIT opened();
        }
    } else {
        QTableView::keyPressEvent(event);
    }
}

/// Home and End go to the first and the last row: the row is the unit here, not the cell.
QModelIndex ResourceTableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    if ((action == MoveHome || action == MoveEnd) && m_model.rowCount() > 0) {
        return m_model.index(
            action == MoveHome ? 0 : m_model.rowCount() - 1, qMax(0, currentIndex().column()));
    }
    return QTableView::moveCursor(action, modifiers);
}

void ResourceTableView::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    if (m_model.rowCount() == 0) {
        paintEmptyText();
    } else if (m_clickedRow.isValid()) {
        paintClickedRow();
    }
}

void ResourceTableView::scrollContentsBy(int dx, int dy)
{
    QTableView::scrollContentsBy(dx, dy);
    announceVisibleRows();
}

void ResourceTableView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    announceVisibleRows();
}

/// Once per turn of the event loop, after the view has settled, however many changes there were.
void ResourceTableView::announceVisibleRows()
{
    if (!std::exchange(m_announced, true)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_announced = false;
                Q_EMIT visibleRowsChanged();
            },
            Qt::QueuedConnection);
    }
}

void ResourceTableView::showHeaderMenu(const QPoint &position)
{
    QMenu menu;
    for (int column = 0; column < m_model.columnCount(); ++column) {
        QAction *action = menu.addAction(m_model.headerData(column, Qt::Horizontal).toString());
        action->setCheckable(true);
        action->setChecked(!isColumnHidden(column));
        action->setEnabled(column != 0); // the column that says what a row is
        connect(
            action, &QAction::toggled, this, [this, column](bool shown) { setColumnHidden(column, !shown); });
    }
    menu.exec(horizontalHeader()->mapToGlobal(position));
}

void ResourceTableView::paintEmptyText()
{
    QPainter painter(viewport());
    const QRect area = viewport()->rect().adjusted(24, 24, -24, -24);
    QFont headline = font();
    headline.setPointSizeF(headline.pointSizeF() * 1.15);
    painter.setFont(headline);
    painter.setPen(palette().color(QPalette::WindowText));
    const QRect used
        = painter.boundingRect(area, Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextWordWrap, m_emptySentence);
    painter.drawText(used, Qt::AlignHCenter | Qt::TextWordWrap, m_emptySentence);
    painter.setFont(font());
    const QRect below(
        area.left(), used.bottom() + 8, area.width(), qMax(0, area.bottom() - used.bottom() - 8));
    painter.drawText(below, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_emptyDetails);
}

void ResourceTableView::paintClickedRow()
{
    QPainter painter(viewport());
    QRect row = visualRect(m_clickedRow);
    row.setLeft(0);
    row.setRight(viewport()->width() - 1);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRect(row.adjusted(1, 1, -1, -1));
}

} // namespace tidewright
