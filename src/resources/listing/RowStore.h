// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

#include <QObject>

#include <atomic>
#include <span>
#include <unordered_map>
#include <utility>

namespace tidewright {

/// The rows of one table in the order in which they were added (the table's `tableItems`). A "position" is an
/// index into them. Main thread only; the snapshot it hands out is immutable and may go anywhere.
class RowStore : public QObject
{
    Q_OBJECT
public:
    /// A change of the rows or of their arrangement, while it lives. False when it came in the middle of
    /// another one, from somebody who was told of that: then nothing may change, or views would lose count.
    class Change
    {
    public:
        explicit Change(RowStore &store)
            : m_store(store)
            , m_first(!std::exchange(store.m_changing, true))
        {
        }
        ~Change() { m_store.m_changing = !m_first; }
        Change(const Change &) = delete;
        Change &operator=(const Change &) = delete;
        explicit operator bool() const { return m_first; }

    private:
        RowStore &m_store;
        const bool m_first;
    };

    explicit RowStore(ResourceKind kind, QObject *parent = nullptr);
    ~RowStore() override;

    const ResourceKind &kind() const { return m_kind; }
    const Rows &rows() const { return m_shared->rows; }

    /// The rows as they are now; later changes do not touch it.
    std::shared_ptr<const Rows> snapshot() const;
    /// Changes whenever rows are added, removed or replaced, and with every `clear`, also of an empty table:
    /// positions found against a snapshot hold only while it is what it was then.
    quint64 generation() const { return m_generation; }
    /// Where the first row of that name stands, in that namespace (empty in a table that shows one). Next to
    /// no time, but for the first call, and the first one after a removal from rows of which two have one
    /// name.
    std::optional<std::size_t> find(const QString &nameSpace, const QString &name) const;

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

Q_SIGNALS:
    // One signal a change, however many rows it concerns.
    void rowsReplaced(std::span<const std::size_t> ascendingPositions);
    void rowsAboutToBeRemovedAt(std::span<const std::size_t> ascendingPositions); ///< nothing has changed yet
    void rowsRemovedAt(std::span<const std::size_t> ascendingPositions); ///< positions from before
    void rowsAppended(std::size_t firstPosition);
    void timePassed();

private:
    /// Rows and the number of snapshots of them that are still held somewhere. Its own count, because the
    /// release of a snapshot must happen before the next write, which shared_ptr::use_count does not promise.
    struct Shared
    {
        Rows rows;
        std::atomic<int> leases = 0;
    };

    Rows &writableRows();
    void buildIndex() const;
    void addToIndex(std::size_t firstPosition) const;

    ResourceKind m_kind;
    std::shared_ptr<Shared> m_shared = std::make_shared<Shared>();
    quint64 m_generation = 0;
    bool m_changing = false;
    // Rows are numbered in the order in which they come. So the numbers ascend whatever goes, and the index
    // need not be told of the rows that move up behind a removal.
    mutable std::unordered_map<QString, quint64> m_index; ///< by namespace/name, as of m_indexed: the number
    mutable std::vector<quint64> m_numbers; ///< by position, as of m_indexed
    mutable std::optional<quint64> m_indexed; ///< the generation that both are of
};

} // namespace tidewright
