// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/PersistentVolumeClaim.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{.status.phase}}\t"
        "{{if .metadata.deletionTimestamp}}going{{end}}\t{{.spec.volumeName}}\t{{.status.capacity.storage}}\t"
        "{{.spec.resources.requests.storage}}\t{{range .spec.accessModes}}{{.}},{{end}}\t"
        "{{.spec.storageClassName}}\t{{.spec.volumeMode}}\t{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field {
    Phase = 1,
    Terminating,
    Volume,
    Capacity,
    Requested,
    AccessModes,
    StorageClass,
    VolumeMode,
    Created,
    FieldCount
};

/// In the short forms that kubectl's own tables have.
QString accessModesOf(QByteArrayView field)
{
    QStringList modes = textOf(field).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const auto &[mode, shortForm] : {std::pair("ReadWriteOncePod", "RWOP"), {"ReadWriteOnce", "RWO"},
             {"ReadOnlyMany", "ROX"}, {"ReadWriteMany", "RWX"}}) {
        modes.replaceInStrings(QLatin1String(mode), QLatin1String(shortForm));
    }
    return modes.join(QLatin1String(", "));
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &claim = static_cast<PersistentVolumeClaim &>(item);
    claim.phase = presentTextOf(fields[Phase]);
    claim.isTerminating = !fields[Terminating].isEmpty();
    claim.volume = presentTextOf(fields[Volume]);
    claim.capacity = presentTextOf(fields[Capacity]);
    claim.requested = presentTextOf(fields[Requested]);
    claim.accessModes = accessModesOf(fields[AccessModes]);
    claim.storageClass = presentTextOf(fields[StorageClass]);
    claim.volumeMode = presentTextOf(fields[VolumeMode]);
    claim.startTimeString = textOf(fields[Created]);
}

ObjectState stateOf(const PersistentVolumeClaim &claim)
{
    using enum ObjectState::Grade;
    if (claim.isTerminating) {
        return {QStringLiteral("Terminating"), Progress};
    }
    return {claim.phase,
        claim.phase == QLatin1String("Bound")      ? Good
            : claim.phase == QLatin1String("Lost") ? Trouble
                                                   : Progress};
}

Column quantityColumn(
    const char *identifier, const QString &title, QString PersistentVolumeClaim::*quantity, int width)
{
    Column column = textColumn<PersistentVolumeClaim>(identifier, title, quantity, width);
    column.alignment = Qt::AlignRight | Qt::AlignVCenter;
    return sortedBy<PersistentVolumeClaim>(
        column, [quantity](const PersistentVolumeClaim &claim) { return quantityOf(claim.*quantity); });
}

std::vector<Column> columns()
{
    using Claim = PersistentVolumeClaim;
    return {
        nameColumn(220),
        stateColumn<Claim>("status", QStringLiteral("Status"), stateOf, 120),
        textColumn<Claim>("volume", QStringLiteral("Volume"), &Claim::volume, 170),
        quantityColumn("capacity", QStringLiteral("Capacity"), &Claim::capacity, 95),
        quantityColumn("requested", QStringLiteral("Requested"), &Claim::requested, 95),
        textColumn<Claim>("accessModes", QStringLiteral("Access Modes"), &Claim::accessModes, 120),
        textColumn<Claim>("storageClass", QStringLiteral("Storage Class"), &Claim::storageClass, 130),
        hiddenAtFirst(
            textColumn<Claim>("volumeMode", QStringLiteral("Volume Mode"), &Claim::volumeMode, 110)),
        ageColumn(90),
    };
}

} // namespace

ResourceKind persistentVolumeClaimKind()
{
    ResourceKind kind = kindOf<PersistentVolumeClaim>();
    kind.resourceName = QStringLiteral("persistentvolumeclaim");
    kind.humanReadableResourceName = QStringLiteral("persistent volume claim");
    kind.tableName = QStringLiteral("Persistent Volume Claims");
    kind.listWord = QStringLiteral("persistentvolumeclaims");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.deletionWarning
        = QStringLiteral("Where the volume's reclaim policy is Delete, its data is deleted too.");
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
