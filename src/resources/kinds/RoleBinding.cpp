// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/RoleBinding.h"

namespace tidewright {

ResourceKind roleBindingKind()
{
    ResourceKind kind = bindingKind<RoleBinding>();
    kind.resourceName = QStringLiteral("rolebinding");
    kind.humanReadableResourceName = QStringLiteral("role binding");
    kind.tableName = QStringLiteral("Role Bindings");
    kind.listWord = QStringLiteral("rolebindings");
    return kind;
}

} // namespace tidewright
