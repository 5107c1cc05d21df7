// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/TableHistory.h"

namespace tidewright {

void TableHistory::visit(const VisitedTable &next)
{
    m_visits.resize(m_current + 1);
    m_visits.append(next);
    if (m_visits.size() > limit) {
        m_visits.removeFirst();
    }
    m_current = m_visits.size() - 1;
}

bool TableHistory::canGo(int steps) const
{
    const qsizetype target = m_current + steps;
    return target >= 0 && target < m_visits.size();
}

const VisitedTable &TableHistory::go(int steps)
{
    m_current += steps;
    return m_visits[m_current];
}

} // namespace tidewright
