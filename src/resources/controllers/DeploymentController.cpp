// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/DeploymentController.h"

#include "core/kubeconfig/ContextPolicy.h"
#include "platform/text/DisplayText.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/controllers/ReplicaCell.h"
#include "resources/controllers/VisibleCells.h"
#include "resources/kinds/Deployment.h"
#include "resources/table/ResourceTableView.h"

#include <QMenu>

#include <algorithm>

namespace tidewright {

namespace {

const auto nothingScaled = QStringLiteral("Nothing was scaled");
constexpr QLatin1String desiredColumn("desired");

const Deployment &deploymentAt(const ArrangingModel &model, int row)
{
    return static_cast<const Deployment &>(*model.arrangedRow(row));
}

void setFocusPolicies(ReplicaCell &cell, Qt::FocusPolicy policy)
{
    cell.slider()->setFocusPolicy(policy);
    cell.field()->setFocusPolicy(policy);
}

} // namespace

DeploymentController::DeploymentController(WindowState &window, QWidget *parent)
    : WorkloadController(deploymentKind(), QStringLiteral("deployment/"), window, parent)
    , m_cells(new VisibleCells(
          tableView(), kind().indexOf(desiredColumn),
          [this](const QModelIndex &index) { return ensureCell(index); },
          [](const QWidget &cell) { return static_cast<const ReplicaCell &>(cell).isBeingChanged(); }))
{
    connect(&ContextPolicies::shared(), &ContextPolicies::changed, this, &DeploymentController::rowsChanged);
    connect(&window, &WindowState::accessChanged, this, &DeploymentController::rowsChanged);
    connect(tableView().selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        [this](const QModelIndex &current) { leadFocusThrough(cellAt(current)); });
}

void DeploymentController::rowsChanged()
{
    m_cells->update();
}

ReplicaCell *DeploymentController::cellAt(const QModelIndex &index) const
{
    return qobject_cast<ReplicaCell *>(m_cells->at(index));
}

bool DeploymentController::ensureCell(const QModelIndex &index)
{
    const Deployment &deployment = deploymentAt(arrangedObjects(), index.row());
    ReplicaCell *cell = cellAt(index);
    const ObjectName object{deployment.nameSpace, deployment.name};
    const bool missing = !cell || cell->deployment() != object;
    if (missing) {
        cell = new ReplicaCell(object, tableView().viewport());
        setFocusPolicies(*cell, Qt::ClickFocus);
        connect(cell, &ReplicaCell::chosen, this,
            [this, cell](qint64 desired) { sliderChanged(*cell, desired); });
        m_cells->put(index, cell);
        if (index.row() == tableView().currentIndex().row()) {
            leadFocusThrough(cell);
        }
    }
    cell->setDesired(deployment.desired);
    const QString reason
        = deedObstacle(kubeSplitViewController(), kind(), Deed::Scale, {objectAt(index.row())});
    for (QWidget *part : {static_cast<QWidget *>(cell->slider()), static_cast<QWidget *>(cell->field())}) {
        part->setEnabled(reason.isEmpty());
        part->setToolTip(
            display_text::toolTip(reason.isEmpty() ? tr("Scale %1").arg(deployment.name) : reason));
    }
    return missing;
}

/// Tab leads from the table to the current row's slider and number, and on: not through those of every row.
void DeploymentController::leadFocusThrough(ReplicaCell *cell)
{
    if (m_inFocusChain) {
        setFocusPolicies(*m_inFocusChain, Qt::ClickFocus);
    }
    m_inFocusChain = cell;
    if (cell) {
        setFocusPolicies(*cell, Qt::StrongFocus);
        setTabOrder(&tableView(), cell->slider());
        setTabOrder(cell->slider(), cell->field());
    }
}

void DeploymentController::sliderChanged(ReplicaCell &cell, qint64 desired)
{
    const QPersistentModelIndex index = m_cells->indexOf(&cell);
    if (!index.isValid()) {
        cell.answered();
        return;
    }
    const Deployment &deployment = deploymentAt(arrangedObjects(), index.row());
    const ObjectName object = objectAt(index.row());
    const qint64 previous = deployment.previousDesired;
    if (previous == desired || !canChange({object}, nothingScaled)) {
        cell.answered();
        return;
    }
    setCounts(index, previous, desired);
    const ChangePlace place(kubeSplitViewController());
    confirmChange(this, place,
        {.title = QStringLiteral("Confirm Scale"),
            .message = QStringLiteral("Are you sure you want to scale the deployment \"%1\" from %2 to %3?")
                           .arg(object.name, QString::number(previous), QString::number(desired)),
            .yes = QStringLiteral("Scale Deployment"),
            .accessory = confirmationDetails(place.text(kind(), object.nameSpace))},
        [this, self = QPointer(this), cell = QPointer(&cell), index, place, object, desired](bool confirmed) {
            if (!self) {
                return;
            }
            if (confirmed && place.isStillShown()) {
                scale(object, desired);
                setCounts(index, desired, desired);
            } else {
                if (confirmed) {
                    refuseMovedChange(kubeSplitViewController(), nothingScaled);
                }
                restoreCounts(index);
            }
            if (cell) {
                cell->answered();
            }
        });
}

void DeploymentController::scale(const ObjectName &deployment, qint64 desired)
{
    WindowState &window = kubeSplitViewController();
    const QStringList command = QStringList{QStringLiteral("kubectl"), QStringLiteral("scale")}
        + placeArguments(window.currentContext(), deployment.nameSpace)
        + QStringList{
            QStringLiteral("--replicas=%1").arg(desired), QLatin1String("deployment/") + deployment.name};
    runChange(ChangePlace(window), command, nothingScaled, [self = QPointer(this)] {
        if (self) {
            self->reloadSoon();
        }
    });
}

void DeploymentController::setCounts(
    const QPersistentModelIndex &index, qint64 previousDesired, qint64 desired)
{
    if (!index.isValid()) {
        return; // a refresh has removed it
    }
    auto changed = std::make_shared<Deployment>(deploymentAt(arrangedObjects(), index.row()));
    changed->previousDesired = previousDesired;
    changed->desired = desired;
    replaceRow(index, changed);
    m_cells->update();
}

void DeploymentController::restoreCounts(const QPersistentModelIndex &index)
{
    if (index.isValid()) {
        const qint64 known = deploymentAt(arrangedObjects(), index.row()).previousDesired;
        setCounts(index, known, known);
    }
}

void DeploymentController::extendContextMenu(QMenu &menu)
{
    const int clicked = tableView().clickedRow();
    const QPersistentModelIndex row = arrangedObjects().index(
        clicked >= 0 ? clicked : tableView().currentIndex().row(), kind().indexOf(desiredColumn));
    QAction *action = menu.addAction(QStringLiteral("Scale…"), this, [this, row] {
        if (row.isValid()) {
            tableView().scrollTo(row);
            m_cells->ensure(row);
            cellAt(row)->startTyping();
        }
    });
    enableFor(Deed::Scale, *action, row.isValid());
    WorkloadController::extendContextMenu(menu);
    const bool hasRow = chosenCount() > 0;
    enableFor(Deed::Change,
        *menu.addAction(QStringLiteral("Pause Roll-Out"), this, &DeploymentController::pauseRollOut), hasRow);
    enableFor(Deed::Change,
        *menu.addAction(QStringLiteral("Resume Roll-Out"), this, &DeploymentController::resumeRollOut),
        hasRow);
}

void DeploymentController::pauseRollOut()
{
    const ObjectNames objects = chosenObjects();
    runOnRows({QStringLiteral("Confirm Pause"),
        QStringLiteral("Are you sure you want to pause the roll-out of %1?").arg(nounFor(objects)),
        QStringLiteral("Pause"), QStringLiteral("Nothing was paused"), objects,
        rolloutLines(QStringLiteral("pause"), objects), false});
}

void DeploymentController::resumeRollOut()
{
    const ObjectNames objects = chosenObjects();
    runOnRows({QStringLiteral("Confirm Resume"),
        QStringLiteral("Are you sure you want to resume the roll-out of %1?").arg(nounFor(objects)),
        QStringLiteral("Resume"), QStringLiteral("Nothing was resumed"), objects,
        rolloutLines(QStringLiteral("resume"), objects), false});
}

} // namespace tidewright
