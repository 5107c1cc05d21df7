// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/store/AscendingList.h"

#include <algorithm>

namespace tidewright {

namespace {

constexpr qint64 blockLength = 128; // numbers per checkpoint

} // namespace

void AscendingList::append(qint64 value)
{
    if (m_size % blockLength == 0) {
        m_checkpoints.push_back({value, static_cast<qint64>(m_differences.size())});
    } else {
        auto difference = static_cast<quint64>(value - m_last);
        for (; difference >= 0x80; difference >>= 7) {
            m_differences.push_back(static_cast<quint8>(difference | 0x80));
        }
        m_differences.push_back(static_cast<quint8>(difference));
    }
    m_last = value;
    ++m_size;
}

qint64 AscendingList::decode(qint64 &byte) const
{
    quint64 difference = 0;
    for (int shift = 0;; shift += 7) {
        const quint8 part = m_differences[static_cast<std::size_t>(byte++)];
        difference |= static_cast<quint64>(part & 0x7F) << shift;
        if (part < 0x80) {
            return static_cast<qint64>(difference);
        }
    }
}

qint64 AscendingList::upperBound(qint64 value) const
{
    const auto behind = std::upper_bound(m_checkpoints.cbegin(), m_checkpoints.cend(), value,
        [](qint64 wanted, const Checkpoint &checkpoint) { return wanted < checkpoint.value; });
    if (behind == m_checkpoints.cbegin()) {
        return 0;
    }
    Cursor cursor(*this, (behind - m_checkpoints.cbegin() - 1) * blockLength);
    while (cursor.index() < m_size && cursor.value() <= value) {
        cursor.next();
    }
    return cursor.index();
}

AscendingList::Cursor::Cursor(const AscendingList &list, qint64 index)
    : m_list(list)
    , m_index(index - index % blockLength)
    , m_byte(0)
    , m_value(0)
{
    if (index >= list.m_size) {
        m_index = list.m_size;
        return;
    }
    const Checkpoint &checkpoint = list.m_checkpoints[static_cast<std::size_t>(index / blockLength)];
    m_byte = checkpoint.byte;
    m_value = checkpoint.value;
    while (m_index < index) {
        next();
    }
}

void AscendingList::Cursor::next()
{
    if (++m_index >= m_list.m_size) {
        return;
    }
    if (m_index % blockLength == 0) {
        const Checkpoint &checkpoint = m_list.m_checkpoints[static_cast<std::size_t>(m_index / blockLength)];
        m_value = checkpoint.value;
        m_byte = checkpoint.byte;
    } else {
        m_value += m_list.decode(m_byte);
    }
}

} // namespace tidewright
