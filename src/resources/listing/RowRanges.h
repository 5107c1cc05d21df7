// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QModelIndexList>

#include <span>
#include <vector>

namespace tidewright {

/// Rows from `first` to `last`, both included.
struct RowRange
{
    int first = 0;
    int last = 0;
};

/// The ranges that ascending rows form; when these are many, the one range around all of them.
std::vector<RowRange> rowRanges(std::span<const int> ascendingRows);

/// Where indexes go when the rows of their model move; `newRows` has the new row of each old one.
QModelIndexList movedIndexes(const QModelIndexList &indexes, std::span<const int> newRows);

} // namespace tidewright
