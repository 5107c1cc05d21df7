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

QString liveTemplate()
{
    return QStringLiteral("-o=jsonpath={range "
                          ".items[*]}{.spec.replicas}\t{.metadata.generation}\t{.status.observedGeneration}\t"
                          "{.status.conditions[*].reason}\n");
}

enum LiveField { Wanted, Generation, Observed, Reasons, LiveFieldCount };

void assignLive(const Fields &fields, KubeTableItem &item)
{
    auto &deployment = static_cast<Deployment &>(item);
    deployment.previousDesired = integerOf(fields[Wanted]);
    deployment.desired = deployment.previousDesired;
    const bool isStuck
        = textOf(fields[Reasons]).split(QLatin1Char(' ')).contains(QLatin1String("ProgressDeadlineExceeded"));
    deployment.isRollingOut = !isStuck
        && (integerOf(fields[Observed]) < integerOf(fields[Generation])
            || deployment.upToDate < deployment.desired);
}

std::vector<Column> columns()
{
    Column desired
        = numberColumn<Deployment>("desired", QStringLiteral("Desired"), &Deployment::desired, 220);
    desired.listedTitle = QStringLiteral("Pods");
    return {
        nameColumn(255),
        withImage<Deployment>(
            availabilityColumn<Deployment>(&Deployment::available, &Deployment::previousDesired, 140),
            &Deployment::statusImage),
        desired,
        numberColumn<Deployment>("current", QStringLiteral("Ready"), &Deployment::current, 80),
        numberColumn<Deployment>("upToDate", QStringLiteral("Up to Date"), &Deployment::upToDate, 100),
        numberColumn<Deployment>("available", QStringLiteral("Available"), &Deployment::available, 95),
        ageColumn(90),
    };
}

} // namespace

QString Deployment::statusImage() const
{
    return isRollingOut && available < previousDesired ? QStringLiteral("NSStatusPartiallyAvailable")
                                                       : availabilityImage(available, previousDesired);
}

ResourceKind deploymentKind()
{
    ResourceKind kind = kindOf<Deployment>();
    kind.resourceName = QStringLiteral("deploy");
    kind.humanReadableResourceName = QStringLiteral("deployment");
    kind.tableName = QStringLiteral("Deployments");
    kind.listWord = QStringLiteral("deploy");
    kind.outputArguments = {listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.selectsPods = true;
    kind.logTarget = QStringLiteral("deploy/");
    kind.assign = assign;
    kind.liveArguments = {liveTemplate()};
    kind.liveFieldCount = LiveFieldCount;
    kind.assignLive = assignLive;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
