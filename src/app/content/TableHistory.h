// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ObjectName.h"

namespace tidewright {

/// A table as a window showed it.
struct VisitedTable
{
    QString tab; ///< its sidebar name
    QString filter;
    ObjectName selected; ///< the first selected row; without a name: none
};

/// The tables that a window has shown one after the other, for going back and forward. At most `limit` of
/// them.
class TableHistory
{
public:
    static constexpr qsizetype limit = 100;

    /// Where the window is; must not be asked for before the first visit.
    VisitedTable &current() { return m_visits[m_current]; }
    bool isEmpty() const { return m_visits.isEmpty(); }
    /// Goes on to another table; what was ahead is forgotten.
    void visit(const VisitedTable &next);
    /// Whether there is something so many steps ahead, or back when negative.
    bool canGo(int steps) const;
    /// Goes there, which must be possible.
    const VisitedTable &go(int steps);

private:
    QList<VisitedTable> m_visits;
    qsizetype m_current = -1;
};

} // namespace tidewright
