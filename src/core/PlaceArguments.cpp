// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PlaceArguments.h"

namespace tidewright {

QString namespaceArgument(const QString &currentNamespace)
{
    return currentNamespace == allNamespaces ? QStringLiteral("--all-namespaces")
                                             : QLatin1String("-n") + currentNamespace;
}

QStringList labelSelectorArguments(const QString &selector)
{
    return selector.isEmpty() ? QStringList() : QStringList(QLatin1String("-l") + selector);
}

QString contextArgument(const QString &context)
{
    return QLatin1String("--context=") + context;
}

QStringList placeArguments(const QString &context, const QString &currentNamespace)
{
    return {contextArgument(context), namespaceArgument(currentNamespace)};
}

QStringList separateNamespaceArguments(const QString &nameSpace)
{
    return {QStringLiteral("-n"), nameSpace};
}

QStringList separatePlaceArguments(const QString &context, const QString &nameSpace)
{
    return QStringList{QStringLiteral("--context"), context} + separateNamespaceArguments(nameSpace);
}

QStringList useContextArguments(const QString &context)
{
    return {QStringLiteral("kubectl"), QStringLiteral("config"), QStringLiteral("use-context"), context};
}

QStringList setNamespaceArguments(const QString &nameSpace)
{
    return {QStringLiteral("kubectl"), QStringLiteral("config"), QStringLiteral("set-context"),
        QStringLiteral("--current"), QLatin1String("--namespace=") + nameSpace};
}

} // namespace tidewright
