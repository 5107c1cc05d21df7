// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the horizontal pod autoscaler table.
struct HorizontalPodAutoscaler : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString reference; ///< what it scales: "Deployment/web"
    QString targets; ///< "cpu: 45%/80%, requests: 12/10"; a question mark for what is not measured yet
    qint64 least = 1;
    qint64 most = 0;
    qint64 current = 0;
    qint64 desired = 0;
    QString conditions; ///< as printed: "AbleToScale:True:ReadyForNewScale,"

    friend bool operator==(const HorizontalPodAutoscaler &, const HorizontalPodAutoscaler &) = default;
};

/// How horizontal pod autoscalers are listed, read and shown.
ResourceKind horizontalPodAutoscalerKind();

} // namespace tidewright
