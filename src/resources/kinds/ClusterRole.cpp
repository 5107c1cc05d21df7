// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/ClusterRole.h"

#include "platform/desktop/Diagnostics.h"
#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{if .rules}}{{.rules|len}}{{end}} \t"
        "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { RuleCount = 1, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &role = static_cast<ClusterRole &>(item);
    role.ruleCount = integerOf(fields[RuleCount].trimmed());
    role.startTimeString = textOf(fields[Created]);
}

std::vector<Column> columns()
{
    return {
        nameColumn(500),
        numberColumn<ClusterRole>("ruleCount", QStringLiteral("Rules"), &ClusterRole::ruleCount, 90),
        ageColumn(),
    };
}

} // namespace

ResourceKind clusterRoleKind()
{
    ResourceKind kind = kindOf<ClusterRole>();
    kind.resourceName = QStringLiteral("clusterrole");
    kind.humanReadableResourceName = QStringLiteral("cluster role");
    kind.tableName = QStringLiteral("Cluster Roles");
    kind.listWord = QStringLiteral("clusterroles");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.namespaced = false;
    kind.lineSkipped = [](QByteArrayView line, std::size_t) {
        writeDiagnostic(QLatin1String("Item count mismatch in cluster roles ") + textOf(line));
    };
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
