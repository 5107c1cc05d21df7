// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/ActionFolders.h"

#include <QMap>
#include <QObject>

namespace tidewright {

/// The custom actions as they were last loaded, for all windows. Reading the folders never holds up a window.
/// One per process; main thread.
class ActionLibrary : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Loads the folders anew, once more if a load is under way already; `loaded` follows. The main window's
    /// console is told.
    void reload();
    /// The same for a window that opens: the console is told, but what has not changed on the disk since it
    /// was loaded is neither read again nor announced.
    void refresh();

    const ActionTree &tree() const { return *m_tree; }
    /// Every action loaded since the start, by title: of two with the same title the one loaded last. Those
    /// whose folders vanished stay.
    const QMap<QString, std::shared_ptr<CustomActionItem>> &customToolbarItems() const { return m_items; }

    /// Opens the actions folder in the desktop's file manager; nothing happens when there is none.
    static void showInFinder();

Q_SIGNALS:
    void loaded();

private:
    void load();
    void take(const SharedActionTree &tree);
    void collect(const std::vector<ActionNode> &nodes);

    SharedActionTree m_tree = std::make_shared<const ActionTree>();
    QMap<QString, std::shared_ptr<CustomActionItem>> m_items;
    bool m_loading = false;
    bool m_again = false; ///< another load was asked for meanwhile
    bool m_afresh = false; ///< the next load reads everything
};

} // namespace tidewright
