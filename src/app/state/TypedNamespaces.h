// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace tidewright {

/// The namespaces that the user has typed where the cluster does not list them, for each context, in the
/// settings. Main thread.
namespace typed_namespaces {

/// The latest first.
QStringList of(const QString &context);
void remember(const QString &context, const QString &name);
/// Why a text is no name of a namespace: a sentence; empty when it is one.
QString problem(const QString &name);

} // namespace typed_namespaces

} // namespace tidewright
