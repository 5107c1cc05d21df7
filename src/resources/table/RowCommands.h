// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/kinds/ObjectName.h"
#include "resources/kinds/ResourceKind.h"

#include <QPointer>

namespace tidewright {

class ResourceTableView;
class TablePreviews;
struct Relation;
struct TableTarget;

/// The commands on the rows of a table that every kind has. They apply to the row that a context menu was
/// opened on, else to the selected ones. Main thread only.
class RowCommands : public QObject
{
    Q_OBJECT
public:
    /// A child of `table`, over whose window it asks; the others must outlive it.
    RowCommands(ResourceTableView &view, WindowState &window, const ResourceKind &kind, QWidget &table);
    ~RowCommands() override;

    ObjectNames chosenObjects() const;

    void copyName();
    /// Shows the object where nothing may be changed.
    void edit();
    void remove();
    void preview();
    void viewLogsOfAllPods();
    /// These find out what another table is to show, and then ask for it.
    void showPods();
    void showOwner();
    QString showPodsObstacle() const;
    QString showOwnerObstacle() const;

    /// Selects that row and shows it, now or once it is there; without a name it waits for none any more.
    void select(const ObjectName &object);
    void selectWanted();
    /// All rows that there are have come.
    void giveUpWanted();

    /// For the previews.
    void selectionChanged();
    void forgetPreviews();

Q_SIGNALS:
    /// The cluster may have been changed.
    void changed();
    void otherTableWanted(const tidewright::TableTarget &target);

private:
    void follow(const ObjectName &from, const Relation &relation);

    ResourceTableView &m_view;
    WindowState &m_window;
    const ResourceKind &m_kind;
    QWidget &m_table;
    ObjectName m_wanted; ///< without a name: none
    std::unique_ptr<TablePreviews> m_previews;
};

} // namespace tidewright
