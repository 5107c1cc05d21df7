// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/table/SharedContentViewController.h"

namespace tidewright {

/// The table of events, the newest on top also when a refresh brings more, until the user sorts it.
class EventController : public SharedContentViewController
{
    Q_OBJECT
public:
    explicit EventController(WindowState &window, QWidget *parent = nullptr);
};

} // namespace tidewright
