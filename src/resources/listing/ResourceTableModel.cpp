// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/ResourceTableModel.h"

#include "platform/threads/DispatchQueue.h"
#include "resources/listing/RowRanges.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tidewright {

namespace {

QVariant nameOrNothing(const std::function<QString(const KubeTableItem &)> &name, const KubeTableItem &row)
{
    const QString text = name ? name(row) : QString();
    return text.isEmpty() ? QVariant() : QVariant(text);
}

/// Lets go of rows. Freeing very many takes longer than a frame, so that is not done on the main thread.
template <typename Owner> void discard(Owner rows, std::size_t count)
{
    constexpr std::size_t many = 1000;
    if (count >= many) {
        shellQueue().post([rows = std::move(rows)] {});
    }
}

QVariant columnData(const Column &column, const KubeTableItem &row, int role)
{
    switch (role) {
    case Qt::DisplayRole:
        return column.text(row);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(column.alignment);
    case ResourceTableModel::SortRole:
        return std::visit([](const auto &key) { return QVariant(key); }, column.sortKey(row));
    case ResourceTableModel::NameRole:
        return row.name;
    case ResourceTableModel::ImageNameRole:
        return nameOrNothing(column.image, row);
    case ResourceTableModel::ColourNameRole:
        return nameOrNothing(column.colour, row);
    default:
        return {};
    }
}

} // namespace

ResourceTableModel::ResourceTableModel(ResourceKind kind, QObject *parent)
    : QAbstractTableModel(parent)
    , m_kind(std::move(kind))
{
}

ResourceTableModel::~ResourceTableModel()
{
    const std::size_t count = tableItems().size();
    discard(std::move(m_store), count);
}

std::shared_ptr<const Rows> ResourceTableModel::snapshot() const
{
    m_store->leases.fetch_add(1, std::memory_order_relaxed);
    return {&m_store->rows,
        [store = m_store](const Rows *) { store->leases.fetch_sub(1, std::memory_order_release); }};
}

/// The rows for a change: a copy of them when a snapshot is held somewhere.
Rows &ResourceTableModel::writableRows()
{
    ++m_generation;
    if (m_store->leases.load(std::memory_order_acquire) > 0) {
        auto copy = std::make_shared<Store>();
        copy->rows = m_store->rows;
        m_store = std::move(copy);
    }
    return m_store->rows;
}

void ResourceTableModel::replaceRows(std::span<const std::pair<std::size_t, Row>> changed)
{
    const Change change(*this);
    if (!change || changed.empty() || changed.front().first >= tableItems().size()) {
        return;
    }
    Rows &rows = writableRows();
    std::vector<std::size_t> positions;
    std::vector<int> modelRows;
    for (const auto &[position, row] : changed) {
        if (position >= rows.size()) {
            break;
        }
        row->startTimeInterval = rows[position]->startTimeInterval;
        rows[position] = row;
        positions.push_back(position);
        modelRows.push_back(static_cast<int>(position));
    }
    for (const RowRange range : rowRanges(modelRows)) {
        Q_EMIT dataChanged(index(range.first, 0), index(range.last, columnCount() - 1));
    }
    Q_EMIT rowsReplaced(positions);
}

void ResourceTableModel::removeRowsAt(std::span<const std::size_t> ascendingPositions)
{
    const Change change(*this);
    if (!change || ascendingPositions.empty() || ascendingPositions.back() >= tableItems().size()) {
        return;
    }
    Q_EMIT rowsAboutToBeRemovedAt(ascendingPositions);
    const auto count = static_cast<int>(ascendingPositions.size());
    int first = static_cast<int>(ascendingPositions.front());
    if (ascendingPositions.back() - ascendingPositions.front() + 1 != ascendingPositions.size()) {
        moveToTail(ascendingPositions);
        first = rowCount() - count;
    }
    beginRemoveRows({}, first, first + count - 1);
    Rows &rows = writableRows();
    const auto begin = rows.begin() + first;
    Rows removed(std::make_move_iterator(begin), std::make_move_iterator(begin + count));
    rows.erase(begin, begin + count);
    endRemoveRows();
    discard(std::move(removed), ascendingPositions.size());
    Q_EMIT rowsRemovedAt(ascendingPositions);
}

void ResourceTableModel::moveToTail(std::span<const std::size_t> ascendingPositions)
{
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    Rows &rows = writableRows();
    Rows moved(rows.size());
    std::vector<int> newRows(rows.size());
    std::size_t nextKept = 0;
    std::size_t nextMoved = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const bool moves = nextMoved < ascendingPositions.size() && ascendingPositions[nextMoved] == i;
        const std::size_t target = moves ? rows.size() - ascendingPositions.size() + nextMoved++ : nextKept++;
        moved[target] = std::move(rows[i]);
        newRows[i] = static_cast<int>(target);
    }
    rows = std::move(moved);
    const QModelIndexList persistent = persistentIndexList();
    changePersistentIndexList(persistent, movedIndexes(persistent, newRows));
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

void ResourceTableModel::appendRows(std::span<const Row> rows)
{
    const Change change(*this);
    if (!change || rows.empty()) {
        return;
    }
    const std::size_t first = tableItems().size();
    beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + rows.size()) - 1);
    Rows &target = writableRows();
    target.insert(target.end(), rows.begin(), rows.end());
    endInsertRows();
    Q_EMIT rowsAppended(first);
}

void ResourceTableModel::clear()
{
    std::vector<std::size_t> all(tableItems().size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = i;
    }
    ++m_generation;
    removeRowsAt(all);
}

void ResourceTableModel::timePasses()
{
    for (int column = 0; column < columnCount() && !tableItems().empty(); ++column) {
        if (m_kind.columns[static_cast<std::size_t>(column)].movesWithTime) {
            Q_EMIT dataChanged(index(0, column), index(rowCount() - 1, column), {Qt::DisplayRole});
            Q_EMIT columnRefreshed(column);
        }
    }
}

int ResourceTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(tableItems().size());
}

int ResourceTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_kind.columns.size());
}

QVariant ResourceTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.model() != this || index.row() >= rowCount()
        || index.column() >= columnCount()) {
        return {};
    }
    const Column &column = m_kind.columns[static_cast<std::size_t>(index.column())];
    return columnData(column, *tableItems()[static_cast<std::size_t>(index.row())], role);
}

QVariant ResourceTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return {};
    }
    const Column &column = m_kind.columns[static_cast<std::size_t>(section)];
    switch (role) {
    case Qt::DisplayRole:
        return column.title;
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(column.alignment);
    default:
        return {};
    }
}

} // namespace tidewright
