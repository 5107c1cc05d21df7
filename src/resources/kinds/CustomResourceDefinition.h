// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// One row of the table of custom resource definitions.
struct CustomResourceDefinition : KubeTableItem
{
    using KubeTableItem::KubeTableItem;

    QString definedKind;
    QString group;
    QString versions; ///< those that are served, joined by ", "
    QString scope; ///< Namespaced or Cluster
    QString shortNames; ///< joined by ", "
    QString conditions; ///< as printed: "NamesAccepted:True,Established:True,"

    friend bool operator==(const CustomResourceDefinition &, const CustomResourceDefinition &) = default;
};

/// How custom resource definitions are listed, read and shown.
ResourceKind customResourceDefinitionKind();

} // namespace tidewright
