// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Secret.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range .items}}{{.metadata.name}}\t{{.type}}\t{{if .data}}{{.data|len}}{{end}}\t"
        "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Type = 1, DataLength, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &secret = static_cast<Secret &>(item);
    secret.type = textOf(fields[Type]);
    secret.dataLength = integerOf(fields[DataLength]);
    secret.startTimeString = textOf(fields[Created]);
}

std::vector<Column> columns()
{
    return {
        nameColumn(380),
        textColumn<Secret>("type", QStringLiteral("Type"), &Secret::type, 300),
        numberColumn<Secret>("dataLength", QStringLiteral("Data"), &Secret::dataLength, 80),
        ageColumn(),
    };
}

} // namespace

ResourceKind secretKind()
{
    ResourceKind kind = kindOf<Secret>();
    kind.resourceName = QStringLiteral("secret");
    kind.humanReadableResourceName = QStringLiteral("secret");
    kind.tableName = QStringLiteral("Secrets");
    kind.listWord = QStringLiteral("secrets");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
