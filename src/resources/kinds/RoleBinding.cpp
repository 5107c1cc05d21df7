// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/RoleBinding.h"

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
    auto &binding = static_cast<RoleBinding &>(item);
    binding.grant = grantOf(fields[GrantedRole], fields[Subjects]);
    binding.startTimeString = textOf(fields[Created]);
}

} // namespace

ResourceKind roleBindingKind()
{
    ResourceKind kind = kindOf<RoleBinding>();
    kind.resourceName = QStringLiteral("rolebinding");
    kind.humanReadableResourceName = QStringLiteral("role binding");
    kind.tableName = QStringLiteral("Role Bindings");
    kind.listWord = QStringLiteral("rolebindings");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = bindingColumns<RoleBinding>();
    return kind;
}

} // namespace tidewright
