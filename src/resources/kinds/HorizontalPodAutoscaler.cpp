// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/HorizontalPodAutoscaler.h"

#include "resources/kinds/Columns.h"
#include "resources/kinds/FieldText.h"

#include <algorithm>

namespace tidewright {

namespace {

/// Version 1 of the interface has a target for the CPU alone, version 2 a list of metrics of several kinds,
/// and the figures measured beside it in the same order.
QString metricsTemplate(QLatin1String list, QLatin1String figures)
{
    return QStringLiteral(
        "{{range .%1}}{{if .resource}}{{.resource.name}} {{.resource.%2.averageUtilization}} "
        "{{.resource.%2.averageValue}}{{end}}"
        "{{if .containerResource}}{{.containerResource.name}} {{.containerResource.%2.averageUtilization}} "
        "{{.containerResource.%2.averageValue}}{{end}}"
        "{{if .pods}}{{.pods.metric.name}} {{.pods.%2.value}} {{.pods.%2.averageValue}}{{end}}"
        "{{if .object}}{{.object.metric.name}} {{.object.%2.value}} {{.object.%2.averageValue}}{{end}}"
        "{{if .external}}{{.external.metric.name}} {{.external.%2.value}} "
        "{{.external.%2.averageValue}}{{end}}"
        ",{{end}}\t")
        .arg(list, figures);
}

QString listingTemplate()
{
    return QStringLiteral(
               "--template={{range.items}}{{.metadata.name}}\t{{.spec.scaleTargetRef.kind}}\t"
               "{{.spec.scaleTargetRef.name}}\t{{.spec.minReplicas}}\t{{.spec.maxReplicas}}\t"
               "{{.status.currentReplicas}}\t{{.status.desiredReplicas}}\t"
               "{{.spec.targetCPUUtilizationPercentage}}\t{{.status.currentCPUUtilizationPercentage}}\t")
        + metricsTemplate(QLatin1String("spec.metrics"), QLatin1String("target"))
        + metricsTemplate(QLatin1String("status.currentMetrics"), QLatin1String("current"))
        + QStringLiteral("{{range .status.conditions}}{{.type}}:{{.status}}:{{.reason}},{{end}}\t"
                         "{{.metadata.creationTimestamp}}\n{{end}}");
}

enum Field {
    TargetKind = 1,
    TargetName,
    Least,
    Most,
    Current,
    Desired,
    TargetCpu,
    CurrentCpu,
    Metrics,
    CurrentMetrics,
    Conditions,
    Created,
    FieldCount
};

/// A metric with one of its figures: a percentage or a value, an average or a whole.
struct Figure
{
    QString name;
    QString value; ///< empty for none
};

/// Of "cpu 80 <no value>", or "requests <no value> 10".
Figure figureOf(QString text)
{
    const bool isResource
        = text.startsWith(QLatin1String("cpu ")) || text.startsWith(QLatin1String("memory "));
    const QStringList parts = text.replace(missingValue, QLatin1String("-")).split(QLatin1Char(' '));
    const auto part = [&parts](int index) {
        const QString value = parts.value(index);
        return value == QLatin1String("-") ? QString() : value;
    };
    const QString first = part(1);
    if (first.isEmpty()) {
        return {part(0), part(2)};
    }
    return {part(0), isResource ? first + QLatin1Char('%') : first};
}

std::vector<Figure> figuresOf(QByteArrayView field)
{
    std::vector<Figure> figures;
    for (const QString &piece : textOf(field).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        figures.push_back(figureOf(piece));
    }
    return figures;
}

QString targetsOf(const Fields &fields)
{
    std::vector<Figure> wanted = figuresOf(fields[Metrics]);
    std::vector<Figure> measured = figuresOf(fields[CurrentMetrics]);
    if (const QString cpu = presentTextOf(fields[TargetCpu]); !cpu.isEmpty()) {
        const QString now = presentTextOf(fields[CurrentCpu]);
        wanted.push_back({QStringLiteral("cpu"), cpu + QLatin1Char('%')});
        measured.push_back({QStringLiteral("cpu"), now.isEmpty() ? now : now + QLatin1Char('%')});
    }
    QStringList targets;
    for (const Figure &target : wanted) {
        const auto found = std::find_if(measured.cbegin(), measured.cend(),
            [&target](const Figure &figure) { return figure.name == target.name; });
        const bool isMeasured = found != measured.cend() && !found->value.isEmpty();
        targets.append(QStringLiteral("%1: %2/%3")
                           .arg(target.name, isMeasured ? found->value : QStringLiteral("?"), target.value));
    }
    return targets.join(QLatin1String(", "));
}

void assign(const Fields &fields, KubeTableItem &item)
{
    auto &scaler = static_cast<HorizontalPodAutoscaler &>(item);
    scaler.reference = textOf(fields[TargetKind]) + QLatin1Char('/') + textOf(fields[TargetName]);
    scaler.least = presentTextOf(fields[Least]).isEmpty() ? 1 : integerOf(fields[Least]);
    scaler.most = integerOf(fields[Most]);
    scaler.current = integerOf(fields[Current]);
    scaler.desired = integerOf(fields[Desired]);
    scaler.targets = targetsOf(fields);
    scaler.conditions = textOf(fields[Conditions]);
    scaler.startTimeString = textOf(fields[Created]);
}

/// Version 1 of the interface tells no conditions.
ObjectState stateOf(const HorizontalPodAutoscaler &scaler)
{
    using enum ObjectState::Grade;
    const auto holds
        = [&scaler](const char *condition) { return scaler.conditions.contains(QLatin1String(condition)); };
    if (holds("AbleToScale:False")) {
        return {QStringLiteral("Cannot scale"), Trouble};
    }
    if (holds("ScalingActive:False:ScalingDisabled")) {
        return {QStringLiteral("Disabled"), Plain};
    }
    if (holds("ScalingActive:False")) {
        return {QStringLiteral("Cannot measure"), Trouble};
    }
    if (scaler.current != scaler.desired) {
        return {QStringLiteral("Scaling"), Progress};
    }
    return holds("ScalingLimited:True:TooManyReplicas")
        ? ObjectState{QStringLiteral("At its limit"), Progress}
        : ObjectState{QStringLiteral("Steady"), Good};
}

std::vector<Column> columns()
{
    using Scaler = HorizontalPodAutoscaler;
    return {
        nameColumn(190),
        stateColumn<Scaler>("status", QStringLiteral("Status"), stateOf, 140),
        textColumn<Scaler>("reference", QStringLiteral("Scales"), &Scaler::reference, 190),
        textColumn<Scaler>("targets", QStringLiteral("Targets"), &Scaler::targets, 220),
        numberColumn<Scaler>("least", QStringLiteral("Least"), &Scaler::least, 70),
        numberColumn<Scaler>("most", QStringLiteral("Most"), &Scaler::most, 70),
        numberColumn<Scaler>("current", QStringLiteral("Replicas"), &Scaler::current, 85),
        numberColumn<Scaler>("desired", QStringLiteral("Desired"), &Scaler::desired, 80),
        ageColumn(90),
    };
}

} // namespace

ResourceKind horizontalPodAutoscalerKind()
{
    ResourceKind kind = kindOf<HorizontalPodAutoscaler>();
    kind.resourceName = QStringLiteral("hpa");
    kind.humanReadableResourceName = QStringLiteral("horizontal pod autoscaler");
    kind.tableName = QStringLiteral("Horizontal Pod Autoscalers");
    kind.listWord = QStringLiteral("hpa");
    kind.outputArguments = {QStringLiteral("-ogo-template"), listingTemplate()};
    kind.fieldCount = FieldCount;
    kind.assign = assign;
    kind.columns = columns();
    return kind;
}

} // namespace tidewright
