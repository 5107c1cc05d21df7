// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/controllers/WorkloadController.h"

namespace tidewright {

/// The table of stateful sets, which roll out, and can be scaled.
class StatefulSetController : public WorkloadController
{
    Q_OBJECT
public:
    explicit StatefulSetController(WindowState &window, QWidget *parent = nullptr);

public Q_SLOTS:
    /// Asks how many replicas the chosen set is to have.
    void scale();

protected:
    void extendContextMenu(QMenu &menu) override;

private:
    void scaleTo(const ChangePlace &place, const ObjectName &object, int replicas);
};

} // namespace tidewright
