// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

/// Whom a binding gives what, as both kinds of bindings have it.
struct RoleGrant
{
    QString role; ///< "ClusterRole/view"
    QString users; ///< joined by ", "
    QString groups;
    QString serviceAccounts; ///< "NAMESPACE/NAME", joined by ", "

    bool operator==(const RoleGrant &) const = default;
};

/// How bindings are listed: name, role, subjects, creation time.
QStringList bindingOutput();
enum BindingField { GrantedRole = 1, GrantedSubjects, BindingCreated, BindingFieldCount };

/// From two of these fields. Any thread.
RoleGrant grantOf(QByteArrayView role, QByteArrayView subjects);

/// The columns of a kind whose rows have a member `grant`.
template <typename Binding> std::vector<Column> bindingColumns()
{
    const auto column
        = [](const char *identifier, const QString &title, QString RoleGrant::*part, int width) {
              return textColumn<Binding>(
                  identifier, title, [part](const Binding &binding) { return binding.grant.*part; }, width);
          };
    return {
        nameColumn(260),
        column("role", QStringLiteral("Role"), &RoleGrant::role, 220),
        column("users", QStringLiteral("Users"), &RoleGrant::users, 160),
        column("groups", QStringLiteral("Groups"), &RoleGrant::groups, 160),
        column("serviceAccounts", QStringLiteral("Service Accounts"), &RoleGrant::serviceAccounts, 220),
        ageColumn(90),
    };
}

/// A kind of bindings, but for its words and whether it is namespaced.
template <typename Binding> ResourceKind bindingKind()
{
    ResourceKind kind = kindOf<Binding>();
    kind.outputArguments = bindingOutput();
    kind.fieldCount = BindingFieldCount;
    kind.assign = [](const Fields &fields, KubeTableItem &item) {
        auto &binding = static_cast<Binding &>(item);
        binding.grant = grantOf(fields[GrantedRole], fields[GrantedSubjects]);
        binding.startTimeString = textOf(fields[BindingCreated]);
    };
    kind.columns = bindingColumns<Binding>();
    return kind;
}

} // namespace tidewright
