// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/ArrangingModel.h"

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

QVariant columnData(const Column &column, const KubeTableItem &row, int role)
{
    switch (role) {
    case Qt::DisplayRole:
        return column.text(row);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(column.alignment);
    case ArrangingModel::NameRole:
        return row.name;
    case ArrangingModel::ImageNameRole:
        return nameOrNothing(column.image, row);
    case ArrangingModel::ColourNameRole:
        return nameOrNothing(column.colour, row);
    default:
        return {};
    }
}

} // namespace

ArrangingModel::ArrangingModel(RowStore &store, QObject *parent)
    : QAbstractTableModel(parent)
    , m_store(&store)
{
    connect(&store, &RowStore::rowsReplaced, this, &ArrangingModel::storeReplaced);
    connect(&store, &RowStore::rowsAboutToBeRemovedAt, this, &ArrangingModel::storeAboutToRemove);
    connect(&store, &RowStore::rowsRemovedAt, this, &ArrangingModel::storeRemoved);
    connect(&store, &RowStore::rowsAppended, this, &ArrangingModel::storeAppended);
    connect(&store, &RowStore::timePassed, this, &ArrangingModel::timePassed);
    connect(&store, &QObject::destroyed, this, &ArrangingModel::storeDestroyed);
    storeAppended(0);
}

const QList<SortDescriptor> &ArrangingModel::sorts() const
{
    return m_sorts;
}

void ArrangingModel::setSorts(const QList<SortDescriptor> &sorts)
{
    QList<SortDescriptor> known = sorts;
    known.removeIf([this](const SortDescriptor &s) { return s.column < 0 || s.column >= columnCount(); });
    if (known == m_sorts || !m_store) {
        return;
    }
    const RowStore::Change change(*m_store);
    if (!change) {
        return;
    }
    m_sorts = known;
    m_rowOrder.reset(m_store->kind().columns, m_sorts, m_store->rows());
    Positions order = m_positions;
    m_rowOrder.sort(order);
    reorder(std::move(order));
}

int ArrangingModel::rowOf(const ObjectName &object) const
{
    auto position = m_store ? m_store->find(object.nameSpace, object.name) : std::nullopt;
    if (!position && m_store) {
        position = m_store->find({}, object.name);
    }
    return position ? m_rows.at(*position) : -1;
}

void ArrangingModel::setListed(bool listed)
{
    if (std::exchange(m_isListed, listed) != listed) {
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
    }
}

void ArrangingModel::sort(int column, Qt::SortOrder order)
{
    setSorts({{column, order}});
}

QString ArrangingModel::filter() const
{
    return m_filter;
}

void ArrangingModel::setFilter(const QString &text)
{
    if (text == m_filter || !m_store) {
        return;
    }
    const RowStore::Change change(*m_store);
    if (!change) {
        return;
    }
    m_filter = text;
    m_rowFilter = RowFilter(m_filter, m_store->kind().columns, m_homeNamespace);
    filterAgain();
}

void ArrangingModel::setHomeNamespace(const QString &name)
{
    if (name == m_homeNamespace || !m_store) {
        return;
    }
    m_homeNamespace = name;
    if (const RowStore::Change change(*m_store); change && !m_filter.isEmpty()) {
        m_rowFilter = RowFilter(m_filter, m_store->kind().columns, m_homeNamespace);
        filterAgain();
    }
}

void ArrangingModel::filterAgain()
{
    Positions leaving;
    Positions entering;
    for (int position = 0; position < static_cast<int>(m_rows.size()); ++position) {
        const bool shown = m_rows[static_cast<std::size_t>(position)] >= 0;
        if (shown != accepts(position)) {
            (shown ? leaving : entering).push_back(position);
        }
    }
    hide(leaving);
    show(std::move(entering));
}

bool ArrangingModel::accepts(int position) const
{
    return m_filter.isEmpty() || m_rowFilter.accepts(*m_store->rows()[static_cast<std::size_t>(position)]);
}

const Row &ArrangingModel::arrangedRow(int row) const
{
    const int position = m_positions.at(static_cast<std::size_t>(row));
    return m_store->rows()[static_cast<std::size_t>(position)];
}

std::size_t ArrangingModel::positionOf(int row) const
{
    return static_cast<std::size_t>(m_positions.at(static_cast<std::size_t>(row)));
}

void ArrangingModel::storeAppended(std::size_t firstPosition)
{
    const Rows &rows = m_store->rows();
    m_rowOrder.append(std::span(rows).subspan(firstPosition));
    m_rows.resize(rows.size(), -1);
    Positions entering;
    for (std::size_t i = firstPosition; i < rows.size(); ++i) {
        if (accepts(static_cast<int>(i))) {
            entering.push_back(static_cast<int>(i));
        }
    }
    show(std::move(entering));
}

void ArrangingModel::storeReplaced(std::span<const std::size_t> positions)
{
    Positions leaving;
    Positions entering;
    Positions staying;
    Positions moving;
    for (const std::size_t i : positions) {
        const auto position = static_cast<int>(i);
        const bool keyChanged = m_rowOrder.replace(position, *m_store->rows()[i]);
        const bool shown = m_rows[i] >= 0;
        if (shown != accepts(position)) {
            (shown ? leaving : entering).push_back(position);
        } else if (shown) {
            staying.push_back(position);
            if (keyChanged) {
                moving.push_back(position);
            }
        }
    }
    hide(leaving);
    announce(staying);
    placeAgain(std::move(moving));
    show(std::move(entering));
}

void ArrangingModel::storeAboutToRemove(std::span<const std::size_t> positions)
{
    Positions leaving;
    for (const std::size_t position : positions) {
        if (m_rows[position] >= 0) {
            leaving.push_back(static_cast<int>(position));
        }
    }
    hide(leaving);
}

void ArrangingModel::storeRemoved(std::span<const std::size_t> positions)
{
    m_rowOrder.removeAt(positions);
    eraseAt(m_rows, positions);
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (m_rows[i] >= 0) {
            m_positions[static_cast<std::size_t>(m_rows[i])] = static_cast<int>(i);
        }
    }
}

void ArrangingModel::timePassed()
{
    for (int column = 0; column < columnCount() && !m_positions.empty(); ++column) {
        if (m_store->kind().columns[static_cast<std::size_t>(column)].movesWithTime) {
            Q_EMIT dataChanged(index(0, column), index(rowCount() - 1, column), {Qt::DisplayRole});
        }
    }
    if (!m_rowFilter.movesWithTime()) {
        return;
    }
    if (const RowStore::Change change(*m_store); change) {
        filterAgain();
    }
}

void ArrangingModel::storeDestroyed()
{
    beginResetModel();
    m_store = nullptr;
    m_positions.clear();
    m_rows.clear();
    endResetModel();
}

/// Takes shown rows out of the arrangement with one removal; rows that do not stand together are brought to
/// the end first.
void ArrangingModel::hide(std::span<const int> positions)
{
    if (positions.empty()) {
        return;
    }
    const auto count = static_cast<int>(positions.size());
    int first = rowCount();
    int last = 0;
    for (const int position : positions) {
        const int row = std::exchange(m_rows[static_cast<std::size_t>(position)], -1);
        first = std::min(first, row);
        last = std::max(last, row);
    }
    if (last - first + 1 != count) {
        Positions order = m_positions;
        std::stable_partition(order.begin(), order.end(),
            [this](int position) { return m_rows[static_cast<std::size_t>(position)] >= 0; });
        reorder(std::move(order));
        first = rowCount() - count;
    }
    beginRemoveRows({}, first, first + count - 1);
    for (int row = first; row < first + count; ++row) {
        m_rows[static_cast<std::size_t>(m_positions[static_cast<std::size_t>(row)])] = -1;
    }
    m_positions.erase(m_positions.begin() + first, m_positions.begin() + first + count);
    updateRows();
    endRemoveRows();
}

/// Puts hidden rows into the arrangement with one insertion; rows that do not come to stand together are
/// added at the end and then brought to their places.
void ArrangingModel::show(Positions positions)
{
    if (positions.empty()) {
        return;
    }
    const auto less = [this](int a, int b) { return m_rowOrder.less(a, b); };
    m_rowOrder.sort(positions);
    const auto begin = m_positions.begin();
    const auto place = std::upper_bound(begin, m_positions.end(), positions.front(), less);
    const bool together = place == m_positions.end() || less(positions.back(), *place);
    Positions order;
    if (!together) {
        order.reserve(m_positions.size() + positions.size());
        std::merge(
            begin, m_positions.end(), positions.begin(), positions.end(), std::back_inserter(order), less);
    }
    const auto target = together ? place : m_positions.end();
    const auto first = static_cast<int>(target - begin);
    beginInsertRows({}, first, first + static_cast<int>(positions.size()) - 1);
    m_positions.insert(target, positions.begin(), positions.end());
    updateRows();
    endInsertRows();
    if (!together) {
        reorder(std::move(order));
    }
}

/// Brings shown rows whose keys have changed to their places.
void ArrangingModel::placeAgain(Positions positions)
{
    if (positions.empty()) {
        return;
    }
    std::vector<bool> moves(m_rows.size());
    for (const int position : positions) {
        moves[static_cast<std::size_t>(position)] = true;
    }
    m_rowOrder.sort(positions);
    Positions others;
    others.reserve(m_positions.size());
    std::copy_if(m_positions.begin(), m_positions.end(), std::back_inserter(others),
        [&moves](int position) { return !moves[static_cast<std::size_t>(position)]; });
    Positions order;
    order.reserve(m_positions.size());
    std::merge(others.begin(), others.end(), positions.begin(), positions.end(), std::back_inserter(order),
        [this](int a, int b) { return m_rowOrder.less(a, b); });
    reorder(std::move(order));
}

void ArrangingModel::announce(std::span<const int> positions)
{
    std::vector<int> rows;
    rows.reserve(positions.size());
    for (const int position : positions) {
        rows.push_back(m_rows[static_cast<std::size_t>(position)]);
    }
    std::sort(rows.begin(), rows.end());
    for (const RowRange range : rowRanges(rows)) {
        Q_EMIT dataChanged(index(range.first, 0), index(range.last, columnCount() - 1));
    }
}

/// Shows the same rows in another order, persistent indexes included.
void ArrangingModel::reorder(Positions order)
{
    if (order == m_positions) {
        return;
    }
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const Positions before = std::exchange(m_positions, std::move(order));
    updateRows();
    const QModelIndexList persistent = persistentIndexList();
    std::vector<int> newRows(before.size());
    if (!persistent.isEmpty()) {
        std::transform(before.begin(), before.end(), newRows.begin(),
            [this](int position) { return m_rows[static_cast<std::size_t>(position)]; });
    }
    changePersistentIndexList(persistent, movedIndexes(persistent, newRows));
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

/// Notes the row of every shown position.
void ArrangingModel::updateRows()
{
    for (std::size_t row = 0; row < m_positions.size(); ++row) {
        m_rows[static_cast<std::size_t>(m_positions[row])] = static_cast<int>(row);
    }
}

int ArrangingModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_positions.size());
}

int ArrangingModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_store ? 0 : static_cast<int>(m_store->kind().columns.size());
}

QVariant ArrangingModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    const Column &column = m_store->kind().columns[static_cast<std::size_t>(index.column())];
    return columnData(column, *arrangedRow(index.row()), role);
}

QVariant ArrangingModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return {};
    }
    const Column &column = m_store->kind().columns[static_cast<std::size_t>(section)];
    switch (role) {
    case Qt::DisplayRole:
        return m_isListed && !column.listedTitle.isEmpty() ? column.listedTitle : column.title;
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(column.alignment);
    default:
        return {};
    }
}

} // namespace tidewright
