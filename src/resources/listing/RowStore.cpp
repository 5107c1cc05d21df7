// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/RowStore.h"

#include "core/running/Shell.h"
#include "resources/listing/RowOrder.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace tidewright {

namespace {

/// Lets go of rows. Freeing very many takes longer than a frame, so that is not done on the main thread.
template <typename Owner> void discard(Owner rows, std::size_t count)
{
    constexpr std::size_t many = 1000;
    if (count >= many) {
        shellQueue().post([rows = std::move(rows)] {});
    }
}

QString keyOf(const QString &nameSpace, const QString &name)
{
    return nameSpace + QLatin1Char('/') + name;
}

QString keyOf(const KubeTableItem &row)
{
    return keyOf(row.nameSpace, row.name);
}

} // namespace

RowStore::RowStore(ResourceKind kind, QObject *parent)
    : QObject(parent)
    , m_kind(std::move(kind))
{
}

RowStore::~RowStore()
{
    const std::size_t count = rows().size();
    discard(std::move(m_shared), count);
}

std::shared_ptr<const Rows> RowStore::snapshot() const
{
    m_shared->leases.fetch_add(1, std::memory_order_relaxed);
    return {&m_shared->rows,
        [shared = m_shared](const Rows *) { shared->leases.fetch_sub(1, std::memory_order_release); }};
}

/// The rows for a change: a copy of them when a snapshot is held somewhere.
Rows &RowStore::writableRows()
{
    ++m_generation;
    if (m_shared->leases.load(std::memory_order_acquire) > 0) {
        auto copy = std::make_shared<Shared>();
        copy->rows = m_shared->rows;
        m_shared = std::move(copy);
    }
    return m_shared->rows;
}

std::optional<std::size_t> RowStore::find(const QString &nameSpace, const QString &name) const
{
    if (m_indexed != m_generation) {
        buildIndex();
    }
    const auto found = m_index.find(keyOf(nameSpace, name));
    if (found == m_index.end()) {
        return std::nullopt;
    }
    const auto number = std::lower_bound(m_numbers.begin(), m_numbers.end(), found->second);
    return static_cast<std::size_t>(number - m_numbers.begin());
}

void RowStore::buildIndex() const
{
    m_index.clear();
    m_index.reserve(rows().size());
    m_numbers.clear();
    m_numbers.reserve(rows().size());
    addToIndex(0);
}

void RowStore::addToIndex(std::size_t firstPosition) const
{
    for (std::size_t i = firstPosition; i < rows().size(); ++i) {
        m_numbers.push_back(m_numbers.empty() ? 0 : m_numbers.back() + 1);
        m_index.try_emplace(keyOf(*rows()[i]), m_numbers.back());
    }
    m_indexed = m_generation;
}

void RowStore::replaceRows(std::span<const std::pair<std::size_t, Row>> changed)
{
    const Change change(*this);
    if (!change || changed.empty() || changed.front().first >= rows().size()) {
        return;
    }
    const bool indexed = m_indexed == m_generation;
    Rows &target = writableRows();
    std::vector<std::size_t> positions;
    bool sameKeys = true;
    for (const auto &[position, row] : changed) {
        if (position >= target.size()) {
            break;
        }
        row->startTimeInterval = target[position]->startTimeInterval;
        sameKeys = sameKeys && keyOf(*target[position]) == keyOf(*row);
        target[position] = row;
        positions.push_back(position);
    }
    if (indexed && sameKeys) {
        m_indexed = m_generation;
    }
    Q_EMIT rowsReplaced(positions);
}

void RowStore::removeRowsAt(std::span<const std::size_t> ascendingPositions)
{
    const Change change(*this);
    if (!change || ascendingPositions.empty() || ascendingPositions.back() >= rows().size()) {
        return;
    }
    Q_EMIT rowsAboutToBeRemovedAt(ascendingPositions);
    const bool indexed = m_indexed == m_generation && m_index.size() == rows().size(); // no name twice
    Rows &kept = writableRows();
    Rows removed;
    removed.reserve(ascendingPositions.size());
    for (const std::size_t position : ascendingPositions) {
        removed.push_back(kept[position]);
    }
    eraseAt(kept, ascendingPositions);
    if (indexed) {
        for (const Row &row : removed) {
            m_index.erase(keyOf(*row));
        }
        eraseAt(m_numbers, ascendingPositions);
        m_indexed = m_generation;
    }
    discard(std::move(removed), ascendingPositions.size());
    Q_EMIT rowsRemovedAt(ascendingPositions);
}

void RowStore::appendRows(std::span<const Row> rows)
{
    const Change change(*this);
    if (!change || rows.empty()) {
        return;
    }
    const bool indexed = m_indexed == m_generation;
    Rows &target = writableRows();
    const std::size_t first = target.size();
    target.insert(target.end(), rows.begin(), rows.end());
    if (indexed) {
        addToIndex(first);
    }
    Q_EMIT rowsAppended(first);
}

void RowStore::clear()
{
    std::vector<std::size_t> all(rows().size());
    std::iota(all.begin(), all.end(), std::size_t(0));
    ++m_generation;
    removeRowsAt(all);
}

void RowStore::timePasses()
{
    Q_EMIT timePassed();
}

} // namespace tidewright
