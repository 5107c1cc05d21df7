// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/SharedContentViewController.h"

#include <QPersistentModelIndex>

#include <vector>

namespace tidewright {

class ContainerButton;
class TableButtonView;

/// The table of pods, with a toggle button for each container in its last column. The buttons that are on are
/// the chosen containers. Cells are built when their row is first seen; a row that vanishes, or that the
/// filter hides, takes its buttons with it, so that nothing is chosen that cannot be seen.
class PodController : public SharedContentViewController
{
    Q_OBJECT
public:
    explicit PodController(WindowState &window, QWidget *parent = nullptr);

    /// The buttons there are now, in the order in which they were created.
    std::vector<ContainerButton *> containerButtons() const;
    /// The pairs whose buttons are on, in that order.
    std::vector<ContainerPair> selectedContainerPairs() const;

public Q_SLOTS:
    void reloadPods();

Q_SIGNALS:
    void selectedContainersChanged();

protected:
    void rowsChanged() override;
    void extendContextMenu(QMenu &menu) override;

private:
    struct Cell
    {
        QPersistentModelIndex index; // in the arranged model
        QPointer<TableButtonView> view;
    };

    void selectContainer(ContainerButton *button);
    void buildVisibleCells();
    /// True when a cell had to be built.
    bool ensureCell(const QModelIndex &index);
    void forgetGoneCells();
    void dropCellsOutOfSight();
    TableButtonView *cellAt(const QModelIndex &index) const;

    std::vector<QPointer<ContainerButton>> m_containerButtons;
    std::vector<Cell> m_cells;
};

} // namespace tidewright
