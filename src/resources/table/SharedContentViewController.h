// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/changes/UserRights.h"
#include "resources/kinds/ObjectName.h"
#include "resources/listing/ArrangingModel.h"
#include "resources/loading/TableLoader.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/RowCommands.h"

#include <QDateTime>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>

class QAction;
class QLineEdit;
class QMenu;
class QProgressBar;

namespace tidewright {

class TableStatusBar;
class UsageWatch;
struct TableTarget;

/// The table of one kind in one cluster window: its rows and their presentation, the refresh timer, the load
/// cycle that runs kubectl and merges its listing, and the commands on the selected rows. A kind that needs
/// commands of its own derives from it. Main thread only.
class SharedContentViewController : public QWidget
{
    Q_OBJECT
public:
    /// `window` must outlive the controller.
    SharedContentViewController(ResourceKind kind, WindowState &window, QWidget *parent = nullptr);
    ~SharedContentViewController() override;

    const ResourceKind &kind() const { return m_store->kind(); }
    const Rows &tableItems() const { return m_store->rows(); }
    /// Changes with every change of `tableItems`.
    quint64 generation() const { return m_store->generation(); }
    ArrangingModel &arrangedObjects() const { return *m_arranged; }
    ResourceTableView &tableView() const { return *m_tableView; }
    WindowState &kubeSplitViewController() const { return m_window; }

    /// True from the start of a load until its rows are shown, and while `setLoading` says so.
    bool isLoading() const { return isListing() || m_otherWork > 0; }
    /// The same without what `setLoading` says.
    bool isListing() const { return m_loader->isLoading(); }
    /// Shows the table as loading while something else than its own loads is being done for it. Each true is
    /// taken back by one false.
    void setLoading(bool loading);
    /// There is something for `stopLoading` to end.
    bool canStopLoading() const { return isListing() || m_window.waitingSince().isValid(); }
    /// As the loader has them.
    QDateTime rowsAsOf() const { return m_loader->rowsAsOf(); }
    QString problem() const { return m_loader->problem(); }
    bool hasFailed() const { return m_loader->hasFailed(); }

    QString filter() const { return m_arranged->filter(); }
    /// What it asks the server for waits until nobody types for a moment, or for `completeFilter`.
    void setFilter(const QString &text);
    void completeFilter();
    /// Why the filter may not do what it looks like: sentences; empty as a rule.
    QString filterNote() const { return m_arranged->rowFilter().note(); }
    /// The field that `selectFilter` moves the keyboard focus to.
    void setFilterField(QLineEdit *field);

    /// Starts one load: kubectl, merge, apply.
    void load(const LoadRequest &request);
    /// Loads in front of the user, who sees the command in the console; tries again to get a place to load
    /// from when there is none.
    void reload();
    /// The window has come to the front.
    void userIsBack();
    /// Empties the table at once; loads under way are ended, their rows never appear.
    void clear();

    // The names by which the tab container and the window drive every table.
    void loadContent(bool logToConsole) { load({.logged = logToConsole}); }
    void reloadLogging(bool logToConsole) { loadContent(logToConsole); }
    void clearAndReload(const LoadRequest &request);

    /// The rows a command applies to: the one a context menu was opened on, else the selected ones, in
    /// display order.
    ObjectNames chosenObjects() const { return m_commands->chosenObjects(); }
    /// How many rows these are.
    int chosenCount() const { return m_tableView->chosenRowCount(); }
    /// The selected rows, in display order.
    ObjectNames selectedObjects() const { return m_tableView->selectedObjects(m_window.currentNamespace()); }
    /// The object at an arranged row: in its own namespace, or in the window's.
    ObjectName objectAt(int row) const { return m_tableView->objectAt(row, m_window.currentNamespace()); }

    /// Why no logs can be viewed now (this kind has none, nothing is selected): a sentence; empty when they
    /// can.
    virtual QString viewLogsObstacle() const;
    /// Why the pods, or the owner, of a row cannot be shown now: a sentence; empty when they can.
    QString showPodsObstacle() const { return m_commands->showPodsObstacle(); }
    QString showOwnerObstacle() const { return m_commands->showOwnerObstacle(); }

    /// Selects the row of this object and shows it, now or once it is loaded, unless another row is chosen
    /// meanwhile.
    void selectObject(const ObjectName &object) { m_commands->select(object); }
    /// Why no port can be forwarded, in the same way.
    QString forwardPortObstacle() const;
    /// Why that must not be done to any of the chosen rows (deedObstacle).
    QString obstacleTo(Deed deed) const;

public Q_SLOTS:
    void reloadContent();
    void selectFilter();
    void copyName() { m_commands->copyName(); }
    void editConfiguration() { m_commands->edit(); }
    void deleteRows() { m_commands->remove(); }
    void showQuickLookPanel() { m_commands->preview(); }
    /// Opens one window with the logs of all containers of the chosen rows.
    virtual void viewLogs();
    /// Find out what another table is to show of the chosen row, and ask for that with `otherTableWanted`.
    void showPods() { m_commands->showPods(); }
    void showOwner() { m_commands->showOwner(); }
    /// The same of all pods that the chosen rows select, also of those that come later.
    void viewLogsOfAllPods() { m_commands->viewLogsOfAllPods(); }
    /// Asks for a port of the chosen object and makes it reachable on this machine.
    void forwardPort();
    /// Ends the loads under way; the rows stay as they are.
    void stopLoading();

Q_SIGNALS:
    void loadingChanged(bool loading);
    void selectionChanged();
    void filterChanged();
    void otherTableWanted(const tidewright::TableTarget &target);
    /// A load has ended, one way or another, and what it brought is shown.
    void loadFinished();
    /// TableLoader::otherTitles.
    void otherTitles(const QStringList &titles);

protected:
    /// The rows of a load, or of a clearing, are in the store now.
    virtual void rowsChanged() { }
    /// Adds a kind's own commands to the menu of a row.
    virtual void extendContextMenu(QMenu &) { }

    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

    /// Puts a changed copy in the place of the row at an arranged index.
    void replaceRow(const QModelIndex &index, const Row &row);

    /// Enables a command of a menu where it is possible and nothing forbids what it does (`obstacleTo`), or
    /// says why it is not.
    void enableFor(Deed deed, QAction &action, bool isPossible) const;
    /// Whether a command can tell these objects by name and namespace; the window's console says `notDone`
    /// and why when none can.
    bool canName(const ObjectNames &objects, const QString &notDone) const;
    /// The same for a command that changes them: the window's context has to allow that too.
    bool canChange(const ObjectNames &objects, const QString &notDone) const;
    static QString noLogs();

    /// Loads again one second from now, for the time after a change to the cluster.
    void reloadSoon();

private:
    void buildLayout();
    void connectParts();
    void refresh();
    void showLoading();
    void showNamespaces();
    void updateWatched();
    void setWatched(bool watched);
    void updateUsage();
    void updateStatus();
    void showContextMenu(const QPoint &position);

    WindowState &m_window;
    RowStore *m_store;
    ArrangingModel *m_arranged;
    TableLoader *m_loader;
    UsageWatch *m_usage;
    ResourceTableView *m_tableView;
    TableStatusBar *m_statusBar;
    RowCommands *m_commands;
    QProgressBar *m_progress = nullptr;
    QPointer<QLineEdit> m_filterField;
    QTimer m_timer{this};
    QTimer m_progressDelay;
    QTimer m_labelDelay{this}; ///< for somebody who is typing a label
    int m_otherWork = 0;
    bool m_showsNamespaces = false;
    bool m_isWatched = false; ///< somebody can see the table
};

} // namespace tidewright
