// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

#include <QAbstractTableModel>

#include <atomic>
#include <span>
#include <utility>

namespace tidewright {

/// The rows of one table in the order in which they were added (the table's `tableItems`), as a Qt model with
/// the kind's columns. Main thread only; the snapshot it hands out is immutable and may go anywhere.
class ResourceTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Role {
        SortRole = Qt::UserRole, ///< double or QByteArray, see SortKey
        NameRole, ///< the object's name, in every column
        ImageNameRole, ///< the name of a state image, or nothing
        ColourNameRole, ///< the name of a text colour, or nothing
    };

    /// A change of the rows or of their arrangement, while it lives. False when it came in the middle of
    /// another one, from somebody who was told of that: then nothing may change, or views would lose count.
    class Change
    {
    public:
        explicit Change(ResourceTableModel &model)
            : m_model(model)
            , m_first(!std::exchange(model.m_changing, true))
        {
        }
        ~Change() { m_model.m_changing = !m_first; }
        Change(const Change &) = delete;
        Change &operator=(const Change &) = delete;
        explicit operator bool() const { return m_first; }

    private:
        ResourceTableModel &m_model;
        const bool m_first;
    };

    explicit ResourceTableModel(ResourceKind kind, QObject *parent = nullptr);
    ~ResourceTableModel() override;

    const ResourceKind &kind() const { return m_kind; }
    const Rows &tableItems() const { return m_store->rows; }

    /// The rows as they are now; later changes do not touch it.
    std::shared_ptr<const Rows> snapshot() const;
    /// Changes whenever rows are added, removed or replaced, and with every `clear`, also of an empty table:
    /// positions found against a snapshot hold only while it is what it was then.
    quint64 generation() const { return m_generation; }

    // Each of these does nothing in the middle of another change.

    /// Positions ascending; those beyond the rows are passed over. A new row takes the old one's
    /// `startTimeInterval`.
    void replaceRows(std::span<const std::pair<std::size_t, Row>> changed);
    /// Removes nothing when the largest position is beyond the rows.
    void removeRowsAt(std::span<const std::size_t> ascendingPositions);
    void appendRows(std::span<const Row> rows);
    void clear();
    /// Ages move on by themselves: says that the texts of columns that show times may have changed.
    void timePasses();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    // For the arranging model, which needs whole changes where the signals of a Qt model tell them row range
    // by row range.
    void rowsReplaced(std::span<const std::size_t> ascendingPositions);
    void rowsAboutToBeRemovedAt(std::span<const std::size_t> ascendingPositions); ///< nothing has changed yet
    void rowsRemovedAt(std::span<const std::size_t> ascendingPositions); ///< positions from before
    void rowsAppended(std::size_t firstPosition);
    void columnRefreshed(int column);

private:
    /// Rows and the number of snapshots of them that are still held somewhere. Its own count, because the
    /// release of a snapshot must happen before the next write, which shared_ptr::use_count does not promise.
    struct Store
    {
        Rows rows;
        std::atomic<int> leases = 0;
    };

    Rows &writableRows();
    void moveToTail(std::span<const std::size_t> ascendingPositions);

    ResourceKind m_kind;
    std::shared_ptr<Store> m_store = std::make_shared<Store>();
    quint64 m_generation = 0;
    bool m_changing = false;
};

} // namespace tidewright
