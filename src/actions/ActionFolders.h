// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/CustomActionItem.h"
#include "platform/settings/AtomicFile.h"

#include <QStringList>

#include <functional>
#include <vector>

class QObject;

namespace tidewright {

/// A folder with an action or a group of them, as it was found: no file in it has been read.
struct ActionFolder
{
    /// One of the files of an action: its absolute path, empty when there is none, and which state of it.
    struct File
    {
        QString path;
        FileIdentity identity;
        bool operator==(const File &) const = default;
    };

    bool operator==(const ActionFolder &) const = default;

    QString title; ///< the folder's name
    File script, icon, menuIcon, config; ///< without a script it is a group
    std::vector<ActionFolder> children; ///< of a group, in the order of its menu
};

/// The actions folder as it was found, and for which screens its images are to be read.
struct FoundActions
{
    bool operator==(const FoundActions &) const = default;

    int pixelsPerPoint = 0;
    std::vector<ActionFolder> folders;
    QStringList problems; ///< folders left out; sentences
};

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
    /// What it was made from; the same as long as no file of an action changes.
    FoundActions found;
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

using SharedActionTree = std::shared_ptr<const ActionTree>;

/// Walks the folders, sorted by name, into groups and actions. Links to folders are followed, save those that
/// lead back to a folder they lie in. Reads every icon, for screens of that many pixels a point, and every
/// configuration: not on the main thread.
ActionTree loadActionFolders(QStringList folders, int pixelsPerPoint = 2);

/// Finds or makes the actions folder, starter kit included, and loads all folders in it, on a thread of the
/// custom action queue. `loaded` gets the tree on the main thread, or null when there is no such folder,
/// unless `receiver` is gone by then. With a `known` tree, files are read only when they are others than it
/// was made from; else it is given back. Main thread; never blocks.
void loadActionsInBackground(
    QObject *receiver, std::function<void(const SharedActionTree &tree)> loaded, SharedActionTree known = {});

} // namespace tidewright
