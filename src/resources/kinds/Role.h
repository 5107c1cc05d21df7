// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the role table.
struct Role : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 ruleCount = 0;

    friend bool operator==(const Role &, const Role &) = default;
};

/// How roles are listed, read and shown.
ResourceKind roleKind();

} // namespace tidewright
