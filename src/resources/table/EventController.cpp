// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/EventController.h"

#include "resources/kinds/Event.h"
#include "resources/table/ResourceTableView.h"

#include <algorithm>

namespace tidewright {

EventController::EventController(WindowState &window, QWidget *parent)
    : SharedContentViewController(eventKind(), window, parent)
{
    const auto &columns = kind().columns;
    const auto firstListed = std::find_if(columns.begin(), columns.end(),
        [](const Column &column) { return column.identifier == QLatin1String("firstListed"); });
    tableView().sortByColumn(static_cast<int>(firstListed - columns.begin()), Qt::DescendingOrder);
}

} // namespace tidewright
