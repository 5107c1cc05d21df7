// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/ResourceKind.h"

#include <QAbstractTableModel>

#include <span>

namespace tidewright {

/// The rows of one table in the order in which they were added (the table's `tableItems`), as a Qt model with the kind's
/// columns. Main thread only; the snapshot it hands out is immutable and may go anywhere.
class ResourceTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Role {
        SortRole = Qt::UserRole, ///< double or QByteArray, see SortKey
        NameRole,                ///< the object's name, in every column
    };

    explicit ResourceTableModel(ResourceKind kind, QObject *parent = nullptr);

    const ResourceKind &kind() const { return m_kind; }
    const Rows &tableItems() const { return *m_rows; }

    /// The rows as they are now; later changes do not touch it.
    std::shared_ptr<const Rows> snapshot() const { return m_rows; }
    /// Changes whenever rows are added, removed or replaced: positions found against a snapshot hold only while it is
    /// what it was then.
    quint64 generation() const { return m_generation; }

    void replaceRows(std::span<const std::pair<std::size_t, Row>> changed);
    void removeRowsAt(std::span<const std::size_t> ascendingPositions);
    void appendRows(std::span<const Row> rows);
    void clear();
    /// Ages move on by themselves: says that the texts of these columns may have changed.
    void refreshColumn(const QString &identifier);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    ResourceKind m_kind;
    std::shared_ptr<Rows> m_rows;
    quint64 m_generation = 0;
};

} // namespace tidewright
