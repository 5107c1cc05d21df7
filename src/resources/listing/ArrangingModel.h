// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ObjectName.h"
#include "resources/listing/RowFilter.h"
#include "resources/listing/RowOrder.h"
#include "resources/listing/RowStore.h"

#include <QAbstractTableModel>

namespace tidewright {

/// The rows of a store as a Qt model with the kind's columns, arranged for display: the rows that the filter
/// accepts, in the order of the sort descriptors, rows that compare equal in the order in which they were
/// added. Typed keys, no string comparison of numbers. A change of the store, the filter or the order costs a
/// constant number of model signals, however many rows it concerns; persistent indexes (selection, widgets in
/// cells) stay on their rows. Whoever is told of a change can make no other one before it is done.
class ArrangingModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Role {
        NameRole = Qt::UserRole, ///< the object's name, in every column
        ImageNameRole, ///< the name of a state image, or nothing
        ColourNameRole, ///< the name of a text colour, or nothing
    };

    /// Empty from the moment the store is destroyed.
    explicit ArrangingModel(RowStore &store, QObject *parent = nullptr);

    /// The store, which must be there, has them.
    const std::vector<Column> &columns() const { return m_store->kind().columns; }

    const QList<SortDescriptor> &sorts() const;
    /// The empty list, the order at first, shows rows as they were added. Columns that do not exist are left
    /// out.
    void setSorts(const QList<SortDescriptor> &sorts);
    QString filter() const;
    void setFilter(const QString &text);
    const RowFilter &rowFilter() const { return m_rowFilter; }
    /// The namespace of rows that do not tell theirs; for the filter.
    void setHomeNamespace(const QString &name);

    /// The row shown at `row`, which must exist.
    const Row &arrangedRow(int row) const;
    /// Where that row, which must exist, stands in the store.
    std::size_t positionOf(int row) const;
    /// The row of an object, also in a table that names no namespaces; -1 when there is none, or the filter
    /// hides it.
    int rowOf(const ObjectName &object) const;

    /// Whether rows come from listings alone: a column may be called otherwise then.
    void setListed(bool listed);

    void sort(int column, Qt::SortOrder order) override; ///< column -1 removes the sort order

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    // A "position" is one in the store, a "row" one of this model.
    using Positions = std::vector<int>;

    void storeReplaced(std::span<const std::size_t> positions);
    void storeAboutToRemove(std::span<const std::size_t> positions);
    void storeRemoved(std::span<const std::size_t> positions);
    void storeAppended(std::size_t firstPosition);
    void storeDestroyed();
    void timePassed();

    bool accepts(int position) const;
    void filterAgain();
    void hide(std::span<const int> positions);
    void show(Positions positions);
    void placeAgain(Positions positions);
    void announce(std::span<const int> positions);
    void reorder(Positions order);
    void updateRows();

    bool m_isListed = false;
    RowStore *m_store; ///< null once it is destroyed
    QList<SortDescriptor> m_sorts;
    QString m_filter;
    RowFilter m_rowFilter; ///< of that text
    QString m_homeNamespace;
    RowOrder m_rowOrder;
    Positions m_positions; ///< by row: the store's position
    std::vector<int> m_rows; ///< by position: the row, or -1
};

} // namespace tidewright
