// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/changes/ClusterChange.h"

#include <QHash>
#include <QStackedWidget>
#include <QTimer>

namespace tidewright {

class SharedContentViewController;

/// The tables of one cluster window, one tab for each kind of object, of which one is shown. All live as long
/// as the window.
class PrimaryContentController : public QStackedWidget
{
    Q_OBJECT
public:
    /// `window` must outlive the tabs.
    explicit PrimaryContentController(WindowState &window, QWidget *parent = nullptr);

    /// The lower-cased name of the sidebar item last selected, header or kind; empty at first.
    QString selectedTabName() const { return m_selectedTabName; }
    /// Sidebar names in lower case, each with its tab.
    const QHash<QString, QWidget *> &sidebarMap() const { return m_sidebarMap; }
    /// Scopes of actions ("pod", "configmap"), each with a sidebar name in lower case.
    static const QHash<QString, QString> &scopeMap();

    /// The table of an action's scope, or null.
    SharedContentViewController *tableControllerForScope(const QString &scope) const;
    /// The table that is shown; null while the shown kind has none.
    SharedContentViewController *shownTable() const;
    QList<SharedContentViewController *> tables() const;
    /// Whether a table is loaded with the one that is shown when the window turns to another context or
    /// namespace; live updates aside, the others wait until they are shown too.
    bool isLoadedUnseen(const SharedContentViewController &table) const;
    /// Live updates load a table when it is shown; this does for somebody who looks for names in another one.
    void needRows(SharedContentViewController &table) const;

    /// Empties every table: the window turns to another context.
    void clear();
    /// The context or namespace changed: empties every table at once, and loads them: first the one that is
    /// shown, then, with lower priority, the others.
    void clusterSettingsChanged();
    /// Shows the kind of that sidebar item and refreshes it; a header leaves the shown table where it is.
    void selectSidebarItem(const QString &name);

    void reloadContent();
    /// Asks for files and creates what they declare, in what the window shows when it asks.
    void createFromFileDialog();
    /// Creates what files declare, unless the window shows another place by now, and loads the shown table
    /// again one second after that has ended.
    void createFrom(const QStringList &paths, const ChangePlace &place);
    /// Asks for files, shows how what they declare differs from what the cluster has, and applies it.
    void applyFromFileDialog();
    /// The same for these files, unless the window shows another place by now.
    void applyFrom(const QStringList &paths, const ChangePlace &place);

Q_SIGNALS:
    void shownTableChanged();

private:
    void loadHiddenTables();
    std::function<void()> reloadingSoon();

    WindowState &m_window;
    QTimer m_hiddenTablesWait; ///< for the load of the shown one
    QString m_selectedTabName;
    QHash<QString, QWidget *> m_sidebarMap;
};

} // namespace tidewright
