// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/RowStore.h"

#include "core/Shell.h"
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

std::optional<std::size_t> RowStore::find(const QString &name) const
{
    if (m_indexed != m_generation) {
        m_index.clear();
        m_index.reserve(rows().size());
        for (std::size_t i = 0; i < rows().size(); ++i) {
            m_index.try_emplace(rows()[i]->name, i);
        }
        m_indexed = m_generation;
    }
    const auto found = m_index.find(name);
    return found == m_index.end() ? std::nullopt : std::optional(found->second);
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
    bool sameNames = true;
    for (const auto &[position, row] : changed) {
        if (position >= target.size()) {
            break;
        }
        row->startTimeInterval = target[position]->startTimeInterval;
        sameNames = sameNames && target[position]->name == row->name;
        target[position] = row;
        positions.push_back(position);
    }
    if (indexed && sameNames) {
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
    Rows &kept = writableRows();
    Rows removed;
    removed.reserve(ascendingPositions.size());
    for (const std::size_t position : ascendingPositions) {
        removed.push_back(kept[position]);
    }
    eraseAt(kept, ascendingPositions);
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
        for (std::size_t i = first; i < target.size(); ++i) {
            m_index.try_emplace(target[i]->name, i);
        }
        m_indexed = m_generation;
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
