// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/controllers/WorkloadController.h"

#include <QPersistentModelIndex>

namespace tidewright {

class ReplicaCell;
class VisibleCells;
struct Deployment;

/// The table of deployments, with a slider in each row that scales it. Their roll-outs can be paused.
class DeploymentController : public WorkloadController
{
    Q_OBJECT
public:
    explicit DeploymentController(WindowState &window, QWidget *parent = nullptr);

public Q_SLOTS:
    /// Whatever changes in the chosen deployments is not rolled out until they are resumed.
    void pauseRollOut();
    void resumeRollOut();

protected:
    void rowsChanged() override;
    void extendContextMenu(QMenu &menu) override;

private:
    bool ensureCell(const QModelIndex &index);
    ReplicaCell *cellAt(const QModelIndex &index) const;
    /// The user has let go of a row's slider: asks, and scales.
    void sliderChanged(ReplicaCell &cell, qint64 desired);
    void scale(const ObjectName &deployment, qint64 desired);
    void setCounts(const QPersistentModelIndex &index, qint64 previousDesired, qint64 desired);
    /// Gives up a change: the row shows what the cluster said again.
    void restoreCounts(const QPersistentModelIndex &index);
    void leadFocusThrough(ReplicaCell *cell);

    VisibleCells *m_cells;
    QPointer<ReplicaCell> m_inFocusChain;
};

} // namespace tidewright
