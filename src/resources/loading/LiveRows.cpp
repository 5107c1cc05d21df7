// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/loading/LiveRows.h"

#include "platform/text/Timestamp.h"
#include "platform/threads/MainQueue.h"
#include "resources/decoding/RowOfLine.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QSet>

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

constexpr qint64 sliceMilliseconds = 3; // leaves most of a frame to input and painting
constexpr std::size_t chunkRows = 500;

QString nameOf(const QByteArray &key)
{
    return QString::fromUtf8(key.sliced(key.indexOf('/') + 1));
}

QString nameSpaceOf(const QByteArray &key)
{
    return QString::fromUtf8(key.first(std::max<qsizetype>(key.indexOf('/'), 0)));
}

} // namespace

LiveRows::LiveRows(RowStore &store, QObject *parent)
    : QObject(parent)
    , m_store(store)
{
}

void LiveRows::take(const LiveBatch &batch)
{
    m_batches.push_back(batch);
    if (!m_isScheduled) {
        apply();
    }
}

void LiveRows::release()
{
    m_isHeld = false;
    if (!m_isScheduled) {
        apply();
    }
}

void LiveRows::clear()
{
    m_batches.clear();
    m_upsertsDone = 0;
    m_skipped = 0;
}

QString LiveRows::problem() const
{
    return m_skipped == 0 ? QString()
                          : tr("%1 objects could not be read.\nThe first of them: %2")
                                .arg(QString::number(m_skipped), m_firstSkipped);
}

void LiveRows::apply()
{
    m_isScheduled = false;
    if (m_isHeld || m_batches.empty()) {
        return;
    }
    const QPointer self(this);
    QElapsedTimer elapsed;
    elapsed.start();
    bool isComplete = false;
    while (!m_batches.empty() && elapsed.elapsed() < sliceMilliseconds) {
        if (!applySome(chunkRows)) {
            const LiveBatch &done = m_batches.front();
            isComplete = isComplete || done.stateComplete;
            if (done.stateBegun) {
                m_skipped = 0;
            }
            if (m_skipped == 0) {
                m_firstSkipped = done.firstSkippedLine;
            }
            m_skipped += done.skippedLines;
            m_batches.pop_front();
            m_upsertsDone = 0;
        }
    }
    m_isScheduled = !m_batches.empty();
    Q_EMIT rowsChanged();
    if (self && isComplete) {
        Q_EMIT stateComplete();
    }
    if (self && m_isScheduled) {
        postToMain(self, [](LiveRows &rows) { rows.apply(); });
    }
}

bool LiveRows::applySome(std::size_t count)
{
    LiveBatch &batch = m_batches.front();
    if (!batch.removals.empty()) {
        remove(std::exchange(batch.removals, {}));
        return true;
    }
    if (batch.isWhole) {
        removeOthers(batch);
        batch.isWhole = false;
        return true;
    }
    const auto upserts = std::span<const LiveUpsert>(batch.upserts).subspan(m_upsertsDone);
    if (upserts.empty()) {
        return false;
    }
    const auto some = upserts.first(std::min(count, upserts.size()));
    put(some);
    m_upsertsDone += some.size();
    return true;
}

std::optional<std::size_t> LiveRows::find(const QByteArray &key) const
{
    const QString name = nameOf(key);
    const auto found = m_store.find(nameSpaceOf(key), name);
    return found ? found : m_store.find({}, name); // a table of one namespace does not name it
}

void LiveRows::put(std::span<const LiveUpsert> upserts)
{
    std::vector<std::pair<std::size_t, Row>> changed;
    Rows added;
    for (const LiveUpsert &upsert : upserts) {
        const auto position = m_store.find(upsert.nameSpace, nameOf(upsert.key));
        if (!position) {
            added.push_back(upsert.row
                    ? upsert.row
                    : newRow(m_store.kind(), upsert.nameSpace, upsert.line, currentTime()));
            continue;
        }
        const Row &before = m_store.rows()[*position];
        Row row = upsert.row ? upsert.row : changedRow(m_store.kind(), before, upsert.line);
        if (row != before) {
            changed.emplace_back(*position, std::move(row));
        }
    }
    const auto byPosition = [](const auto &a, const auto &b) { return a.first < b.first; };
    std::sort(changed.begin(), changed.end(), byPosition);
    m_store.replaceRows(changed);
    m_store.appendRows(added);
}

void LiveRows::remove(std::span<const QByteArray> keys)
{
    std::vector<std::size_t> positions;
    for (const QByteArray &key : keys) {
        if (const auto position = find(key)) {
            positions.push_back(*position);
        }
    }
    std::sort(positions.begin(), positions.end());
    m_store.removeRowsAt(positions);
}

/// The batch names all objects there are: the other rows came from elsewhere and are gone by now.
void LiveRows::removeOthers(const LiveBatch &batch)
{
    QSet<std::size_t> known;
    for (const LiveUpsert &upsert : batch.upserts) {
        if (const auto position = m_store.find(upsert.nameSpace, nameOf(upsert.key))) {
            known.insert(*position);
        }
    }
    std::vector<std::size_t> others;
    for (std::size_t position = 0; position < m_store.rows().size(); ++position) {
        if (!known.contains(position)) {
            others.push_back(position);
        }
    }
    m_store.removeRowsAt(others);
}

} // namespace tidewright
