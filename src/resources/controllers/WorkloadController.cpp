// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/WorkloadController.h"

#include <QMenu>

namespace tidewright {

WorkloadController::WorkloadController(
    ResourceKind kind, const QString &target, WindowState &window, QWidget *parent)
    : CommandTable(std::move(kind), window, parent)
    , m_target(target)
{
}

std::vector<QStringList> WorkloadController::rolloutLines(
    const QString &verb, const ObjectNames &objects) const
{
    return commandLines({QStringLiteral("rollout"), verb}, m_target, objects);
}

void WorkloadController::restart()
{
    const ObjectNames objects = chosenObjects();
    const QString whose = objects.size() == 1 ? QStringLiteral("its") : QStringLiteral("their");
    runOnRows({QStringLiteral("Confirm Restart"),
        QStringLiteral("Are you sure you want to restart %1? All %2 pods are replaced.")
            .arg(nounFor(objects), whose),
        QStringLiteral("Restart"), QStringLiteral("Nothing was restarted"), objects,
        rolloutLines(QStringLiteral("restart"), objects)});
}

void WorkloadController::undoRollOut()
{
    if (const auto object = onlyChosen()) {
        runOnRows({QStringLiteral("Confirm Roll Back"),
            QStringLiteral("Are you sure you want to take %1 back to the revision before its last roll-out?")
                .arg(nounFor({*object})),
            QStringLiteral("Roll Back"), QStringLiteral("Nothing was rolled back"), {*object},
            rolloutLines(QStringLiteral("undo"), {*object})});
    }
}

void WorkloadController::showHistory()
{
    const auto object = onlyChosen();
    if (!object || !canName({*object}, QStringLiteral("No history was read"))) {
        return;
    }
    WindowState &window = kubeSplitViewController();
    window.kubeCtl().makeShell()->runToldAsync(rolloutLines(QStringLiteral("history"), {*object}).front(),
        window.console(), [](const ShellResult &) {});
}

void WorkloadController::extendContextMenu(QMenu &menu)
{
    const int chosen = chosenCount();
    enableFor(Deed::Change, *menu.addAction(QStringLiteral("Restart…"), this, &WorkloadController::restart),
        chosen > 0);
    enableFor(Deed::Change,
        *menu.addAction(QStringLiteral("Roll Back…"), this, &WorkloadController::undoRollOut), chosen == 1);
    menu.addAction(QStringLiteral("Roll-Out History"), this, &WorkloadController::showHistory)
        ->setEnabled(chosen == 1);
}

} // namespace tidewright
