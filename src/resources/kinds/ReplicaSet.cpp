// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/ReplicaSet.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{.status.replicas}}\t{{.status.availableReplicas}}\t"
        "{{.status.readyReplicas}}\t{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Replicas = 1, Available, Ready, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &replicaSet = static_cast<ReplicaSet &>(item);
    replicaSet.desired = integerOf(fields[Replicas]);
    replicaSet.current = integerOf(fields[Available]);
    replicaSet.ready = integerOf(fields[Ready]);
    replicaSet.startTimeString = textOf(fields[Created]);
}

std::vector<Column> columns()
{
    return {
        nameColumn(400),
        availabilityColumn<ReplicaSet>(&ReplicaSet::current, &ReplicaSet::desired, 150),
        numberColumn<ReplicaSet>("desired", QStringLiteral("Desired"), &ReplicaSet::desired, 90),
        numberColumn<ReplicaSet>("current", QStringLiteral("Available"), &ReplicaSet::current, 90),
        numberColumn<ReplicaSet>("ready", QStringLiteral("Ready"), &ReplicaSet::ready, 90),
        ageColumn(),
    };
}

} // namespace

ResourceKind replicaSetKind()
{
    ResourceKind kind = kindOf<ReplicaSet>();
    kind.resourceName = QStringLiteral("replicaset");
    kind.humanReadableResourceName = QStringLiteral("replicaset");
    kind.tableName = QStringLiteral("Replica Sets");
    kind.listWord = QStringLiteral("rs");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.selectsPods = true;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
