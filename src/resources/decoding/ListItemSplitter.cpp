// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/decoding/ListItemSplitter.h"

#include <array>
#include <cstring>
#include <utility>

namespace tidewright {

namespace {

constexpr qsizetype padding = 64;
constexpr int listDepth = 1; // inside the outermost braces
constexpr int itemDepth = 2; // inside the list of items

/// Which bytes outside of texts mean anything here.
constexpr std::array<bool, 256> structural = [] {
    std::array<bool, 256> table{};
    for (const unsigned char c : {'{', '}', '[', ']', '"'}) {
        table[c] = true;
    }
    return table;
}();

} // namespace

ListItemSplitter::ListItemSplitter(Handler handler)
    : m_handler(std::move(handler))
{
}

void ListItemSplitter::take(QByteArrayView bytes)
{
    qsizetype position = m_bytes.size();
    m_bytes.reserve(m_bytes.size() + bytes.size() + padding);
    m_bytes.append(bytes);
    for (; position < m_bytes.size() && !m_isComplete; ++position) {
        const char c = m_bytes.at(position);
        if (m_isInText) {
            position = textEnd(position);
        } else if (!structural[static_cast<unsigned char>(c)]) {
            continue;
        } else if (c == '"') {
            m_isInText = true;
            m_textBegin = position + 1;
        } else if (c == '{' || c == '[') {
            open(position);
        } else {
            close(position);
        }
    }
    keepOnlyWhatIsNeeded();
}

/// Where the text ends that `position` is in: at its quote, or behind all that has come.
qsizetype ListItemSplitter::textEnd(qsizetype position)
{
    const char *const data = m_bytes.constData();
    const void *const found
        = std::memchr(data + position, '"', static_cast<std::size_t>(m_bytes.size() - position));
    if (!found) {
        return m_bytes.size();
    }
    const qsizetype quote = static_cast<const char *>(found) - data;
    qsizetype backslashes = 0;
    while (quote - backslashes > m_textBegin && data[quote - backslashes - 1] == '\\') {
        ++backslashes;
    }
    if (backslashes % 2 == 0) {
        m_isInText = false;
        if (m_depth == listDepth) {
            m_isItemsNext = QByteArrayView(data + m_textBegin, quote - m_textBegin) == "items";
        }
    }
    return quote;
}

void ListItemSplitter::open(qsizetype position)
{
    if (++m_depth == itemDepth && m_isItemsNext && m_bytes.at(position) == '[') {
        m_isInItems = true;
        m_envelope += QByteArrayView(m_bytes).sliced(m_kept, position + 1 - m_kept);
    } else if (m_isInItems && m_depth == itemDepth + 1) {
        m_kept = position;
    }
}

void ListItemSplitter::close(qsizetype position)
{
    --m_depth;
    if (m_isInItems && m_depth == itemDepth) {
        m_handler(QByteArrayView(m_bytes).sliced(m_kept, position + 1 - m_kept));
        m_kept = position + 1;
    } else if (m_isInItems && m_depth == listDepth) {
        m_isInItems = false;
        m_kept = position;
    } else if (m_depth <= 0) {
        m_isComplete = true;
        m_envelope += QByteArrayView(m_bytes).sliced(m_kept, position + 1 - m_kept);
        m_kept = position + 1;
    }
}

void ListItemSplitter::keepOnlyWhatIsNeeded()
{
    if (m_isComplete || (m_isInItems && m_depth == itemDepth)) {
        m_kept = m_bytes.size(); // commas and blanks
    }
    m_bytes.remove(0, m_kept);
    m_textBegin -= m_kept;
    m_kept = 0;
}

} // namespace tidewright
