// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/content/TableHistory.h"
#include "resources/changes/ClusterChange.h"

#include <QHash>
#include <QStackedWidget>
#include <QTimer>

namespace tidewright {

class SharedContentViewController;
struct TableTarget;

/// The tables of one cluster window, one tab for each kind of object, of which one is shown. Those of the
/// house are made when first needed, a window with all of them takes twice the memory, and then live as long
/// as it; others come and go.
class PrimaryContentController : public QStackedWidget
{
    Q_OBJECT
public:
    /// `window` must outlive the tabs.
    explicit PrimaryContentController(WindowState &window, QWidget *parent = nullptr);

    /// The lower-cased name of the sidebar item last selected, header or kind; empty at first.
    QString selectedTabName() const { return m_selectedTabName; }
    /// The table under a sidebar name in lower case, made when it is one of the house; null when there is
    /// none.
    SharedContentViewController *tableNamed(const QString &name);
    /// Scopes of actions ("pod", "configmap"), each with a sidebar name in lower case.
    static const QHash<QString, QString> &scopeMap();

    /// The table of an action's scope, made when needed, or null.
    SharedContentViewController *tableControllerForScope(const QString &scope);
    /// Whether rows are selected in it.
    bool hasSelection(const QString &scope) const;
    /// The table that is shown; null while the shown kind has none.
    SharedContentViewController *shownTable() const;
    /// Those that were made.
    QList<SharedContentViewController *> tables() const;
    /// Adds a table under a sidebar name in lower case; one that stands there goes, with its filter handed
    /// on.
    void putTable(const QString &name, SharedContentViewController *table);
    /// Does nothing for a name that has none.
    void removeTable(const QString &name);
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

    /// Whether there is a table to go back to (-1), or forward (1).
    bool canGo(int steps) const { return m_history.canGo(steps); }
    /// Shows that table as it was when it was left: its filter, and its first selected row.
    void go(int steps);
    /// Shows the table of a kind as somebody wants it; the window's console says so when there is none.
    void showTarget(const TableTarget &target);

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
    /// The item of that name is to be selected in the sidebar, which brings its table.
    void sidebarItemWanted(const QString &name);
    void tableAdded(SharedContentViewController *table);
    /// Why the kind of a table is out of reach, as far as its latest load or the cluster's rules say: empty
    /// when it is not, or not known.
    void obstacleFound(const QString &sidebarName, const QString &obstacle);

private:
    void tableLoaded(SharedContentViewController &table);
    void tellObstacles();
    void tellObstacle(const QString &name);
    void loadHiddenTables();
    int placeFor(const QString &name) const;
    QString nameOf(const SharedContentViewController &table) const;
    QString sidebarName(const SharedContentViewController &table) const;
    void tableSwitched();
    void noteVisit();
    void bring(SharedContentViewController &table, const QString &filter, const ObjectName &selected);
    std::function<void()> reloadingSoon();

    WindowState &m_window;
    QTimer m_hiddenTablesWait; ///< for the load of the shown one
    QString m_selectedTabName;
    QHash<QString, SharedContentViewController *> m_sidebarMap; ///< by sidebar name in lower case
    TableHistory m_history;
    bool m_isTravelling = false; ///< in the history
};

} // namespace tidewright
