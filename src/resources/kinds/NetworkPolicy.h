// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the network policy table.
struct NetworkPolicy : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString pods; ///< which pods it is for, as a label selector; empty for all
    QString types; ///< "Ingress, Egress"
    qint64 ingressRules = 0;
    qint64 egressRules = 0;

    friend bool operator==(const NetworkPolicy &, const NetworkPolicy &) = default;
};

/// How network policies are listed, read and shown.
ResourceKind networkPolicyKind();

} // namespace tidewright
