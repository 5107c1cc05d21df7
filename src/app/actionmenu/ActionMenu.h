// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>

#include <functional>

namespace tidewright {

class ActionLibrary;
class ActionTarget;
class CustomToolbarItem;
struct ActionNode;

/// The Actions menu of one top-level window: three fixed commands, then the user's actions as their folders
/// are nested. What is chosen runs in the tab that is shown. Actions that are loaded while the menu is open
/// are shown once it has closed: nothing moves or vanishes under the pointer.
class ActionMenu : public QMenu
{
    Q_OBJECT
public:
    /// `frame` owns the menu; `library` must outlive it. `target` is asked each time; it may be null.
    ActionMenu(QWidget &frame, ActionLibrary &library, std::function<ActionTarget *()> target);

    QAction *runLastActionMenuItem() const { return m_runLast; }
    /// The toolbar button of the action of that title; null when there is no such action.
    QAction *toolbarItem(const QString &title);
    /// Enables the run-last item, the toolbar's buttons and, while the menu is open, its actions, as the tab
    /// that is shown has it.
    void updateEnabled();

Q_SIGNALS:
    /// The actions are others now, and the toolbar's buttons with them.
    void rebuilt();

private:
    void runLast(ActionTarget &page);
    void actionsLoaded();
    void buildActionMenu();
    void addFixedHead();
    void addNodes(QMenu &menu, const std::vector<ActionNode> &nodes);
    void validateMenu();
    void validateItems();

    ActionLibrary &m_library;
    const std::function<ActionTarget *()> m_target;
    QAction *m_runLast = nullptr;
    bool m_outdated = false;
    QMap<QString, CustomToolbarItem *> m_toolbarItems;
};

} // namespace tidewright
