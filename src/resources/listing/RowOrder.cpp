// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/RowOrder.h"

#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

namespace tidewright {

namespace {

constexpr qsizetype blockSize = sizeof(quint64);

/// The bytes from `offset` on as a number that orders as they do, with zeros behind the end.
quint64 blockAt(const QByteArray &text, qsizetype offset)
{
    if (offset >= text.size()) {
        return 0;
    }
    quint64 block = 0;
    const qsizetype length = std::min(blockSize, text.size() - offset);
    std::memcpy(&block, text.constData() + offset, static_cast<std::size_t>(length));
    return qFromBigEndian(block);
}

/// Orders as the numbers do.
quint64 orderedBits(double number)
{
    constexpr quint64 sign = quint64(1) << 63;
    const auto bits = std::bit_cast<quint64>(number + 0.0); // -0 and 0 are one number
    return bits & sign ? ~bits : bits | sign;
}

} // namespace

RowOrder::Key RowOrder::keyOf(SortKey key, bool descending)
{
    if (const double *number = std::get_if<double>(&key)) {
        const quint64 last = descending ? 0 : ~quint64(0);
        return {std::isnan(*number) ? last : orderedBits(*number), {}};
    }
    QByteArray text = std::get<QByteArray>(std::move(key));
    const quint64 head = blockAt(text, 0);
    return {head, std::move(text)};
}

void RowOrder::reset(const std::vector<Column> &columns, const QList<SortDescriptor> &sorts, const Rows &rows)
{
    m_levels.clear();
    for (const SortDescriptor &sort : sorts) {
        const Column &column = columns.at(static_cast<std::size_t>(sort.column));
        m_levels.push_back({column.sortKey, sort.order == Qt::DescendingOrder, {}});
        m_levels.back().keys.reserve(rows.size());
    }
    append(rows);
}

void RowOrder::append(std::span<const Row> rows)
{
    for (Level &level : m_levels) {
        for (const Row &row : rows) {
            level.keys.push_back(keyOf(level.sortKey(*row), level.descending));
        }
    }
}

bool RowOrder::replace(int position, const KubeTableItem &row)
{
    bool changed = false;
    for (Level &level : m_levels) {
        Key &old = level.keys[static_cast<std::size_t>(position)];
        Key key = keyOf(level.sortKey(row), level.descending);
        if (!(key == old)) {
            old = std::move(key);
            changed = true;
        }
    }
    return changed;
}

void RowOrder::removeAt(std::span<const std::size_t> ascendingPositions)
{
    for (Level &level : m_levels) {
        eraseAt(level.keys, ascendingPositions);
    }
}

bool RowOrder::less(int a, int b) const
{
    for (const Level &level : m_levels) {
        const Key &keyA = level.keys[static_cast<std::size_t>(a)];
        const Key &keyB = level.keys[static_cast<std::size_t>(b)];
        if (keyA.head != keyB.head) {
            return (keyA.head < keyB.head) != level.descending;
        }
        if (const int order = keyA.text.compare(keyB.text); order != 0) {
            return (order < 0) != level.descending;
        }
    }
    return a < b;
}

/// Sorts by the keys eight bytes at a time, each further block only within the runs that the blocks before
/// left equal. Appends the runs whose keys are equal to the end.
void RowOrder::sortLevel(const Level &level, std::span<Item> items, std::vector<std::span<Item>> &equalRuns)
{
    const auto keyAt = [&level](const Item &item) -> const Key & {
        return level.keys[static_cast<std::size_t>(item.position)];
    };
    const auto blockLess = [](const Item &a, const Item &b) {
        return a.block != b.block ? a.block < b.block : a.position < b.position;
    };
    const quint64 mask = level.descending ? ~quint64(0) : 0;
    std::vector<std::span<Item>> runs{items};
    std::vector<std::span<Item>> nextRuns;
    for (qsizetype offset = 0; !runs.empty(); offset += blockSize) {
        nextRuns.clear();
        for (const std::span<Item> run : runs) {
            const bool ended = offset > 0 && std::all_of(run.begin(), run.end(), [&](const Item &item) {
                return keyAt(item).text.size() <= offset;
            });
            for (Item &item : run) {
                const Key &key = keyAt(item);
                const quint64 block = offset == 0 ? key.head
                    : ended                       ? static_cast<quint64>(key.text.size())
                                                  : blockAt(key.text, offset);
                item.block = block ^ mask;
            }
            if (!std::is_sorted(run.begin(), run.end(), blockLess)) { // equal texts are common
                std::sort(run.begin(), run.end(), blockLess);
            }
            for (auto begin = run.begin(); begin != run.end();) {
                const auto end = std::find_if(begin, run.end(),
                    [block = begin->block](const Item &item) { return item.block != block; });
                if (end - begin > 1) {
                    (ended ? equalRuns : nextRuns).emplace_back(begin, end);
                }
                begin = end;
            }
        }
        std::swap(runs, nextRuns);
    }
}

void RowOrder::sort(std::vector<int> &positions) const
{
    if (positions.size() < 2 || m_levels.empty()) {
        std::sort(positions.begin(), positions.end());
        return;
    }
    std::vector<Item> items(positions.size());
    std::transform(positions.begin(), positions.end(), items.begin(), [](int position) {
        return Item{0, position};
    });
    std::vector<std::span<Item>> runs{items};
    for (const Level &level : m_levels) {
        std::vector<std::span<Item>> equalRuns;
        for (const std::span<Item> run : runs) {
            sortLevel(level, run, equalRuns);
        }
        runs = std::move(equalRuns);
    }
    std::transform(
        items.begin(), items.end(), positions.begin(), [](const Item &item) { return item.position; });
}

} // namespace tidewright
