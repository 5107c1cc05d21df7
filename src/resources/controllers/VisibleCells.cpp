// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/VisibleCells.h"

#include "resources/table/ResourceTableView.h"
#include "resources/table/RowDelegate.h"

#include <algorithm>

namespace tidewright {

namespace {

/// Cells that are built and out of sight cost memory; beyond this many, those that nobody would miss are
/// dropped.
constexpr std::size_t keptCells = 400;
/// While a sorted table fills, other rows come into sight again and again; building all their cells at once
/// would be felt.
constexpr int cellsPerTurn = 8;

/// The widget stands where the text would.
class TextlessDelegate : public RowDelegate
{
public:
    using RowDelegate::RowDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        RowDelegate::initStyleOption(option, index);
        option->text.clear();
    }
};

} // namespace

VisibleCells::VisibleCells(ResourceTableView &view, int column, Ensure ensure, Keep keep)
    : QObject(&view)
    , m_view(view)
    , m_column(column)
    , m_ensure(std::move(ensure))
    , m_keep(std::move(keep))
{
    m_view.setItemDelegateForColumn(column, new TextlessDelegate(&m_view));
    connect(&m_view, &ResourceTableView::visibleRowsChanged, this, &VisibleCells::buildVisible);
}

QWidget *VisibleCells::at(const QModelIndex &index) const
{
    return m_view.indexWidget(index.siblingAtColumn(m_column));
}

void VisibleCells::put(const QModelIndex &index, QWidget *widget)
{
    const QModelIndex cell = index.siblingAtColumn(m_column);
    m_view.setIndexWidget(cell, widget);
    m_cells.push_back({cell, widget});
}

QPersistentModelIndex VisibleCells::indexOf(const QWidget *widget) const
{
    const auto cell = std::find_if(m_cells.cbegin(), m_cells.cend(),
        [widget](const Cell &candidate) { return candidate.widget == widget; });
    return cell == m_cells.cend() ? QPersistentModelIndex() : cell->index;
}

bool VisibleCells::ensure(const QModelIndex &index)
{
    return m_ensure(index.siblingAtColumn(m_column));
}

void VisibleCells::update()
{
    forgetGone();
    std::vector<QPersistentModelIndex> built;
    built.reserve(m_cells.size());
    for (const Cell &cell : m_cells) {
        built.push_back(cell.index);
    }
    for (const QPersistentModelIndex &index : built) {
        m_ensure(index);
    }
}

void VisibleCells::buildVisible()
{
    forgetGone();
    const auto [first, last] = m_view.visibleRows();
    int built = 0;
    for (int row = first; row >= 0 && row <= last; ++row) {
        built += m_ensure(m_view.arrangedObjects().index(row, m_column));
        if (built == cellsPerTurn) {
            QMetaObject::invokeMethod(this, &VisibleCells::buildVisible, Qt::QueuedConnection);
            return;
        }
    }
    if (m_cells.size() > keptCells) {
        dropOutOfSight();
    }
}

void VisibleCells::forgetGone()
{
    std::erase_if(m_cells, [this](const Cell &cell) {
        return !cell.widget || !cell.index.isValid() || at(cell.index) != cell.widget;
    });
    Q_EMIT cellsForgotten();
}

void VisibleCells::dropOutOfSight()
{
    const auto [first, last] = m_view.visibleRows();
    for (const Cell &cell : m_cells) {
        const bool inSight = cell.index.row() >= first && cell.index.row() <= last;
        if (!inSight && !m_keep(*cell.widget)) {
            m_view.setIndexWidget(cell.index, nullptr);
        }
    }
    forgetGone();
}

} // namespace tidewright
