// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the cron job table.
struct CronJob : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString schedule;
    QString suspend; ///< "True" or "False"
    bool active = false; ///< a job of it runs now
    QString lastScheduleTime; ///< a timestamp; empty when it has never run

    /// Leaves `startTimeInterval` alone, which is the time since the last schedule here.
    QString getAge() const override;
    /// The age text of `lastScheduleTime`; stores its seconds in `startTimeInterval`. Main thread.
    QString getLastScheduleAge() const;

    friend bool operator==(const CronJob &, const CronJob &) = default;
};

/// How cron jobs are listed, read and shown.
ResourceKind cronJobKind();

} // namespace tidewright
