// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/ServiceAccount.h"

#include "platform/desktop/Diagnostics.h"
#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral("--template={{range.items}}{{.metadata.name}}\t{{.secrets|len}}\t{{.metadata."
                          "creationTimestamp}}\n{{end}}");
}

/// Clusters since 1.24 make accounts without any secrets, on which the usual template fails as a whole.
QStringList outputWithoutSecrets(const QString &error)
{
    if (!error.contains(QLatin1String("error calling len"))) {
        return {};
    }
    return {QStringLiteral("-ogo-template"),
        QStringLiteral(
            "--template={{range.items}}{{.metadata.name}}\t{{if .secrets}}{{.secrets|len}}{{end}}\t"
            "{{.metadata.creationTimestamp}}\n{{end}}")};
}

enum Field { SecretsCount = 1, Created, FieldCount };

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &account = static_cast<ServiceAccount &>(item);
    account.secretsCount = integerOf(fields[SecretsCount]);
    account.startTimeString = textOf(fields[Created]);
}

std::vector<Column> columns()
{
    return {
        nameColumn(500),
        numberColumn<ServiceAccount>(
            "secretsCount", QStringLiteral("Secrets"), &ServiceAccount::secretsCount, 90),
        ageColumn(),
    };
}

} // namespace

ResourceKind serviceAccountKind()
{
    ResourceKind kind = kindOf<ServiceAccount>();
    kind.resourceName = QStringLiteral("serviceaccount");
    kind.humanReadableResourceName = QStringLiteral("service account");
    kind.tableName = QStringLiteral("Service Accounts");
    kind.listWord = QStringLiteral("serviceaccounts");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.otherOutput = outputWithoutSecrets;
    kind.lineSkipped = [](QByteArrayView line, std::size_t) {
        writeDiagnostic(QLatin1String("Item count mismatch in service accounts ") + textOf(line));
    };
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
