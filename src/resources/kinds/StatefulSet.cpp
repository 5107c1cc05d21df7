// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/StatefulSet.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{.spec.replicas}}\t{{.status.replicas}}\t"
        "{{.status.readyReplicas}}\t{{.status.updatedReplicas}}\t{{.spec.updateStrategy.type}}\t"
        "{{.spec.serviceName}}\t{{range .spec.template.spec.containers}}{{.image}},{{end}}\t"
        "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Wanted = 1, Current, Ready, Updated, Strategy, Service, Images, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &set = static_cast<StatefulSet &>(item);
    set.wanted = integerOf(fields[Wanted]);
    set.current = integerOf(fields[Current]);
    set.ready = integerOf(fields[Ready]);
    set.upToDate = integerOf(fields[Updated]);
    set.updatesOnDelete = fields[Strategy] == "OnDelete";
    set.service = presentTextOf(fields[Service]);
    set.images = joinedPieces(textOf(fields[Images]), QLatin1Char(','), QLatin1String(", "));
    set.startTimeString = textOf(fields[Created]);
}

/// Pods come and are replaced one after the other: that takes its time, and is no trouble by itself.
ObjectState stateOf(const StatefulSet &set)
{
    using enum ObjectState::Grade;
    if (set.upToDate < set.wanted && !set.updatesOnDelete) {
        return {QStringLiteral("Rolling out"), Progress};
    }
    const QString words = availabilityText(set.ready, set.wanted);
    if (set.ready < set.wanted) {
        return {words, set.ready > 0 ? Progress : Trouble};
    }
    if (set.current > set.wanted) {
        return {QStringLiteral("Scaling down"), Progress};
    }
    return {words, Good};
}

std::vector<Column> columns()
{
    return {
        nameColumn(200),
        stateColumn<StatefulSet>("status", QStringLiteral("Status"), stateOf, 138),
        numberColumn<StatefulSet>("wanted", QStringLiteral("Desired"), &StatefulSet::wanted, 80),
        numberColumn<StatefulSet>("current", QStringLiteral("Current"), &StatefulSet::current, 80),
        numberColumn<StatefulSet>("ready", QStringLiteral("Ready"), &StatefulSet::ready, 70),
        numberColumn<StatefulSet>("upToDate", QStringLiteral("Up to Date"), &StatefulSet::upToDate, 100),
        textColumn<StatefulSet>("service", QStringLiteral("Service"), &StatefulSet::service, 130),
        textColumn<StatefulSet>("images", QStringLiteral("Images"), &StatefulSet::images, 260),
        ageColumn(90),
    };
}

} // namespace

ResourceKind statefulSetKind()
{
    ResourceKind kind = kindOf<StatefulSet>();
    kind.resourceName = QStringLiteral("statefulset");
    kind.humanReadableResourceName = QStringLiteral("stateful set");
    kind.tableName = QStringLiteral("Stateful Sets");
    kind.listWord = QStringLiteral("statefulsets");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.logTarget = QStringLiteral("statefulset/");
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.pods = ResourceKind::Pods::BySelector;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
