// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Endpoint.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t"
        "{{range.subsets}}{{range.addresses}}{{.ip}},{{end}}{{end}}\t"
        "{{range.subsets}}{{range.addresses}}{{.targetRef.kind}}/{{.targetRef.name}},{{end}}{{end}}\t"
        "{{range.subsets}}{{range.ports}}{{.name}}:{{.port}}/{{.protocol}},{{end}}{{end}}\t"
        "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Addresses = 1, Targets, Ports, Created, FieldCount };

QString list(QByteArrayView field)
{
    return joinedPieces(textOf(field), QLatin1Char(','), QLatin1String(", "));
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &endpoint = static_cast<Endpoint &>(item);
    endpoint.endpoints = list(fields[Addresses]);
    endpoint.targets = list(fields[Targets]);
    endpoint.ports = list(fields[Ports]);
    endpoint.startTimeString = textOf(fields[Created]);
}

/// Addresses that belong to nothing in the cluster have no target, lone ports often no name.
QString shownTargets(const Endpoint &endpoint)
{
    return withoutMissingValues(endpoint.targets);
}

QString shownPorts(const Endpoint &endpoint)
{
    return withoutMissingValues(endpoint.ports);
}

std::vector<Column> columns()
{
    return {
        nameColumn(190),
        textColumn<Endpoint>("endpoints", QStringLiteral("Endpoints"), &Endpoint::endpoints, 210),
        textColumn<Endpoint>("targets", QStringLiteral("Targets"), shownTargets, 290),
        textColumn<Endpoint>("ports", QStringLiteral("Ports"), shownPorts, 140),
        ageColumn(),
    };
}

} // namespace

ResourceKind endpointKind()
{
    ResourceKind kind = kindOf<Endpoint>();
    kind.resourceName = QStringLiteral("endpoints");
    kind.humanReadableResourceName = QStringLiteral("endpoint");
    kind.tableName = QStringLiteral("Endpoints");
    kind.listWord = QStringLiteral("ep");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
