// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <vector>

namespace tidewright {

class ResourceTableView;

/// Widgets in the cells of one column, built when their row is first seen, a few per turn of the event loop.
/// The text of such a cell is not drawn. A row that vanishes, or that the filter hides, takes its widget with
/// it. Owned by the view; main thread only.
class VisibleCells : public QObject
{
    Q_OBJECT
public:
    /// Makes the cell of a row fit what the row says, with `put` where a new widget is needed; true when one
    /// was.
    using Ensure = std::function<bool(const QModelIndex &index)>;
    /// Whether the user would miss the widget of a row out of sight; others are dropped when there are many.
    using Keep = std::function<bool(const QWidget &widget)>;

    VisibleCells(ResourceTableView &view, int column, Ensure ensure, Keep keep);

    /// The widget in the row of an arranged index, or null.
    QWidget *at(const QModelIndex &index) const;
    /// Takes `widget`, and ends the one that was there.
    void put(const QModelIndex &index, QWidget *widget);
    /// The row in which a widget stands; invalid when it is gone.
    QPersistentModelIndex indexOf(const QWidget *widget) const;
    /// Makes every cell there is fit its row.
    void update();
    /// Makes the cell of one row, seen or not.
    bool ensure(const QModelIndex &index);

Q_SIGNALS:
    /// Widgets may have gone.
    void cellsForgotten();

private:
    struct Cell
    {
        QPersistentModelIndex index; // in the arranged model
        QPointer<QWidget> widget;
    };

    void buildVisible();
    void forgetGone();
    void dropOutOfSight();

    ResourceTableView &m_view;
    const int m_column;
    const Ensure m_ensure;
    const Keep m_keep;
    std::vector<Cell> m_cells;
};

} // namespace tidewright
