// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/ConfigMap.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral("-o=jsonpath={range .items[*]}{.metadata.name}\t{.metadata.creationTimestamp}\n");
}

enum Field { Created = 1, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    item.startTimeString = textOf(fields[Created]);
}

} // namespace

ResourceKind configMapKind()
{
    ResourceKind kind = kindOf<ConfigMap>();
    kind.resourceName = QStringLiteral("configmap");
    kind.humanReadableResourceName = QStringLiteral("config map");
    kind.tableName = QStringLiteral("Config Maps");
    kind.listWord = QStringLiteral("configmaps");
    kind.outputArguments = {listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = {nameColumn(500), ageColumn()};
    return kind;
}

} // namespace tidewright
