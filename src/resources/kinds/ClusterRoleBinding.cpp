// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/ClusterRoleBinding.h"

#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QLatin1String("--template={{range.items}}{{.metadata.name}}\t") + grantTemplate
        + QLatin1String("\t{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { GrantedRole = 1, Subjects, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &binding = static_cast<ClusterRoleBinding &>(item);
    binding.grant = grantOf(fields[GrantedRole], fields[Subjects]);
    binding.startTimeString = textOf(fields[Created]);
}

} // namespace

ResourceKind clusterRoleBindingKind()
{
    ResourceKind kind = kindOf<ClusterRoleBinding>();
    kind.resourceName = QStringLiteral("clusterrolebinding");
    kind.humanReadableResourceName = QStringLiteral("cluster role binding");
    kind.tableName = QStringLiteral("Cluster Role Bindings");
    kind.listWord = QStringLiteral("clusterrolebindings");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.namespaced = false;
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = bindingColumns<ClusterRoleBinding>();
    return kind;
}

} // namespace tidewright
