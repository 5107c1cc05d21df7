// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/loading/TableStatus.h"

#include "core/KubeCtl.h"

#include <QLocale>
#include <QObject>

namespace tidewright {

namespace {

QString nowhere(const ResourceKind &kind, const QString &noun, const QString &nameSpace)
{
    if (!kind.namespaced) {
        return QObject::tr("No %1 in this cluster.").arg(noun);
    }
    return nameSpace == allNamespaces ? QObject::tr("No %1 in any namespace.").arg(noun)
                                      : QObject::tr("No %1 in namespace %2.").arg(noun, nameSpace);
}

} // namespace

QString countsText(const ResourceKind &kind, const TableFacts &facts)
{
    const QLocale locale;
    const QString noun = kind.tableName.toLower();
    if (!facts.hasBeenLoaded && facts.all > 0) { // also when loading has stopped half-way
        return QObject::tr("%1 %2 so far").arg(locale.toString(facts.all), noun);
    }
    if (facts.hasFailed || !facts.hasBeenLoaded) {
        return {};
    }
    QString counts = facts.shown == facts.all
        ? QObject::tr("%1 %2").arg(
            locale.toString(facts.all), facts.all == 1 ? kind.humanReadableResourceName : noun)
        : QObject::tr("%1 of %2 %3").arg(locale.toString(facts.shown), locale.toString(facts.all), noun);
    if (!facts.labels.isEmpty()) {
        counts = QObject::tr("%1 with the label %2").arg(counts, facts.labels);
    }
    if (facts.selected > 0) {
        counts += QStringLiteral("  ·  ") + QObject::tr("%1 selected").arg(locale.toString(facts.selected));
    }
    return counts;
}

QString emptyReason(const ResourceKind &kind, const TableFacts &facts)
{
    const QString noun = kind.tableName.toLower();
    if (facts.all > 0) {
        return (facts.hasBeenLoaded ? QObject::tr("No %1 match “%2”.")
                                    : QObject::tr("No %1 match “%2” so far."))
                   .arg(noun, facts.filter)
            + (facts.filterNote.isEmpty() ? QString() : QLatin1Char('\n') + facts.filterNote);
    }
    if (facts.isLoading) {
        return QObject::tr("Loading %1…").arg(noun);
    }
    if (!facts.hint.isEmpty()) {
        return facts.hint;
    }
    if (facts.nameSpace.isEmpty()) {
        return QObject::tr("No namespace is chosen.");
    }
    if (facts.hasFailed) {
        return QObject::tr("The %1 could not be loaded.").arg(noun) + QLatin1Char('\n') + facts.problem;
    }
    if (!facts.problem.isEmpty()) {
        return facts.problem;
    }
    if (!facts.hasBeenLoaded) {
        return QObject::tr("The %1 have not been loaded yet.").arg(noun);
    }
    return nowhere(kind,
        facts.labels.isEmpty() ? noun : QObject::tr("%1 with the label %2").arg(noun, facts.labels),
        facts.nameSpace);
}

} // namespace tidewright
