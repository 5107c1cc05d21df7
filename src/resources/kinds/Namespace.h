// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the namespace table.
struct Namespace : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString phase; ///< Active or Terminating
    QString labels; ///< "team=shop, tier=front"

    friend bool operator==(const Namespace &, const Namespace &) = default;
};

/// How namespaces are listed, read and shown.
ResourceKind namespaceKind();

} // namespace tidewright
