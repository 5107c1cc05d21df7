// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

#include <QHash>

namespace tidewright {

/// What objects use, by namespace and name. The namespace is empty where a table does not tell any
/// (KubeTableItem::nameSpace).
using Usages = QHash<std::pair<QString, QString>, Usage>;

/// Reads what `kubectl top pods` and `kubectl top nodes` print with "--no-headers": a line for each object
/// with its name, its cores and its bytes as quantities, of a node each followed by a percentage. All pods
/// (`withNamespace`) have their namespace in front. "<unknown>" stands for a figure that nobody has. Lines
/// of another form are passed over. Pure, any thread.
Usages usagesOf(const QByteArray &printed, bool withNamespace);

} // namespace tidewright
