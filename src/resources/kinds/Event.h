// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/text/Timestamp.h"
#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the event table.
struct Event : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString type; ///< Normal, Warning or Error
    QString reason;
    QString object; ///< KIND/NAME of what it happened to
    QString message;
    /// When the table first listed this event, seconds since 1970; survives refreshes.
    double startDate = currentTime();

    /// The name of the text colour: "orange" for warnings, "red" for errors, empty for the usual one.
    QString getEventColor() const;
    /// The name of a state image.
    QString typeImage() const;

    friend bool operator==(const Event &, const Event &) = default;
};

/// How events are listed, read and shown.
ResourceKind eventKind();

} // namespace tidewright
