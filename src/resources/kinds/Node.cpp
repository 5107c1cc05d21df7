// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Node.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"
#include "resources/kinds/Usage.h"

#include <QRegularExpression>

namespace tidewright {

namespace {

QString listingTemplate()
{
    return QStringLiteral(
        "--template={{range.items}}{{.metadata.name}}\t{{range "
        ".status.conditions}}{{.type}}:{{.status}},{{end}}\t"
        "{{.spec.unschedulable}}\t{{.metadata.labels}}\t{{.status.nodeInfo.kubeletVersion}}\t"
        "{{range .status.addresses}}{{.type}}:{{.address}},{{end}}\t{{.status.allocatable.cpu}}\t"
        "{{.status.allocatable.memory}}\t{{.status.allocatable.pods}}\t"
        "{{if .spec.taints}}{{.spec.taints|len}}{{end}}\t{{.status.nodeInfo.osImage}}\t"
        "{{.status.nodeInfo.kernelVersion}}\t{{.status.nodeInfo.containerRuntimeVersion}}\t"
        "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field {
    Conditions = 1,
    Unschedulable,
    Labels,
    Version,
    Addresses,
    Cpu,
    Memory,
    Pods,
    Taints,
    System,
    Kernel,
    Runtime,
    Created,
    FieldCount
};

/// The parts of "Ready:True,MemoryPressure:False,"
QStringList piecesOf(QByteArrayView field)
{
    return textOf(field).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

void assignConditions(QByteArrayView field, Node &node)
{
    node.ready.clear();
    node.pressures.clear();
    for (const QString &condition : piecesOf(field)) {
        const QString type = condition.section(QLatin1Char(':'), 0, 0);
        const QString status = condition.section(QLatin1Char(':'), 1);
        if (type == QLatin1String("Ready")) {
            node.ready = status;
        } else if (status == QLatin1String("True")) {
            node.pressures.append(type);
        }
    }
}

QString addressOf(QByteArrayView field, QLatin1String type)
{
    for (const QString &address : piecesOf(field)) {
        if (address.startsWith(type)) {
            return address.mid(type.size());
        }
    }
    return {};
}

/// A role is the end of a label's name, "node-role.kubernetes.io/ROLE", or the value of the older
/// "kubernetes.io/role".
QString rolesOf(QByteArrayView labels)
{
    static const QRegularExpression role(
        QStringLiteral(R"((?:\[| )(?:node-role\.kubernetes\.io/([^: ]+):|kubernetes\.io/role:([^\] ]+)))"));
    QStringList roles;
    auto found = role.globalMatch(textOf(labels));
    while (found.hasNext()) {
        const auto match = found.next();
        roles.append(match.captured(1) + match.captured(2));
    }
    roles.removeDuplicates();
    roles.sort();
    return roles.join(QLatin1String(", "));
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &node = static_cast<Node &>(item);
    assignConditions(fields[Conditions], node);
    node.isCordoned = fields[Unschedulable] == "true";
    node.roles = rolesOf(fields[Labels]);
    node.version = presentTextOf(fields[Version]);
    node.internalIp = addressOf(fields[Addresses], QLatin1String("InternalIP:"));
    node.externalIp = addressOf(fields[Addresses], QLatin1String("ExternalIP:"));
    node.cpu = presentTextOf(fields[Cpu]);
    node.memory = presentTextOf(fields[Memory]);
    node.pods = integerOf(fields[Pods]);
    node.taints = integerOf(fields[Taints]);
    node.system = presentTextOf(fields[System]);
    node.kernel = presentTextOf(fields[Kernel]);
    node.runtime = presentTextOf(fields[Runtime]);
    node.startTimeString = textOf(fields[Created]);
}

/// In kubectl's words, and what weighs on the node.
ObjectState stateOf(const Node &node)
{
    using enum ObjectState::Grade;
    QStringList words{node.ready.isEmpty()        ? QStringLiteral("Unknown")
            : node.ready == QLatin1String("True") ? QStringLiteral("Ready")
                                                  : QStringLiteral("NotReady")};
    if (node.isCordoned) {
        words.append(QStringLiteral("SchedulingDisabled"));
    }
    words += node.pressures;
    const bool isReady = node.ready == QLatin1String("True");
    return {words.join(QLatin1String(", ")), !isReady ? Trouble : words.size() > 1 ? Progress : Good};
}

/// Kubelets count the same amount in many units: "15800m", "65843252Ki".
QString amount(const QString &quantity, double unit, const QString &pattern)
{
    constexpr int digits = 4;
    const double number = quantityOf(quantity);
    return number < 0 ? quantity : pattern.arg(QString::number(number / unit, 'g', digits));
}

QString cores(const Node &node)
{
    return amount(node.cpu, 1, QStringLiteral("%1"));
}

QString gibibytes(const Node &node)
{
    return amount(node.memory, 0x1p30, QStringLiteral("%1 Gi"));
}

template <typename Text>
Column quantityColumn(
    const char *identifier, const QString &title, Text text, QString Node::*quantity, int width)
{
    Column column = textColumn<Node>(identifier, title, text, width);
    column.alignment = Qt::AlignRight | Qt::AlignVCenter;
    return sortedBy<Node>(column, [quantity](const Node &node) { return quantityOf(node.*quantity); });
}

std::vector<Column> columns()
{
    return {
        nameColumn(160),
        stateColumn<Node>("status", QStringLiteral("Status"), stateOf, 230),
        textColumn<Node>("roles", QStringLiteral("Roles"), &Node::roles, 110),
        textColumn<Node>("version", QStringLiteral("Version"), &Node::version, 120),
        quantityColumn("cpu", QStringLiteral("CPU"), cores, &Node::cpu, 60),
        usedCoresColumn<Node>("usedCPU", QStringLiteral("CPU Used")),
        quantityColumn("memory", QStringLiteral("Memory"), gibibytes, &Node::memory, 85),
        usedBytesColumn<Node>("usedMemory", QStringLiteral("Memory Used")),
        numberColumn<Node>("pods", QStringLiteral("Max. Pods"), &Node::pods, 90),
        numberColumn<Node>("taints", QStringLiteral("Taints"), &Node::taints, 65),
        textColumn<Node>("internalIP", QStringLiteral("Internal IP"), &Node::internalIp, 110),
        hiddenAtFirst(textColumn<Node>("externalIP", QStringLiteral("External IP"), &Node::externalIp, 120)),
        hiddenAtFirst(textColumn<Node>("system", QStringLiteral("System"), &Node::system, 180)),
        hiddenAtFirst(textColumn<Node>("kernel", QStringLiteral("Kernel"), &Node::kernel, 150)),
        hiddenAtFirst(textColumn<Node>("runtime", QStringLiteral("Runtime"), &Node::runtime, 160)),
        ageColumn(90),
    };
}

} // namespace

ResourceKind nodeKind()
{
    ResourceKind kind = kindOf<Node>();
    kind.resourceName = QStringLiteral("node");
    kind.humanReadableResourceName = QStringLiteral("node");
    kind.tableName = QStringLiteral("Nodes");
    kind.listWord = QStringLiteral("nodes");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.namespaced = false;
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.pods = ResourceKind::Pods::OnNode;
    setUsage<Node>(kind, QStringLiteral("nodes"));
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
