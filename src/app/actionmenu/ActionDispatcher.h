// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/CustomActionItem.h"

#include <QCache>
#include <QDeadlineTimer>

namespace tidewright {

class PrimaryContentController;
class SharedContentViewController;
class WindowState;

/// Decides for one cluster window what a custom action applies to, and runs it for that. Main thread.
class ActionDispatcher
{
public:
    /// Both must outlive the dispatcher.
    ActionDispatcher(PrimaryContentController &content, WindowState &window);

    /// Runs the action for the resource it applies to; when there is none, nothing happens. While contexts or
    /// namespaces are loading, and when a pattern took too long, the console says that it was not run.
    void dispatchAction(const std::shared_ptr<CustomActionItem> &item) const;

    /// Many calls of `obstacle` follow, which together must not hold up the window.
    void beginChecks();
    /// Why the action cannot be chosen now, as a sentence; empty when it can, and when the checks since
    /// `beginChecks` have taken too long.
    QString obstacle(const CustomActionItem &item) const;

private:
    /// Whether a table has a row that an action's pattern matches, and of which rows that was found.
    struct PatternResult
    {
        quint64 generation = 0;
        QString filter;
        bool matches = false;
        QDeadlineTimer rest; ///< until then it also stands for other rows, while they are loading
    };

    QString targetObstacle(const CustomActionItem &item) const;
    bool hasMatch(const CustomActionItem &item, const SharedContentViewController &table) const;
    /// The variables that name the resource, once for each namespace that resources are chosen in.
    std::vector<ActionEnvironment> targets(const CustomActionItem &item) const;

    PrimaryContentController &m_content;
    WindowState &m_window;
    QDeadlineTimer m_checks{QDeadlineTimer::Forever};
    /// By pattern and table. More actions than that are found out anew each time.
    mutable QCache<std::pair<QString, const SharedContentViewController *>, PatternResult> m_results{2000};
};

} // namespace tidewright
