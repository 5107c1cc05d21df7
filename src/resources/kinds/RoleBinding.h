// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/Subjects.h"

namespace tidewright {

/// One row of the role binding table.
struct RoleBinding : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    RoleGrant grant;

    friend bool operator==(const RoleBinding &, const RoleBinding &) = default;
};

/// How role bindings are listed, read and shown.
ResourceKind roleBindingKind();

} // namespace tidewright
