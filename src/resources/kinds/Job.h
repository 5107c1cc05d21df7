// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the job table.
struct Job : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 completions = 0; ///< wanted
    qint64 succeeded = 0;
    QString lastStartTime; ///< a timestamp, or kubectl's placeholder
    QString lastEndTime; ///< a timestamp, or kubectl's placeholder while the job runs
    QString lastStatus; ///< the condition types, joined by ", "
    QString lastReason; ///< their reasons in the same order, empty ones too
    QString lastMessage; ///< always empty

    /// "1/3".
    QString getCompletions() const;
    /// "NSStatusAvailable", "NSStatusPartiallyAvailable" or "NSStatusUnavailable".
    QString getCompletionsImage() const;
    /// From start to end, in the words of an age; empty while the job runs.
    QString getDuration() const;
    /// The age text of `lastStartTime`. Main thread.
    QString getLastStartAge() const;

    friend bool operator==(const Job &, const Job &) = default;
};

/// How jobs are listed, read and shown.
ResourceKind jobKind();

} // namespace tidewright
