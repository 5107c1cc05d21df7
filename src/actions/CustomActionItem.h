// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/CustomActionConfig.h"
#include "actions/Script.h"
#include "resources/changes/ClusterChange.h"

#include <QIcon>
#include <QImage>

#include <memory>
#include <optional>
#include <vector>

namespace tidewright {

/// One loaded action: made from its folder, unchanged afterwards. Shared by menus, toolbars and running
/// scripts, so that a reload takes nothing from under a run.
class CustomActionItem : public std::enable_shared_from_this<CustomActionItem>
{
public:
    /// Loads the configuration, if there is one, and makes the script object. The images come in the size in
    /// which they are shown, their device pixel ratio set; null ones stand for the standard ones. Any thread.
    static std::shared_ptr<CustomActionItem> create(
        QString title, QImage icon, QImage menuIcon, QString scriptURL, std::optional<QString> configURL);

    /// The action folder's name.
    const QString &title() const { return m_title; }
    /// Points in which images are shown, each way.
    static constexpr int iconPoints = 16;
    /// The toolbar image. Main thread.
    QIcon icon() const;
    /// The menu image, 16 by 16 points. Main thread.
    QIcon menuIcon() const;
    /// Absolute path of the "main." file.
    const QString &scriptURL() const { return m_scriptURL; }
    Script &script() const { return *m_script; }
    /// Absolute path of "config.json", when there is one.
    const std::optional<QString> &configURL() const { return m_configURL; }
    const CustomActionConfig &config() const { return m_config; }
    /// Why the default configuration had to be taken instead of config.json, as a sentence for the user; else
    /// empty.
    const QString &configProblem() const { return m_configProblem; }

    bool isActiveIn(const QString &context) const { return m_config.isActiveIn(context); }

    /// Why the action must not run in a context, which is read-only: a sentence; empty when it may.
    QString readOnlyObstacle(const ContextKey &context) const;

    /// Asks the user when the configuration or the context wants it, and runs the script on the custom action
    /// queue. Nothing happens in a context in which the action is not active, or must not be. With a `place`
    /// the script acts there, by a view of the kubeconfig of its own in front of KUBECONFIG, or is not run
    /// and its console says why. Returns at once. Main thread.
    void performAction(
        const ActionEnvironment &environment, const std::optional<ChangePlace> &place = std::nullopt);
    /// The same for several targets of one place, each with a run of its own: one question names them all.
    void performActions(
        const std::vector<ActionEnvironment> &environments, const std::optional<ChangePlace> &place);
    /// Adds KUBECTL and the user's variables that the action needs. Nothing when one is missing; the user is
    /// told then. Any thread.
    std::optional<ActionEnvironment> buildEnvironment(ActionEnvironment environment) const;

private:
    CustomActionItem(
        QString title, QImage icon, QImage menuIcon, QString scriptURL, std::optional<QString> configURL);
    void loadConfig();
    void runIn(const ActionEnvironment &environment, const std::optional<ChangePlace> &place);
    void start(const ActionRun &run);
    std::unique_ptr<Script> makeScript() const;

    const QString m_title;
    const QImage m_icon;
    const QImage m_menuIcon;
    const QString m_scriptURL;
    const std::optional<QString> m_configURL;
    CustomActionConfig m_config;
    QString m_configProblem;
    std::unique_ptr<Script> m_script;
};

} // namespace tidewright
