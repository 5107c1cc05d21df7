// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

#include <utility>

namespace tidewright {

/// What one listing changes in a table. Positions are indexes into the snapshot it was compared with.
struct MergeResult
{
    std::vector<std::pair<std::size_t, Row>> changed; ///< ascending positions, each at most once
    std::vector<std::size_t> stale; ///< positions of vanished rows, ascending
    Rows added; ///< in the order of the listing
    std::size_t lines = 0; ///< lines of the listing
    std::size_t skippedLines = 0; ///< of these, lines whose field count was wrong
    QString firstSkippedLine; ///< cut to 200 UTF-16 units
    /// The listing is a table with these titles, other than the kind's (ResourceKind::printedTitles), and
    /// nothing of it was merged.
    std::optional<QStringList> otherTitles;
};

/// What the lines of a listing hold.
enum class LineForm {
    Plain, ///< the fields of the kind
    WithNamespace, ///< and one more behind them, the object's namespace
};

/// Compares a listing (UTF-8, one object a line, fields separated by tabs) with the rows a table holds. Rows
/// are matched by name, and by namespace where lines tell it, against the snapshot only, each with its first
/// row; a later line for the same row wins; what the snapshot does not hold becomes a new row for each of its
/// lines. Linear in lines and rows. Pure but for the moment that new rows are told; any thread.
MergeResult mergeListing(const ResourceKind &kind, const QByteArray &listing, const Rows &snapshot,
    LineForm form = LineForm::Plain);

/// The output arguments of a kind's listing, for lines that also tell the namespace.
QStringList withNamespaceField(const QStringList &outputArguments);

} // namespace tidewright
