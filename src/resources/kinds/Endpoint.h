// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the endpoints table.
struct Endpoint : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    qint64 dataLength = 0; ///< always 0
    QString targets; ///< what the addresses belong to, as "Pod/web-1, Pod/web-2"
    QString endpoints; ///< addresses, joined by ", "
    QString ports; ///< "http:80/TCP, ..."

    friend bool operator==(const Endpoint &, const Endpoint &) = default;
};

/// How endpoints are listed, read and shown.
ResourceKind endpointKind();

} // namespace tidewright
