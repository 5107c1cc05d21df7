// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/table/SharedContentViewController.h"

#include <vector>

namespace tidewright {

class ContainerButton;
class TableButtonView;
class VisibleCells;

/// The table of pods, with a toggle button for each container in its last column. The buttons that are on are
/// the chosen containers. A row that vanishes, or that the filter hides, takes its buttons with it, so that
/// nothing is chosen that cannot be seen.
class PodController : public SharedContentViewController
{
    Q_OBJECT
public:
    explicit PodController(WindowState &window, QWidget *parent = nullptr);

    /// The buttons there are now, in the order in which they were created.
    std::vector<ContainerButton *> containerButtons() const;
    /// The pairs whose buttons are on, in that order.
    std::vector<ContainerPair> selectedContainerPairs() const;

    /// The same, and switches all buttons off.
    std::vector<ContainerPair> takeSelectedContainerPairs();

    QString viewLogsObstacle() const override;
    /// Why no file can be copied into a container now, as a sentence; empty when one can.
    QString copyFileObstacle() const;
    /// Why no shell can be opened in a container now, in the same way.
    QString openShellObstacle() const;

public Q_SLOTS:
    void reloadPods();
    /// Opens one window with the logs of the chosen containers, which are chosen no longer then. When there
    /// are none, of all containers of the selected pods, or of the pod outside the selection that a context
    /// menu was opened on.
    void viewLogs() override;
    /// Opens a shell in the chosen container, which is chosen no longer then; when there is none, in the
    /// first one of the only selected pod. Asks where the context is protected.
    void openShell();

Q_SIGNALS:
    void selectedContainersChanged();

protected:
    void rowsChanged() override;
    void extendContextMenu(QMenu &menu) override;

private:
    void viewPreviousLogs(const ContainerPair &container);
    void selectContainer(ContainerButton *button);
    std::optional<ContainerPair> containerForShell() const;
    void openShellIn(const ContainerPair &container);
    void addShellCommands(QMenu &menu, int row);
    bool ensureCell(const QModelIndex &index);
    TableButtonView *cellAt(const QModelIndex &index) const;

    std::vector<QPointer<ContainerButton>> m_containerButtons;
    VisibleCells *m_cells;
};

} // namespace tidewright
