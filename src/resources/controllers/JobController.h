// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/Job.h"
#include "resources/table/SharedContentViewController.h"

namespace tidewright {

/// The table of jobs. It adds nothing: View Logs comes with the kind's `logTarget`.
class JobController : public SharedContentViewController
{
public:
    explicit JobController(WindowState &window, QWidget *parent = nullptr)
        : SharedContentViewController(jobKind(), window, parent)
    {
    }
};

} // namespace tidewright
