// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/CustomResourceDefinition.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{.spec.names.kind}}\t{{.spec.group}}\t"
        "{{range .spec.versions}}{{if .served}}{{.name}},{{end}}{{end}}\t{{.spec.scope}}\t"
        "{{range .spec.names.shortNames}}{{.}},{{end}}\t"
        "{{range "
        ".status.conditions}}{{.type}}:{{.status}},{{end}}\t{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { DefinedKind = 1, Group, Versions, Scope, ShortNames, Conditions, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    const auto listOf = [](QByteArrayView field) {
        return joinedPieces(textOf(field), QLatin1Char(','), QLatin1String(", "));
    };
    auto &definition = static_cast<CustomResourceDefinition &>(item);
    definition.definedKind = presentTextOf(fields[DefinedKind]);
    definition.group = presentTextOf(fields[Group]);
    definition.versions = listOf(fields[Versions]);
    definition.scope = presentTextOf(fields[Scope]);
    definition.shortNames = listOf(fields[ShortNames]);
    definition.conditions = textOf(fields[Conditions]);
    definition.startTimeString = textOf(fields[Created]);
}

ObjectState stateOf(const CustomResourceDefinition &definition)
{
    using enum ObjectState::Grade;
    const auto holds = [&definition](const char *condition) {
        return definition.conditions.contains(QLatin1String(condition));
    };
    if (holds("Terminating:True")) {
        return {QStringLiteral("Terminating"), Progress};
    }
    if (holds("NamesAccepted:False")) {
        return {QStringLiteral("Names taken"), Trouble};
    }
    return holds("Established:True") ? ObjectState{QStringLiteral("Established"), Good}
                                     : ObjectState{QStringLiteral("Pending"), Progress};
}

std::vector<Column> columns()
{
    using Definition = CustomResourceDefinition;
    return {
        nameColumn(290),
        stateColumn<Definition>("status", QStringLiteral("Status"), stateOf, 125),
        textColumn<Definition>("kind", QStringLiteral("Kind"), &Definition::definedKind, 160),
        textColumn<Definition>("group", QStringLiteral("Group"), &Definition::group, 180),
        textColumn<Definition>("versions", QStringLiteral("Versions"), &Definition::versions, 120),
        textColumn<Definition>("scope", QStringLiteral("Scope"), &Definition::scope, 110),
        textColumn<Definition>("shortNames", QStringLiteral("Short Names"), &Definition::shortNames, 110),
        ageColumn(90),
    };
}

} // namespace

ResourceKind customResourceDefinitionKind()
{
    ResourceKind kind = kindOf<CustomResourceDefinition>();
    kind.resourceName = QStringLiteral("customresourcedefinition");
    kind.humanReadableResourceName = QStringLiteral("custom resource definition");
    kind.tableName = QStringLiteral("Custom Resource Definitions");
    kind.listWord = QStringLiteral("customresourcedefinitions");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.namespaced = false;
    kind.deletionWarning = QStringLiteral("All objects of the kind that it defines are deleted with it.");
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
