// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/kubeconfig/KubeConfigView.h"
#include "core/running/Console.h"

#include <QMap>
#include <QString>

#include <memory>

namespace tidewright {

class CustomActionItem;

/// What an action's script is told: the name of an environment variable to its value.
using ActionEnvironment = QMap<QString, QString>;

/// One run of an action.
struct ActionRun
{
    ActionEnvironment environment;
    QPointer<Console> console; ///< shows that it runs; may be null or gone
    /// What KUBECONFIG names first, kept for as long as the script may read it; null without a window.
    std::shared_ptr<const KubeConfigView> view = {};
    QString shownKubeConfig
        = {}; ///< what a reader is told that KUBECONFIG holds: the view is gone after the run
};

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

    /// Runs the script for `item`, which owns it, unless variables that it needs are missing. On a thread of
    /// the custom action queue; failures go to the console of the main window.
    virtual void runScript(std::shared_ptr<CustomActionItem> item, ActionRun run) = 0;

private:
    const QString m_scriptURL;
};

} // namespace tidewright
