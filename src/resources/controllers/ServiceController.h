// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/Service.h"
#include "resources/table/SharedContentViewController.h"

namespace tidewright {

/// The table of services. It adds nothing: View Logs comes with the kind's `logTarget`.
class ServiceController : public SharedContentViewController
{
public:
    explicit ServiceController(WindowState &window, QWidget *parent = nullptr)
        : SharedContentViewController(serviceKind(), window, parent)
    {
    }
};

} // namespace tidewright
