// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the config map table.
struct ConfigMap : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 dataLength = 0; ///< always 0

    friend bool operator==(const ConfigMap &, const ConfigMap &) = default;
};

/// How config maps are listed, read and shown.
ResourceKind configMapKind();

} // namespace tidewright
