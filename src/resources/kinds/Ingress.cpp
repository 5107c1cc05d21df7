// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Ingress.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{.spec.ingressClassName}}\t"
        "{{range .spec.rules}}{{.host}},{{end}}\t"
        "{{range .status.loadBalancer.ingress}}{{if .ip}}{{.ip}},{{end}}{{if "
        ".hostname}}{{.hostname}},{{end}}{{end}}\t"
        "{{if .spec.tls}}tls{{end}}\t"
        "{{range .spec.rules}}{{range .http.paths}}{{.path}} {{.backend.service.name}},{{end}}{{end}}\t"
        "{{.spec.defaultBackend.service.name}}\t{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Class = 1, Hosts, Addresses, Tls, Routes, DefaultService, Created, FieldCount };

constexpr QLatin1String listGlue(", ");
constexpr QLatin1String any("*");
constexpr QLatin1String unknown("?");

QString hostsOf(QByteArrayView field)
{
    QStringList hosts = textOf(field).split(QLatin1Char(','), Qt::SkipEmptyParts);
    hosts.replaceInStrings(missingValue, any);
    hosts.removeDuplicates();
    return hosts.isEmpty() ? any : hosts.join(listGlue);
}

/// From "/cart cart,/ storefront," and the service that gets all the rest.
QString routesOf(QByteArrayView field, QByteArrayView defaultService)
{
    const auto route = [](const QString &path, const QString &service) {
        return QStringLiteral("%1 → %2").arg(path, service);
    };
    QString pieces = textOf(field);
    pieces.replace(missingValue, unknown); // which has a blank in it
    QStringList routes;
    for (const QString &piece : pieces.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const qsizetype blank = piece.lastIndexOf(QLatin1Char(' '));
        const QString path = piece.first(qMax(0, blank));
        const QString service = piece.mid(blank + 1); // unknown where the backend is no service
        routes.append(route(path == unknown ? any : path, service));
    }
    if (const QString service = presentTextOf(defaultService); !service.isEmpty()) {
        routes.append(route(any, service));
    }
    return routes.join(listGlue);
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &ingress = static_cast<Ingress &>(item);
    ingress.ingressClass = presentTextOf(fields[Class]);
    ingress.hosts = hostsOf(fields[Hosts]);
    ingress.addresses = joinedPieces(textOf(fields[Addresses]), QLatin1Char(','), listGlue);
    ingress.hasTls = !fields[Tls].isEmpty();
    ingress.routes = routesOf(fields[Routes], fields[DefaultService]);
    ingress.startTimeString = textOf(fields[Created]);
}

QString ports(const Ingress &ingress)
{
    return ingress.hasTls ? QStringLiteral("80, 443") : QStringLiteral("80");
}

std::vector<Column> columns()
{
    return {
        nameColumn(190),
        textColumn<Ingress>("class", QStringLiteral("Class"), &Ingress::ingressClass, 90),
        textColumn<Ingress>("hosts", QStringLiteral("Hosts"), &Ingress::hosts, 220),
        textColumn<Ingress>("routes", QStringLiteral("Routes"), &Ingress::routes, 250),
        textColumn<Ingress>("addresses", QStringLiteral("Address"), &Ingress::addresses, 180),
        textColumn<Ingress>("ports", QStringLiteral("Ports"), ports, 80),
        ageColumn(90),
    };
}

} // namespace

ResourceKind ingressKind()
{
    ResourceKind kind = kindOf<Ingress>();
    kind.resourceName = QStringLiteral("ingresses.networking.k8s.io");
    kind.humanReadableResourceName = QStringLiteral("ingress");
    kind.tableName = QStringLiteral("Ingresses");
    kind.listWord = QStringLiteral("ingresses.networking.k8s.io");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.pluralNoun = QStringLiteral("ingresses");
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
