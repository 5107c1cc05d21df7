// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Service.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "-o=jsonpath={range .items[*]}{.metadata.name}\t{.spec.type}\t{.spec.clusterIP}\t"
        "{.status.loadBalancer.ingress[0].hostname}\t{.spec.ports[*].port}:{.spec.ports[*].nodePort}\t"
        "{.metadata.creationTimestamp}\n");
}

enum Field { Type = 1, ClusterIp, ExternalIp, Ports, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &service = static_cast<Service &>(item);
    service.type = textOf(fields[Type]);
    service.clusterIP = textOf(fields[ClusterIp]);
    service.externalIP = textOf(fields[ExternalIp]);
    service.ports = joinedPieces(textOf(fields[Ports]), QLatin1Char(':'), QLatin1String(":"));
    service.startTimeString = textOf(fields[Created]);
}

std::vector<Column> columns()
{
    return {
        nameColumn(200),
        textColumn<Service>("type", QStringLiteral("Type"), &Service::type, 120),
        textColumn<Service>("clusterIP", QStringLiteral("Cluster IP"), &Service::clusterIP, 130),
        textColumn<Service>("externalIP", QStringLiteral("External Host"), &Service::externalIP, 210),
        textColumn<Service>("ports", QStringLiteral("Ports"), &Service::ports, 170),
        ageColumn(),
    };
}

} // namespace

ResourceKind serviceKind()
{
    ResourceKind kind = kindOf<Service>();
    kind.resourceName = QStringLiteral("service");
    kind.humanReadableResourceName = QStringLiteral("service");
    kind.tableName = QStringLiteral("Services");
    kind.listWord = QStringLiteral("services");
    kind.outputArguments = {listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.selectsPods = true;
    kind.logTarget = QStringLiteral("svc/");
    kind.listRemainder = ":";
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
