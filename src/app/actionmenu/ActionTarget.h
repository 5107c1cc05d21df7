// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>

namespace tidewright {

class CustomActionItem;

/// Where what is chosen in the Actions menu runs: the tab that is shown. Main thread.
class ActionTarget
{
public:
    virtual ~ActionTarget() = default;

    /// The custom action that was last chosen here; null at first.
    virtual std::shared_ptr<CustomActionItem> lastAction() const = 0;
    /// Runs a custom action for what the tables show.
    virtual void runAction(const std::shared_ptr<CustomActionItem> &item) = 0;
    /// Runs the last one again, for what the tables show now.
    virtual void runLastAction() = 0;
    /// Many calls of `actionObstacle` follow, which together must not hold up the window.
    virtual void beginActionChecks() = 0;
    /// Why an action cannot be chosen now; empty when it can.
    virtual QString actionObstacle(const CustomActionItem &item) const = 0;
};

} // namespace tidewright
