// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the service table.
struct Service : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString type;
    QString clusterIP;
    QString externalIP; ///< the host name of the load balancer
    QString ports; ///< "80 443:31080 31443": ports, and node ports when there are any

    friend bool operator==(const Service &, const Service &) = default;
};

/// How services are listed, read and shown.
ResourceKind serviceKind();

} // namespace tidewright
