// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Console.h"

#include <QMap>
#include <QString>

#include <memory>

namespace tidewright {

class CustomActionItem;

/// What an action's script is told: the name of an environment variable to its value.
using ActionEnvironment = QMap<QString, QString>;

/// The "main." file of an action and the way to run it. Owned by its CustomActionItem.
class Script
{
public:
    explicit Script(QString scriptURL)
        : m_scriptURL(std::move(scriptURL))
    {
    }
    virtual ~Script() = default;
    Script(const Script &) = delete;
    Script &operator=(const Script &) = delete;

    const QString &scriptURL() const { return m_scriptURL; }

    /// Runs the script for `item`, which owns it, unless variables that it needs are missing. `console` (may
    /// be null or gone) shows that it runs. On a thread of the custom action queue; failures go to the
    /// console of the main window.
    virtual void runScript(
        std::shared_ptr<CustomActionItem> item, ActionEnvironment environment, QPointer<Console> console)
        = 0;

private:
    const QString m_scriptURL;
};

} // namespace tidewright
