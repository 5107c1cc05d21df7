// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/Columns.h"

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

/// The part of a listing's template that prints a grant: two fields.
inline constexpr QLatin1String grantTemplate("{{.roleRef.kind}}/{{.roleRef.name}}\t"
                                             "{{range .subjects}}{{.kind}} {{.namespace}} {{.name}},{{end}}");

/// From those two fields. Any thread.
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

} // namespace tidewright
