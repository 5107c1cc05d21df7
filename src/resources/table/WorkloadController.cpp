// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/WorkloadController.h"

#include <QMenu>

namespace tidewright {

WorkloadController::WorkloadController(
    ResourceKind kind, const QString &target, WindowState &window, QWidget *parent)
    : CommandTable(std::move(kind), window, parent)
    , m_target(target)
{
}

QStringList WorkloadController::rolloutLine(const QString &verb, const QStringList &names) const
{
    QStringList line = commandLine({QStringLiteral("rollout"), verb});
    for (const QString &name : names) {
        line += m_target + name;
    }
    return line;
}

void WorkloadController::restart()
{
    const QStringList names = chosenNames();
    const QString whose = names.size() == 1 ? QStringLiteral("its") : QStringLiteral("their");
    runOnRows({QStringLiteral("Confirm Restart"),
        QStringLiteral("Are you sure you want to restart %1? All %2 pods are replaced.")
            .arg(nounFor(names), whose),
        QStringLiteral("Restart"), QStringLiteral("Nothing was restarted"), names,
        {rolloutLine(QStringLiteral("restart"), names)}});
}

void WorkloadController::undoRollOut()
{
    if (const QString name = onlyChosen(); !name.isEmpty()) {
        runOnRows({QStringLiteral("Confirm Roll Back"),
            QStringLiteral("Are you sure you want to take %1 back to the revision before its last roll-out?")
                .arg(nounFor({name})),
            QStringLiteral("Roll Back"), QStringLiteral("Nothing was rolled back"), {name},
            {rolloutLine(QStringLiteral("undo"), {name})}});
    }
}

void WorkloadController::showHistory()
{
    const QString name = onlyChosen();
    if (name.isEmpty() || !canName({name}, QStringLiteral("No history was read"))) {
        return;
    }
    WindowState &window = kubeSplitViewController();
    window.kubeCtl().makeShell()->runToldAsync(
        rolloutLine(QStringLiteral("history"), {name}), window.console(), [](const ShellResult &) {});
}

void WorkloadController::extendContextMenu(QMenu &menu)
{
    const int chosen = chosenCount();
    enableChange(*menu.addAction(QStringLiteral("Restart…"), this, &WorkloadController::restart), chosen > 0);
    enableChange(
        *menu.addAction(QStringLiteral("Roll Back…"), this, &WorkloadController::undoRollOut), chosen == 1);
    menu.addAction(QStringLiteral("Roll-Out History"), this, &WorkloadController::showHistory)
        ->setEnabled(chosen == 1);
}

} // namespace tidewright
