// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/controllers/WorkloadController.h"
#include "resources/kinds/DaemonSet.h"

namespace tidewright {

/// The table of daemon sets, which roll out.
class DaemonSetController : public WorkloadController
{
public:
    explicit DaemonSetController(WindowState &window, QWidget *parent = nullptr)
        : WorkloadController(daemonSetKind(), QStringLiteral("daemonset/"), window, parent)
    {
    }
};

} // namespace tidewright
