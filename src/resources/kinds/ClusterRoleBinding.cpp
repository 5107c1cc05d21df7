// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/ClusterRoleBinding.h"

namespace tidewright {

ResourceKind clusterRoleBindingKind()
{
    ResourceKind kind = bindingKind<ClusterRoleBinding>();
    kind.resourceName = QStringLiteral("clusterrolebinding");
    kind.humanReadableResourceName = QStringLiteral("cluster role binding");
    kind.tableName = QStringLiteral("Cluster Role Bindings");
    kind.listWord = QStringLiteral("clusterrolebindings");
    kind.namespaced = false;
    return kind;
}

} // namespace tidewright
