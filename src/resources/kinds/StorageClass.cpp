// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/StorageClass.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "-o=jsonpath={range .items[*]}{.metadata.name}\t"
        "{.metadata.annotations.storageclass\\.kubernetes\\.io/is-default-class}\t"
        "{.metadata.annotations.storageclass\\.beta\\.kubernetes\\.io/is-default-class}\t{.provisioner}\t"
        "{.reclaimPolicy}\t{.volumeBindingMode}\t{.allowVolumeExpansion}\t{.metadata.creationTimestamp}\n{"
        "end}");
}

enum Field {
    Default = 1,
    OldDefault,
    Provisioner,
    ReclaimPolicy,
    BindingMode,
    Expansion,
    Created,
    FieldCount
};

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &storage = static_cast<StorageClass &>(item);
    storage.hasOldMark = fields[OldDefault] == "true";
    storage.isDefault = fields[Default] == "true" || storage.hasOldMark;
    storage.provisioner = textOf(fields[Provisioner]);
    storage.reclaimPolicy = textOf(fields[ReclaimPolicy]);
    storage.bindingMode = textOf(fields[BindingMode]);
    storage.canExpand = fields[Expansion] == "true";
    storage.startTimeString = textOf(fields[Created]);
}

ObjectState defaultState(const StorageClass &storage)
{
    return storage.isDefault ? ObjectState{QStringLiteral("Default"), ObjectState::Grade::Good}
                             : ObjectState();
}

QString expansion(const StorageClass &storage)
{
    return storage.canExpand ? QStringLiteral("Yes") : QStringLiteral("No");
}

std::vector<Column> columns()
{
    return {
        nameColumn(190),
        stateColumn<StorageClass>("default", QStringLiteral("Default"), defaultState, 100),
        textColumn<StorageClass>(
            "provisioner", QStringLiteral("Provisioner"), &StorageClass::provisioner, 230),
        textColumn<StorageClass>(
            "reclaimPolicy", QStringLiteral("Reclaim"), &StorageClass::reclaimPolicy, 80),
        textColumn<StorageClass>("bindingMode", QStringLiteral("Binding"), &StorageClass::bindingMode, 180),
        textColumn<StorageClass>("expansion", QStringLiteral("Can Grow"), expansion, 90),
        ageColumn(90),
    };
}

} // namespace

ResourceKind storageClassKind()
{
    ResourceKind kind = kindOf<StorageClass>();
    kind.resourceName = QStringLiteral("storageclass");
    kind.humanReadableResourceName = QStringLiteral("storage class");
    kind.tableName = QStringLiteral("Storage Classes");
    kind.listWord = QStringLiteral("storageclasses");
    kind.outputArguments = {listingTemplate()};
    kind.namespaced = false;
    kind.pluralNoun = QStringLiteral("storage classes");
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
