// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/controllers/CommandTable.h"

namespace tidewright {

/// The table of a kind whose objects roll out their pods: restarts them, goes back to the revision before,
/// and shows which revisions there are.
class WorkloadController : public CommandTable
{
    Q_OBJECT
public:
    /// `target` is what kubectl takes in front of a name, such as "deployment/".
    WorkloadController(
        ResourceKind kind, const QString &target, WindowState &window, QWidget *parent = nullptr);

public Q_SLOTS:
    /// Replaces the pods of the chosen rows, as their kind rolls out.
    void restart();
    void undoRollOut();
    /// In the window's console.
    void showHistory();

protected:
    void extendContextMenu(QMenu &menu) override;

    /// "kubectl rollout VERB" for these names.
    std::vector<QStringList> rolloutLines(const QString &verb, const ObjectNames &objects) const;

private:
    QString m_target;
};

} // namespace tidewright
