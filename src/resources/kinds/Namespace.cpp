// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Namespace.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral("--template={{range.items}}{{.metadata.name}}\t{{.status.phase}}\t"
                          "{{.metadata.labels}}\t{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Phase = 1, Labels, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &nameSpace = static_cast<Namespace &>(item);
    nameSpace.phase = presentTextOf(fields[Phase]);
    nameSpace.labels = labelsTextOf(fields[Labels]);
    nameSpace.startTimeString = textOf(fields[Created]);
}

ObjectState stateOf(const Namespace &nameSpace)
{
    const bool isActive = nameSpace.phase == QLatin1String("Active");
    return {nameSpace.phase, isActive ? ObjectState::Grade::Good : ObjectState::Grade::Progress};
}

std::vector<Column> columns()
{
    return {
        nameColumn(280),
        stateColumn<Namespace>("status", QStringLiteral("Status"), stateOf, 130),
        textColumn<Namespace>("labels", QStringLiteral("Labels"), &Namespace::labels, 380),
        ageColumn(),
    };
}

} // namespace

ResourceKind namespaceKind()
{
    ResourceKind kind = kindOf<Namespace>();
    kind.resourceName = QStringLiteral("namespace");
    kind.humanReadableResourceName = QStringLiteral("namespace");
    kind.tableName = QStringLiteral("Namespaces");
    kind.listWord = QStringLiteral("namespaces");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.namespaced = false;
    kind.deletionWarning = QStringLiteral("Everything in a namespace is deleted with it.");
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
