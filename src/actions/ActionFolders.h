// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/CustomActionItem.h"

#include <QStringList>

#include <functional>
#include <vector>

class QObject;

namespace tidewright {

/// A node of the action tree: an action, or a group of nodes.
struct ActionNode
{
    QString title; ///< the folder's name
    std::shared_ptr<CustomActionItem> item; ///< null for a group
    std::vector<ActionNode> children; ///< of a group, in the order of its menu
};

/// The actions of the user, as their folders are nested.
struct ActionTree
{
    std::vector<ActionNode> nodes;
    /// What the user should know of the folders: unusable configurations, folders left out. Sentences.
    QStringList problems;
};

/// The user's actions folder, .../Tidewright/Actions in the folder for application data. Made, with its
/// parents, when it is not there; `onCreate` (may be empty) is told its path then. Nothing when it cannot be
/// made. Any thread, one call at a time.
std::optional<QString> actionsFolderURL(const std::function<void(const QString &folder)> &onCreate);

/// Copies the actions that come with the application into the folder. Failure is told on the standard output.
void installStarterKit(const QString &actionsFolder);

/// Absolute paths of all entries of a folder, in the order in which the file system lists them; none when it
/// cannot be listed.
QStringList directoryContents(const QString &folder);

/// Walks the folders, sorted by name, into groups and actions. Links to folders are followed, save those that
/// lead back to a folder they lie in. Reads every icon and configuration: not on the main thread.
ActionTree loadActionFolders(QStringList folders);

/// Finds or makes the actions folder, starter kit included, and loads all folders in it, on a thread of the
/// custom action queue. `loaded` gets the tree on the main thread, or nothing when there is no such folder,
/// unless `receiver` is gone by then. Main thread; never blocks.
void loadActionsInBackground(
    QObject *receiver, std::function<void(const std::optional<ActionTree> &tree)> loaded);

} // namespace tidewright
