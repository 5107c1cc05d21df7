// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <functional>

namespace tidewright {

/// Cuts a JSON list of objects, as the API server sends it (`{"kind": …, "metadata": {…}, "items": [{…},
/// …]}`), into its items while it arrives. No more than one item is kept. What is between them is not
/// checked, the items themselves are not either. Not thread-safe.
class ListItemSplitter
{
public:
    /// An item's bytes, with at least 64 more bytes of memory behind them that may be read.
    using Handler = std::function<void(QByteArrayView item)>;

    explicit ListItemSplitter(Handler handler);

    void take(QByteArrayView bytes);

    /// The outermost value has come to its end.
    bool isComplete() const { return m_isComplete; }
    /// What came before that, without the items: a JSON object once it is complete.
    const QByteArray &envelope() const { return m_envelope; }

private:
    qsizetype textEnd(qsizetype position);
    void open(qsizetype position);
    void close(qsizetype position);
    void keepOnlyWhatIsNeeded();

    const Handler m_handler;
    QByteArray m_bytes;
    QByteArray m_envelope;
    qsizetype m_kept = 0; // what is before belongs to items that were handed on, or to the envelope
    qsizetype m_textBegin = 0;
    int m_depth = 0;
    bool m_isInText = false;
    bool m_isItemsNext = false; // the latest text beside the items was their name
    bool m_isInItems = false;
    bool m_isComplete = false;
};

} // namespace tidewright
