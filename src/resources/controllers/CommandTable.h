// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/changes/ClusterChange.h"
#include "resources/table/SharedContentViewController.h"

namespace tidewright {

/// A change that a table's command makes to some of its rows, with what is asked before.
struct RowCommand
{
    QString title; ///< of the question
    QString question;
    QString button; ///< that answers yes
    QString notDone; ///< "Nothing was restarted", the beginning of what is said when it was not
    ObjectNames objects;
    std::vector<QStringList> lines; ///< one after the other, up to the first that fails
    bool isAlwaysAsked = true; ///< elsewhere than in protected contexts too
};

/// A table whose kind has commands of its own that are command lines of kubectl's. Main thread.
class CommandTable : public SharedContentViewController
{
    Q_OBJECT
public:
    using SharedContentViewController::SharedContentViewController;

protected:
    /// "kubectl", the words, the window's context, and for namespaced kinds the namespace.
    QStringList commandLine(const QStringList &words, const QString &nameSpace) const;
    /// One such line for each namespace, with the objects there behind it as "TARGET" and name.
    std::vector<QStringList> commandLines(
        const QStringList &words, const QString &target, const ObjectNames &objects) const;
    /// Asks, runs it through the door of all changes, and loads the table again.
    void runOnRows(const RowCommand &command);
    /// The row that a command applies to; none when it is not exactly one.
    std::optional<ObjectName> onlyChosen() const;
    /// "the deployment "web"", or "3 deployments".
    QString nounFor(const ObjectNames &objects) const;
    /// What `runChange` calls when it has ended.
    std::function<void()> reloadWhenDone();
};

} // namespace tidewright
