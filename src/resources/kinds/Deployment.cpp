// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Deployment.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "-o=jsonpath={range .items[*]}{.metadata.name}\t{.status.replicas}\t{.status.readyReplicas}\t"
        "{.status.updatedReplicas}\t{.status.availableReplicas}\t{.metadata.creationTimestamp}\n");
}

enum Field { Replicas = 1, Ready, Updated, Available, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &deployment = static_cast<Deployment &>(item);
    deployment.previousDesired = integerOf(fields[Replicas]);
    deployment.desired = deployment.previousDesired;
    deployment.current = integerOf(fields[Ready]);
    deployment.upToDate = integerOf(fields[Updated]);
    deployment.available = integerOf(fields[Available]);
    deployment.startTimeString = textOf(fields[Created]);
}

std::vector<Column> columns()
{
    return {
        nameColumn(255),
        availabilityColumn<Deployment>(&Deployment::available, &Deployment::previousDesired, 140),
        numberColumn<Deployment>("desired", QStringLiteral("Desired"), &Deployment::desired, 220),
        numberColumn<Deployment>("current", QStringLiteral("Ready"), &Deployment::current, 80),
        numberColumn<Deployment>("upToDate", QStringLiteral("Up to Date"), &Deployment::upToDate, 100),
        numberColumn<Deployment>("available", QStringLiteral("Available"), &Deployment::available, 95),
        ageColumn(90),
    };
}

} // namespace

ResourceKind deploymentKind()
{
    ResourceKind kind = kindOf<Deployment>();
    kind.resourceName = QStringLiteral("deploy");
    kind.humanReadableResourceName = QStringLiteral("deployment");
    kind.tableName = QStringLiteral("Deployments");
    kind.listWord = QStringLiteral("deploy");
    kind.outputArguments = {listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.logTarget = QStringLiteral("deploy/");
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
