// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ObjectName.h"
#include "resources/listing/ArrangingModel.h"

#include <QTableView>

#include <vector>

namespace tidewright {

class TableHeader;

/// The table view of one kind. A right click does not change the selection: the row under the pointer is the
/// "clicked" row for as long as its menu is open. An empty table says why in place of rows.
class ResourceTableView : public QTableView
{
    Q_OBJECT
public:
    explicit ResourceTableView(ArrangingModel &model, QWidget *parent = nullptr);

    ArrangingModel &arrangedObjects() const { return m_model; }

    /// The arranged row that the open context menu belongs to, -1 when there is none.
    int clickedRow() const { return m_clickedRow.isValid() ? m_clickedRow.row() : -1; }

    /// True when the row that the open context menu belongs to has vanished meanwhile.
    bool clickedRowIsGone() const { return m_rowWasClicked && !m_clickedRow.isValid(); }

    /// True when the row that the open context menu belongs to is one of the selected ones.
    bool clickedRowIsSelected() const;

    /// How many rows a command applies to: the one that the open context menu belongs to, else the selected
    /// ones.
    int chosenRowCount() const;
    // Objects, in display order; those of rows that name no namespace are in the window's.
    ObjectName objectAt(int row, const QString &windowNamespace) const;
    ObjectNames chosenObjects(const QString &windowNamespace) const;
    ObjectNames selectedObjects(const QString &windowNamespace) const;

    // Of large selections of single rows too, in about as much time as there are rows.

    int selectedRowCount() const;
    /// The selected rows from top to bottom.
    std::vector<int> selectedRowsInOrder() const;
    /// The selected rows in the order in which the user chose them.
    std::vector<int> selectedRowsAsChosen() const;

    /// A column of what objects use (Column::showsUsage) is shown, or the filter names one.
    bool needsUsage() const;
    /// Says with the titles of these columns why they have no figures; empty when they have.
    void setUsageProblem(const QString &problem);

    /// What an empty table shows: a sentence, and details below it in smaller text.
    void setEmptyText(const QString &sentence, const QString &details);

    /// The arranged rows that can be seen now, first and last; -1 and -1 without rows.
    std::pair<int, int> visibleRows() const;

Q_SIGNALS:
    /// Sent with `clickedRow` set (or -1 for a menu that the keyboard asked for); the menu is to be executed
    /// in it.
    void contextMenuRequested(const QPoint &globalPosition);
    /// Enter was pressed, or a row was clicked twice.
    void opened();
    /// Other rows than before may be visible: scrolled, resized, arranged anew.
    void visibleRowsChanged();
    /// Columns were shown or hidden, or others have another width.
    void columnsChanged();

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void paintEvent(QPaintEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void setUpHeader();
    void showHeaderMenu(const QPoint &position);
    void announceVisibleRows();
    void paintEmptyText();
    void paintClickedRow();

    ArrangingModel &m_model;
    TableHeader *m_header;
    QPersistentModelIndex m_clickedRow;
    bool m_rowWasClicked = false;
    QString m_emptySentence;
    QString m_emptyDetails;
    bool m_announced = false;
};

} // namespace tidewright
