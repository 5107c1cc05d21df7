// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ObjectName.h"

#include <QByteArray>
#include <QStringList>

#include <optional>
#include <vector>

namespace tidewright {

struct ObjectStory;

/// What happened to an object, once or again and again.
struct ObjectEvent
{
    std::optional<qint64> time; ///< when it was last seen, in seconds since 1970
    QString type; ///< "Normal", "Warning"
    QString reason;
    QString message;
    QString count;
};

/// The arguments behind "kubectl get events" and the place that have it print the events of an object for
/// `parseEvents`: of this very one, where its story tells which that is, not of one that had the name before.
QStringList eventArguments(const ObjectStory &story, const QString &name);
/// The newest first. Any thread.
std::vector<ObjectEvent> parseEvents(const QByteArray &printed);

} // namespace tidewright
