// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/controllers/CommandTable.h"

namespace tidewright {

struct DrainPlan;

/// The table of nodes: closes them to new pods, opens them again, and empties them.
class NodeController : public CommandTable
{
    Q_OBJECT
public:
    explicit NodeController(WindowState &window, QWidget *parent = nullptr);

public Q_SLOTS:
    void cordon();
    void uncordon();
    /// Asks kubectl for the pods of the chosen node, and then whether they are to go.
    void drain();

protected:
    void extendContextMenu(QMenu &menu) override;

private:
    bool areCordoned(const QStringList &names, bool cordoned) const;
    void confirmDrain(const ChangePlace &place, const QString &name, const DrainPlan &plan);
};

} // namespace tidewright
