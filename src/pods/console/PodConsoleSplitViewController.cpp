// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/console/PodConsoleSplitViewController.h"

namespace tidewright {

PodConsoleSplitViewController::PodConsoleSplitViewController(
    QWidget *tables, QWidget *console, QWidget *parent)
    : QSplitter(Qt::Vertical, parent)
    , m_tablesTabSplitItem(tables)
    , m_consoleSplitItem(console)
{
    addWidget(tables);
    addWidget(console);
    setStretchFactor(indexOf(tables), 7);
    setStretchFactor(indexOf(console), 2);
    setSizes({510, 185});
    setCollapsible(indexOf(tables), false);
    setHandleWidth(1);
}

} // namespace tidewright
