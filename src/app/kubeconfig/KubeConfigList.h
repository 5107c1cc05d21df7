// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <optional>

namespace tidewright {

/// Kubeconfigs as the variable KUBECONFIG names them: paths separated by ":" which kubectl merges, the first
/// winning. A file whose own name has a ":" cannot be named. Nothing here looks at the disk. Any thread.
namespace kubeconfig_list {

/// The paths of the list. Empty elements do not count, for kubectl neither.
QStringList files(const QString &list);

/// The files that KUBECONFIG names in this process, absolute; empty when it names none. Nothing when another
/// process could not be told: a path is not UTF-8, or it is relative and the working folder is gone.
std::optional<QString> ofEnvironment();

/// Whether each element is an absolute path and the whole could be the value of a variable. So is the empty
/// list.
bool isComplete(const QString &list);

/// For titles: a single path as it is, of several files the names.
QString shown(const QString &list);

} // namespace kubeconfig_list

} // namespace tidewright
