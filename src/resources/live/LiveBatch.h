// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/KubeTableItem.h"

#include <cstddef>
#include <vector>

namespace tidewright {

/// An object that a table is to show as `line` says.
struct LiveUpsert
{
    QByteArray key; ///< "namespace/name", or "/name" for what belongs to the whole cluster
    QString nameSpace; ///< what a row of it says (KubeTableItem::nameSpace)
    QByteArray line; ///< as KubeTableItem::line
    QByteArray order; ///< LiveChange::order
    /// The row, made of the line, of an object that is new, or has been made anew under its name: it is
    /// appended, or takes the place of the row with that key. Null for one that was reported before: the row
    /// that is there changes (`changedRow`).
    Row row;
};

/// What is shown at one time: each key at most once, in upserts or in removals.
struct LiveBatch
{
    /// From now on the whole state is reported once more. What is unchanged is not repeated, what is gone is
    /// removed with `stateComplete`.
    bool stateBegun = false;
    bool stateComplete = false; ///< the rows, with this batch, are the state of the cluster
    bool isWhole = false; ///< there are no other objects than its upserts
    std::vector<LiveUpsert> upserts; ///< states in the order of the listing, then changes as they came
    std::vector<QByteArray> removals; ///< keys
    std::size_t skippedLines = 0; ///< objects that make no row of this kind
    QString firstSkippedLine; ///< of these, cut to 200 UTF-16 units

    bool isEmpty() const
    {
        return !stateBegun && !stateComplete && !isWhole && upserts.empty() && removals.empty()
            && skippedLines == 0;
    }
};

} // namespace tidewright
