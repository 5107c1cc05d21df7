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
    QStringList names;
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
    /// "kubectl", the words, and where the window acts: its context, and for namespaced kinds its namespace.
    QStringList commandLine(const QStringList &words) const;
    /// Asks, runs it through the door of all changes, and loads the table again.
    void runOnRows(const RowCommand &command);
    /// The name of the row that a command applies to; empty when it is not exactly one.
    QString onlyChosen() const;
    /// "the deployment "web"", or "3 deployments".
    QString nounFor(const QStringList &names) const;
    /// What `runChange` calls when it has ended.
    std::function<void()> reloadWhenDone();
};

} // namespace tidewright
