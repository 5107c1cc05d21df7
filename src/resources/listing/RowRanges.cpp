// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/RowRanges.h"

namespace tidewright {

std::vector<RowRange> rowRanges(std::span<const int> ascendingRows)
{
    constexpr std::size_t many = 16;
    std::vector<RowRange> ranges;
    for (const int row : ascendingRows) {
        if (!ranges.empty() && row == ranges.back().last + 1) {
            ranges.back().last = row;
        } else if (ranges.size() == many) {
            return {{ascendingRows.front(), ascendingRows.back()}};
        } else {
            ranges.push_back({row, row});
        }
    }
    return ranges;
}

QModelIndexList movedIndexes(const QModelIndexList &indexes, std::span<const int> newRows)
{
    QModelIndexList moved;
    moved.reserve(indexes.size());
    for (const QModelIndex &index : indexes) {
        moved.append(index.siblingAtRow(newRows[static_cast<std::size_t>(index.row())]));
    }
    return moved;
}

} // namespace tidewright
