// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/PersistentVolume.h"

#include "platform/desktop/Diagnostics.h"
#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

#include <QHash>

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{.spec.capacity.storage}}\t"
        "{{range "
        ".spec.accessModes}}{{.}},{{end}}\t{{.spec.persistentVolumeReclaimPolicy}}\t{{.status.phase}}\t"
        "{{.spec.claimRef.namespace}}/{{.spec.claimRef.name}}\t{{.spec.storageClassName}}\t"
        "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Capacity = 1, AccessModes, ReclaimPolicy, Phase, Claim, StorageClass, Created, FieldCount };

QString accessModesOf(QByteArrayView field)
{
    const QString modes = textOf(field).replace(QLatin1String("ReadWriteOnce"), QLatin1String("RWO"));
    return joinedPieces(modes, QLatin1Char(','), QLatin1String(", "));
}

/// Without the slashes at both ends: that of an unbound volume stands alone.
QString claimOf(QByteArrayView field)
{
    while (field.startsWith('/')) {
        field = field.sliced(1);
    }
    while (field.endsWith('/')) {
        field.chop(1);
    }
    return textOf(field);
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &volume = static_cast<PersistentVolume &>(item);
    volume.capacity = textOf(fields[Capacity]);
    volume.accessModes = accessModesOf(fields[AccessModes]);
    volume.reclaimPolicy = textOf(fields[ReclaimPolicy]);
    volume.status = textOf(fields[Phase]);
    volume.claim = claimOf(fields[Claim]);
    volume.storageClass = textOf(fields[StorageClass]);
    volume.startTimeString = textOf(fields[Created]);
}

QString shownClaim(const PersistentVolume &volume)
{
    return withoutMissingValues(volume.claim);
}

QString shownStorageClass(const PersistentVolume &volume)
{
    return withoutMissingValues(volume.storageClass);
}

Column capacityColumn()
{
    Column column = textColumn<PersistentVolume>(
        "capacity", QStringLiteral("Capacity"), &PersistentVolume::capacity, 95);
    column.alignment = Qt::AlignRight | Qt::AlignVCenter;
    return sortedBy<PersistentVolume>(
        column, [](const PersistentVolume &volume) { return quantityOf(volume.capacity); });
}

Column statusColumn()
{
    return troubleFirst<PersistentVolume>(
        textColumn<PersistentVolume>("status", QStringLiteral("Status"), &PersistentVolume::status, 110),
        &PersistentVolume::statusImage);
}

std::vector<Column> columns()
{
    return {
        nameColumn(180),
        statusColumn(),
        capacityColumn(),
        textColumn<PersistentVolume>(
            "accessModes", QStringLiteral("Access Modes"), &PersistentVolume::accessModes, 150),
        textColumn<PersistentVolume>(
            "reclaimPolicy", QStringLiteral("Reclaim"), &PersistentVolume::reclaimPolicy, 80),
        textColumn<PersistentVolume>("claim", QStringLiteral("Claim"), shownClaim, 160),
        textColumn<PersistentVolume>("storageClass", QStringLiteral("Storage Class"), shownStorageClass, 115),
        ageColumn(90),
    };
}

} // namespace

QString PersistentVolume::statusImage() const
{
    static const QHash<QString, QString> images{
        {QStringLiteral("Available"), QStringLiteral("NSStatusAvailable")},
        {QStringLiteral("Bound"), QStringLiteral("NSStatusAvailable")},
        {QStringLiteral("Pending"), QStringLiteral("NSStatusPartiallyAvailable")},
        {QStringLiteral("Released"), QStringLiteral("NSStatusPartiallyAvailable")},
    };
    return images.value(status, QStringLiteral("NSStatusUnavailable"));
}

ResourceKind persistentVolumeKind()
{
    ResourceKind kind = kindOf<PersistentVolume>();
    kind.resourceName = QStringLiteral("persistentvolume");
    kind.humanReadableResourceName = QStringLiteral("persistent volume");
    kind.tableName = QStringLiteral("Persistent Volumes");
    kind.listWord = QStringLiteral("persistentvolumes");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.namespaced = false;
    kind.lineTaken = [](QByteArrayView line) {
        writeDiagnostic(QStringLiteral("row count is %1").arg(line.count('\t') + 1));
    };
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
