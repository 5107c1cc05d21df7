// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the ingress table.
struct Ingress : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString ingressClass;
    QString hosts; ///< joined by ", "; "*" for any
    QString addresses; ///< IP addresses and host names of its load balancers, joined by ", "
    bool hasTls = false;
    QString routes; ///< "/cart → cart, / → storefront"

    friend bool operator==(const Ingress &, const Ingress &) = default;
};

/// How ingresses are listed, read and shown.
ResourceKind ingressKind();

} // namespace tidewright
