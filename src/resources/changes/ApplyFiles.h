// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/changes/ClusterChange.h"

class QWidget;

namespace tidewright {

struct ShellResult;

/// What `kubectl diff` has found.
struct FileComparison
{
    QByteArray diff; ///< unified; empty when nothing differs
    QString remarks; ///< what kubectl said beside it
    /// Why there is no comparison: a sentence of kubectl's; empty when there is one.
    QString failure;

    /// Objects that would change.
    qsizetype objectCount() const;

    /// It ends with 1 both for differences, which it prints, and for faults of many kinds. Pure.
    static FileComparison read(const ShellResult &result);
};

/// "Nothing was applied", the beginning of what the console says when nothing was.
QString nothingApplied();

/// As canCreateIn.
bool canApplyIn(WindowState &window);

/// Compares what the YAML files and folders at `paths` declare with what the cluster has in `place`, asks
/// over `view` whether to apply the differences, and does. When there are none, the console says so.
/// `finished` is called on the main thread once `kubectl apply` has ended, whatever its outcome, unless the
/// window is gone by then. Main thread.
void applyFiles(
    QWidget &view, const ChangePlace &place, const QStringList &paths, std::function<void()> finished);

} // namespace tidewright
