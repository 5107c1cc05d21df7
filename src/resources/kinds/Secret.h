// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the secret table. The values of a secret are never listed.
struct Secret : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 dataLength = 0; ///< number of keys
    QString type;

    friend bool operator==(const Secret &, const Secret &) = default;
};

/// How secrets are listed, read and shown.
ResourceKind secretKind();

} // namespace tidewright
