// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/EventController.h"

#include "resources/kinds/Event.h"
#include "resources/table/ResourceTableView.h"

namespace tidewright {

EventController::EventController(WindowState &window, QWidget *parent)
    : SharedContentViewController(eventKind(), window, parent)
{
    tableView().sortByColumn(kind().indexOf(QLatin1String("firstListed")), Qt::DescendingOrder);
}

} // namespace tidewright
