// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// What is to be told about the rows of a table.
struct TableFacts
{
    int shown = 0; ///< rows that match the filter
    int all = 0;
    int selected = 0;
    QString filter;
    QString labels; ///< the label selector of all rows; empty without one
    QString filterNote; ///< why the filter may not do what it looks like: sentences, or nothing
    QString nameSpace; ///< a name or `allNamespaces`; empty while none is chosen
    QString hint; ///< why the window has nothing to load from, with details on further lines
    QString problem; ///< why the table is empty or incomplete, with details on further lines
    bool hasFailed = false; ///< the latest load brought nothing but that problem
    bool isLoading = false;
    bool hasBeenLoaded = false;
};

/// "12 pods", "3 of 12 pods · 2 selected", "500 pods so far"; empty while nobody knows how many there are.
/// Pure, any thread.
QString countsText(const ResourceKind &kind, const TableFacts &facts);

/// Why no row is shown: a sentence, and further lines of details. Pure, any thread.
QString emptyReason(const ResourceKind &kind, const TableFacts &facts);

} // namespace tidewright
