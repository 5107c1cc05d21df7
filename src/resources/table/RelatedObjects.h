// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/kinds/ObjectName.h"
#include "resources/kinds/ResourceKind.h"

#include <optional>

namespace tidewright {

/// What another table is to show.
struct TableTarget
{
    QString kind; ///< a singular in lower case and without blanks, such as "replicaset"
    QString filter;
    ObjectName object = {}; ///< to be selected; without a name: none
};

/// The word by which a target means tables of this kind.
QString targetWord(const ResourceKind &kind);

/// The filter that shows the pods with this selector, an object's `.spec.selector` as JSON: a map of labels,
/// or `matchLabels` and `matchExpressions`. Nothing for one that selects no pod or cannot be read.
/// `nameSpace` tells the pods' namespace where the table shows all; else empty. Pure.
std::optional<QString> podFilter(const QByteArray &selector, const QString &nameSpace);

/// The object that made another one, of its `.metadata.ownerReferences` as JSON: the controller among them,
/// or the first. Nothing without one. Pure.
std::optional<TableTarget> ownerTarget(const QByteArray &ownerReferences, const QString &nameSpace);

/// Why the pods, or the owner, of so many chosen objects cannot be shown: a sentence; empty when they can.
QString podsObstacle(const ResourceKind &kind, int chosen);
QString ownerObstacle(const ResourceKind &kind, int chosen);

/// Asks kubectl, told in the window's console, where the pods or the owner of an object are to be seen. Calls
/// back on the main thread, once, unless `receiver` or the window is gone or the window shows another place
/// by then; what could not be found is told in the console.
using TargetFound = std::function<void(const TableTarget &target)>;
void findPods(QObject &receiver, WindowState &window, const ResourceKind &kind, const ObjectName &object,
    const TargetFound &found);
void findOwner(QObject &receiver, WindowState &window, const ResourceKind &kind, const ObjectName &object,
    const TargetFound &found);

} // namespace tidewright
