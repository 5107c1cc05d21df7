// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/decoding/LiveRun.h"
#include "resources/kinds/ResourceKind.h"
#include "resources/live/LiveBatch.h"

#include <QHash>
#include <QSet>

#include <optional>

namespace tidewright {

/// What a live stream knows of each object, and what of it has not been handed on yet. Of the objects only
/// the lines are kept, shared with the rows. Not thread-safe.
class LiveObjects
{
public:
    /// `tellsNamespaces`: the rows say in which namespace they are.
    LiveObjects(std::shared_ptr<const ResourceKind> kind, bool tellsNamespaces);

    /// The whole state follows.
    void beginState();
    /// It is here: what it did not hold is gone.
    void completeState();
    bool isComplete() const { return m_isComplete; }

    /// The change's `uid` tells an object from an earlier one of its name; empty when nobody knows. `moment`:
    /// RowOfLine.h; the rows of one state are all given that of its first one.
    void put(const LiveChange &change, double moment);
    /// An object that is not known, or is another one by now, is left alone.
    void remove(const QByteArray &key, QByteArrayView uid);
    /// An object that cannot be shown; one of that name goes.
    void skip(const QByteArray &key, QByteArrayView line);

    /// Reports once more all there is, once the state is complete, for a table whose rows have come from
    /// elsewhere meanwhile.
    void repeat();

    bool hasChanges() const { return m_hasChanges; }
    /// Of a kind whose listing is sorted the objects of a state come together, once it is complete.
    LiveBatch takeChanges();

private:
    struct Object
    {
        QByteArray line;
        std::size_t uid = 0; ///< a hash of it; 0: none
        quint32 state = 0; ///< the one that held it last
        bool isShown = false; ///< the table has a row under its key
        qsizetype waitingIn = -1; ///< its place in m_upserts; -1: nothing waits
    };

    LiveUpsert &announce(const QByteArray &key, Object &object, bool isNew, double moment);
    void sort(std::vector<LiveUpsert> &upserts) const;
    void repeatIfAsked();
    void forget(QHash<QByteArray, Object>::iterator object);

    const std::shared_ptr<const ResourceKind> m_kind;
    const bool m_tellsNamespaces;
    const bool m_isSorted; // a listing of the kind is
    QHash<QByteArray, Object> m_objects;
    quint32 m_state = 0;
    bool m_isComplete = false;
    std::optional<double> m_stateMoment;
    bool m_isRepeating = false;
    bool m_hasChanges = false;
    LiveBatch m_changes; // upserts without a key have been taken back
    QSet<QByteArray> m_removals;
};

} // namespace tidewright
