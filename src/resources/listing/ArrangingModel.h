// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/listing/ResourceTableModel.h"
#include "resources/listing/RowOrder.h"

#include <QAbstractProxyModel>
#include <QStringMatcher>

namespace tidewright {

/// Arranges a ResourceTableModel for display: the rows whose name contains the filter text (without regard to
/// case), in the order of the sort descriptors, rows that compare equal in the order in which they were
/// added. Typed keys, no string comparison of numbers. A change of the source, the filter or the order costs
/// a constant number of model signals, however many rows it concerns; persistent indexes (selection, widgets
/// in cells) stay on their rows. Whoever is told of a change can make no other one before it is done.
class ArrangingModel : public QAbstractProxyModel
{
    Q_OBJECT
public:
    /// Empty from the moment the source is destroyed.
    explicit ArrangingModel(ResourceTableModel &source, QObject *parent = nullptr);

    const QList<SortDescriptor> &sorts() const;
    /// The empty list, the order at first, shows rows as they were added. Columns that do not exist are left
    /// out.
    void setSorts(const QList<SortDescriptor> &sorts);
    QString filter() const;
    void setFilter(const QString &text);

    /// The row shown at `row`, which must exist.
    const Row &arrangedRow(int row) const;

    void sort(int column, Qt::SortOrder order) override; ///< column -1 removes the sort order

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QModelIndex mapToSource(const QModelIndex &proxyIndex) const override;
    QModelIndex mapFromSource(const QModelIndex &sourceIndex) const override;

private:
    // A "position" is a row of the source, a "row" one of this model.
    using Positions = std::vector<int>;

    void sourceReplaced(std::span<const std::size_t> positions);
    void sourceAboutToRemove(std::span<const std::size_t> positions);
    void sourceRemoved(std::span<const std::size_t> positions);
    void sourceAppended(std::size_t firstPosition);
    void sourceDestroyed();

    bool accepts(int position) const;
    void hide(std::span<const int> positions);
    void show(Positions positions);
    void placeAgain(Positions positions);
    void announce(std::span<const int> positions);
    void reorder(Positions order);
    void updateRows();

    ResourceTableModel *m_source; ///< null once it is destroyed
    QList<SortDescriptor> m_sorts;
    QString m_filter;
    QStringMatcher m_matcher; ///< of the filter, for folded names
    RowOrder m_rowOrder;
    Positions m_positions; ///< by row: the source's position
    std::vector<int> m_rows; ///< by position: the row, or -1
};

} // namespace tidewright
