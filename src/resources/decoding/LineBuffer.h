// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace tidewright {

/// Cuts bytes that arrive in pieces into lines. Not thread-safe.
class LineBuffer
{
public:
    /// Calls `handler` with each whole line, without its line end; at least 64 more bytes of memory behind it
    /// may be read.
    template <typename Handler> void take(QByteArrayView bytes, Handler handler)
    {
        constexpr qsizetype padding = 64;
        qsizetype searchFrom = m_bytes.size();
        m_bytes.reserve(m_bytes.size() + bytes.size() + padding);
        m_bytes.append(bytes);
        qsizetype begin = 0;
        for (qsizetype end = 0; (end = m_bytes.indexOf('\n', searchFrom)) >= 0;
             begin = searchFrom = end + 1) {
            handler(QByteArrayView(m_bytes).sliced(begin, end - begin));
        }
        m_bytes.remove(0, begin);
    }

    /// How long the line is whose end has not come.
    qsizetype size() const { return m_bytes.size(); }

private:
    QByteArray m_bytes;
};

} // namespace tidewright
