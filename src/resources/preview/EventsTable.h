// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/story/ObjectEvents.h"

#include <QTableWidget>

namespace tidewright {

/// The events of an object, as they come: age, type, reason, message and count. Main thread.
class EventsTable : public QTableWidget
{
    Q_OBJECT
public:
    EventsTable();

    /// At most the first 500 of them. `now` is in seconds since 1970.
    void show(const std::vector<ObjectEvent> &events, double now);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void addEvent(int row, const ObjectEvent &event, double now);
};

} // namespace tidewright
