// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Role.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral("--template={{range.items}}{{.metadata.name}}\t{{if .rules}}{{.rules|len}}{{end}}\t"
                          "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { RuleCount = 1, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &role = static_cast<Role &>(item);
    role.ruleCount = integerOf(fields[RuleCount]);
    role.startTimeString = textOf(fields[Created]);
}

std::vector<Column> columns()
{
    return {
        nameColumn(500),
        numberColumn<Role>("ruleCount", QStringLiteral("Rules"), &Role::ruleCount, 90),
        ageColumn(),
    };
}

} // namespace

ResourceKind roleKind()
{
    ResourceKind kind = kindOf<Role>();
    kind.resourceName = QStringLiteral("role");
    kind.humanReadableResourceName = QStringLiteral("role");
    kind.tableName = QStringLiteral("Roles");
    kind.listWord = QStringLiteral("roles");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
