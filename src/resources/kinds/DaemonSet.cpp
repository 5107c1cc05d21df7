// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/DaemonSet.h"

#include "platform/desktop/Diagnostics.h"
#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

#include <QRegularExpression>

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{.status.desiredNumberScheduled}}\t"
        "{{.status.currentNumberScheduled}}\t{{.status.numberReady}}\t{{.status.updatedNumberScheduled}}\t"
        "{{.status.numberAvailable}}\t{{.spec.template.spec.nodeSelector}}\t"
        "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field { Desired = 1, Current, Ready, Updated, Available, NodeSelector, Created, FieldCount };

/// Go prints a map as "map[key:value key:value]".
QString labelsOf(QByteArrayView field)
{
    static const QRegularExpression map(QStringLiteral(R"(map\[(.*?)\])"));
    return textOf(field).replace(map, QStringLiteral("\\1"));
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &daemonSet = static_cast<DaemonSet &>(item);
    daemonSet.desired = integerOf(fields[Desired]);
    daemonSet.current = integerOf(fields[Current]);
    daemonSet.ready = integerOf(fields[Ready]);
    daemonSet.uptodate = integerOf(fields[Updated]);
    daemonSet.available = integerOf(fields[Available]);
    daemonSet.nodeSelector = labelsOf(fields[NodeSelector]);
    daemonSet.startTimeString = textOf(fields[Created]);
}

std::vector<Column> columns()
{
    return {
        nameColumn(165),
        availabilityColumn<DaemonSet>(&DaemonSet::available, &DaemonSet::desired, 138),
        numberColumn<DaemonSet>("desired", QStringLiteral("Desired"), &DaemonSet::desired, 80),
        numberColumn<DaemonSet>("current", QStringLiteral("Current"), &DaemonSet::current, 80),
        numberColumn<DaemonSet>("ready", QStringLiteral("Ready"), &DaemonSet::ready, 70),
        numberColumn<DaemonSet>("uptodate", QStringLiteral("Up to Date"), &DaemonSet::uptodate, 100),
        numberColumn<DaemonSet>("available", QStringLiteral("Available"), &DaemonSet::available, 92),
        textColumn<DaemonSet>("nodeSelector", QStringLiteral("Node Selector"), &DaemonSet::nodeSelector, 175),
        ageColumn(80),
    };
}

} // namespace

ResourceKind daemonSetKind()
{
    ResourceKind kind = kindOf<DaemonSet>();
    kind.resourceName = QStringLiteral("daemonset");
    kind.humanReadableResourceName = QStringLiteral("daemonset");
    kind.tableName = QStringLiteral("Daemon Sets");
    kind.listWord = QStringLiteral("ds");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.selectsPods = true;
    kind.lineSkipped = [](QByteArrayView, std::size_t fields) {
        writeDiagnostic(QStringLiteral("item count mismatch on daemonset %1").arg(fields));
    };
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
