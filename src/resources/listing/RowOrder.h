// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

#include <span>

namespace tidewright {

/// One level of a sort order.
struct SortDescriptor
{
    int column = 0;
    Qt::SortOrder order = Qt::AscendingOrder;

    friend bool operator==(const SortDescriptor &, const SortDescriptor &) = default;
};

/// The order that sort descriptors give to the rows of a table, each row known by its position among them.
/// Rows that compare equal stand in the order of their positions, in descending orders too. Holds the typed
/// keys of every row and owns no rows. What is not a number (NaN) comes last, in descending orders too.
class RowOrder
{
public:
    void reset(const std::vector<Column> &columns, const QList<SortDescriptor> &sorts, const Rows &rows);
    void append(std::span<const Row> rows);
    /// True when a key of the row is another one now.
    bool replace(int position, const KubeTableItem &row);
    void removeAt(std::span<const std::size_t> ascendingPositions);

    bool less(int a, int b) const;
    /// The same outcome as std::sort by `less`, in 7 to 8 ms instead of 15 to 24 for 30,000 names with a long
    /// common beginning, and 40 ms instead of 176 for 100,000: a frame is 16.
    void sort(std::vector<int> &positions) const;

private:
    /// A number's order is in `head` alone, a text's in its bytes, of which `head` repeats the first eight.
    struct Key
    {
        quint64 head = 0;
        QByteArray text;

        friend bool operator==(const Key &, const Key &) = default;
    };

    struct Level
    {
        std::function<SortKey(const KubeTableItem &)> sortKey;
        bool descending = false;
        std::vector<Key> keys;
    };

    struct Item
    {
        quint64 block = 0;
        int position = 0;
    };

    static Key keyOf(SortKey key, bool descending);
    static void sortLevel(const Level &level, std::span<Item> items, std::vector<std::span<Item>> &equalRuns);

    std::vector<Level> m_levels;
};

/// Takes the elements at ascending positions out of a vector, in linear time.
template <typename T> void eraseAt(std::vector<T> &elements, std::span<const std::size_t> ascendingPositions)
{
    if (ascendingPositions.empty()) {
        return;
    }
    std::size_t kept = ascendingPositions.front();
    for (std::size_t i = kept, next = 0; i < elements.size(); ++i) {
        if (next < ascendingPositions.size() && ascendingPositions[next] == i) {
            ++next;
        } else {
            elements[kept++] = std::move(elements[i]);
        }
    }
    elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(kept), elements.end());
}

} // namespace tidewright
