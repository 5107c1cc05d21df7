// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the service account table.
struct ServiceAccount : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 secretsCount = 0;

    friend bool operator==(const ServiceAccount &, const ServiceAccount &) = default;
};

/// How service accounts are listed, read and shown.
ResourceKind serviceAccountKind();

} // namespace tidewright
