// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/LiveObjects.h"

#include "resources/decoding/ObjectLines.h"
#include "resources/decoding/RowOfLine.h"

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

constexpr qsizetype keptLineLength = 200; // UTF-16 units

std::size_t hashOf(QByteArrayView uid)
{
    return uid.isEmpty() ? 0 : qHash(uid) | 1;
}

bool areDifferent(std::size_t uid, std::size_t other)
{
    return uid != 0 && other != 0 && uid != other;
}

} // namespace

LiveObjects::LiveObjects(std::shared_ptr<const ResourceKind> kind, bool tellsNamespaces)
    : m_kind(std::move(kind))
    , m_tellsNamespaces(tellsNamespaces)
    , m_isSorted(!sortedBy(*m_kind).isEmpty())
{
}

void LiveObjects::beginState()
{
    ++m_state;
    m_isComplete = false;
    m_stateMoment.reset();
    m_hasChanges = true;
    m_changes.stateBegun = true;
    m_changes.stateComplete = false;
}

void LiveObjects::completeState()
{
    std::vector<QByteArray> gone;
    for (auto object = m_objects.cbegin(); object != m_objects.cend(); ++object) {
        if (object->state != m_state) {
            gone.push_back(object.key());
        }
    }
    for (const QByteArray &key : gone) {
        forget(m_objects.find(key));
    }
    m_isComplete = true;
    m_hasChanges = true;
    m_changes.stateComplete = true;
    repeatIfAsked();
}

void LiveObjects::repeat()
{
    m_isRepeating = true;
    repeatIfAsked();
}

void LiveObjects::repeatIfAsked()
{
    if (!m_isComplete || !std::exchange(m_isRepeating, false)) {
        return;
    }
    for (auto object = m_objects.begin(); object != m_objects.end(); ++object) {
        announce(object.key(), *object, false, 0);
    }
    m_changes.isWhole = true;
    m_hasChanges = true;
}

void LiveObjects::put(const LiveChange &change, double moment)
{
    const auto &[kind, key, uid, line, order] = change;
    const std::size_t uidHash = hashOf(uid);
    auto found = m_objects.find(key);
    bool isNew = found == m_objects.end();
    if (!isNew) {
        isNew = areDifferent(found->uid, uidHash);
        found->state = m_state;
        if (!isNew && found->line == line) {
            return;
        }
    }
    if (!lineFits(*m_kind, line)) {
        skip(key, line);
        return;
    }
    if (found == m_objects.end()) {
        found = m_objects.insert(key, {});
        found->state = m_state;
        found->isShown = m_removals.remove(key);
    }
    found->line = line;
    found->uid = uidHash;
    if (!m_isComplete) {
        moment = m_stateMoment.value_or(moment);
        m_stateMoment = moment;
    }
    announce(key, *found, isNew, moment).order = order;
}

LiveUpsert &LiveObjects::announce(const QByteArray &key, Object &object, bool isNew, double moment)
{
    if (object.waitingIn < 0) {
        object.waitingIn = static_cast<qsizetype>(m_changes.upserts.size());
        const auto nameSpace
            = m_tellsNamespaces ? key.first(std::max<qsizetype>(key.indexOf('/'), 0)) : QByteArray();
        m_changes.upserts.push_back({key, QString::fromUtf8(nameSpace), {}, {}, nullptr});
    }
    LiveUpsert &upsert = m_changes.upserts[static_cast<std::size_t>(object.waitingIn)];
    upsert.line = object.line;
    if (isNew || upsert.row) {
        upsert.row = newRow(*m_kind, upsert.nameSpace, object.line, moment);
    }
    m_hasChanges = true;
    return upsert;
}

void LiveObjects::remove(const QByteArray &key, QByteArrayView uid)
{
    const auto found = m_objects.find(key);
    if (found != m_objects.end() && !areDifferent(found->uid, hashOf(uid))) {
        forget(found);
    }
}

void LiveObjects::skip(const QByteArray &key, QByteArrayView line)
{
    if (m_changes.skippedLines++ == 0) {
        m_changes.firstSkippedLine
            = QString::fromUtf8(line.first(std::min(line.size(), 4 * keptLineLength))).left(keptLineLength);
    }
    if (m_kind->lineSkipped) {
        m_kind->lineSkipped(line, static_cast<std::size_t>(listedPart(line).count('\t')) + 1);
    }
    m_hasChanges = true;
    if (const auto found = m_objects.find(key); found != m_objects.end()) {
        forget(found);
    }
}

void LiveObjects::forget(QHash<QByteArray, Object>::iterator object)
{
    if (object->waitingIn >= 0) {
        m_changes.upserts[static_cast<std::size_t>(object->waitingIn)].key.clear();
    }
    if (object->isShown) {
        m_removals.insert(object.key());
    }
    m_objects.erase(object);
    m_hasChanges = true;
}

/// As a listing of the kind has them.
void LiveObjects::sort(std::vector<LiveUpsert> &upserts) const
{
    std::stable_sort(upserts.begin(), upserts.end(),
        [](const LiveUpsert &a, const LiveUpsert &b) { return a.order < b.order; });
    if (m_kind->lastLineFirst) {
        std::reverse(upserts.begin(), upserts.end());
    }
}

LiveBatch LiveObjects::takeChanges()
{
    LiveBatch batch = std::exchange(m_changes, {});
    if (m_isSorted && !m_isComplete) {
        m_changes.upserts.swap(batch.upserts); // which are known by their places
    }
    std::erase_if(batch.upserts, [](const LiveUpsert &upsert) { return upsert.key.isEmpty(); });
    if (m_isSorted && batch.stateComplete) {
        sort(batch.upserts);
    }
    for (const LiveUpsert &upsert : batch.upserts) {
        Object &object = m_objects[upsert.key];
        object.waitingIn = -1;
        object.isShown = true;
    }
    batch.removals.assign(m_removals.cbegin(), m_removals.cend());
    m_removals.clear();
    m_hasChanges = false;
    return batch;
}

} // namespace tidewright
