// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace tidewright {

// How kubectl's argument lists tell a context and a namespace. Any thread.

/// The pseudo-namespace of a window that shows every namespace. It never reaches a kubeconfig.
inline const QString allNamespaces = QStringLiteral("All Namespaces");

/// "--all-namespaces" for the pseudo-namespace, else "-n" immediately followed by the name, as one argument.
QString namespaceArgument(const QString &currentNamespace);
/// "--context=" immediately followed by the name, as one argument.
QString contextArgument(const QString &context);
/// Both, in the order context, namespace.
QStringList placeArguments(const QString &context, const QString &currentNamespace);

/// "-l" immediately followed by the selector, as one argument; none for an empty selector.
QStringList labelSelectorArguments(const QString &selector);

/// "-n" and the name as two arguments, as some commands give it.
QStringList separateNamespaceArguments(const QString &nameSpace);
/// "--context", its name, and the same.
QStringList separatePlaceArguments(const QString &context, const QString &nameSpace);

/// The argument lists that change what is current in a kubeconfig.
QStringList useContextArguments(const QString &context);
QStringList setNamespaceArguments(const QString &nameSpace);

} // namespace tidewright
