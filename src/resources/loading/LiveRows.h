// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/listing/RowStore.h"
#include "resources/live/LiveBatch.h"

#include <QObject>

#include <deque>

namespace tidewright {

/// Puts what a live stream reports into a store, in slices that fit a frame. Main thread only.
class LiveRows : public QObject
{
    Q_OBJECT
public:
    /// The store must outlive it.
    explicit LiveRows(RowStore &store, QObject *parent = nullptr);

    void take(const LiveBatch &batch);
    /// Nothing is put into the store from `hold` to `release`: a listing is being merged, with positions that
    /// must not move.
    void hold() { m_isHeld = true; }
    void release();
    /// Forgets what waits.
    void clear();
    /// What is told of the objects since the last state began of which no row could be made; empty when there
    /// are none.
    QString problem() const;

Q_SIGNALS:
    void rowsChanged();
    /// The rows of a whole state are in the store.
    void stateComplete();

private:
    void apply();
    /// Up to so many changes of the batch in front; false when there are none left in it.
    bool applySome(std::size_t count);
    void put(std::span<const LiveUpsert> upserts);
    void remove(std::span<const QByteArray> keys);
    void removeOthers(const LiveBatch &batch);
    std::optional<std::size_t> find(const QByteArray &key) const;

    RowStore &m_store;
    std::deque<LiveBatch> m_batches;
    std::size_t m_upsertsDone = 0; ///< of the batch in front
    std::size_t m_skipped = 0; ///< objects without a row
    QString m_firstSkipped;
    bool m_isHeld = false;
    bool m_isScheduled = false;
};

} // namespace tidewright
