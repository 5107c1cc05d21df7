// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/store/LogProjection.h"
#include "pods/logs/store/SourceRuns.h"
#include "pods/logs/text/LogScanner.h"

#include <QObject>
#include <QSet>
#include <QTimer>

namespace tidewright {

/// The text of a log window: all bytes in a store, where lines begin, which source each byte came from, and
/// what of it is shown. What arrives is gathered and becomes part of the text once a frame. Hiding sources
/// and filtering happen in the background; what is shown then grows until it has caught up. Main thread.
class LogDocument : public QObject
{
    Q_OBJECT
public:
    /// The folders are those that the store may put its file in.
    explicit LogDocument(const QStringList &folders, QObject *parent = nullptr, LogDisk disk = {});
    ~LogDocument() override { letGo(); }

    /// Adds a piece of what a source (0 to 65535) has written at the end: any bytes, as a rule UTF-8.
    void append(int source, QByteArrayView bytes);
    /// Makes what has arrived part of the text now instead of with the next frame.
    void commit();
    /// No more text will come: the last line is whole.
    void finish();
    /// After `finish`: more text will come all the same.
    void resume() { m_finished = false; }
    /// Lets all text go, also from the disk.
    void clear();

    /// What the view shows. Another object after `replaced()`.
    const LogProjection &shown() const { return m_narrowed ? *m_narrowed : *m_whole; }
    LogBytes bytes() const { return m_store->bytes(); }
    std::vector<SourceRuns::Run> runs(const LogRange &range) const { return m_runs->runs(range); }
    /// The bytes of a part of the stored text that are shown.
    std::vector<LogRange> shownRanges(const LogRange &range) const;

    /// Of the whole text, in bytes and in lines (of which a long one counts once).
    qint64 size() const { return m_store->size(); }
    qint64 lines() const { return m_splitter.lines(); }
    /// The same of what is shown.
    qint64 shownLines() const { return m_narrowed ? m_narrowedSplitter.lines() : lines(); }
    /// How much of the text is known to be shown or not to be.
    qint64 examined() const { return m_building ? 0 : m_narrowed ? m_scanner.place() : size(); }

    void setSourceHidden(int source, bool hidden);
    bool isSourceHidden(int source) const { return m_hidden.contains(source); }
    /// An empty filter shows all, an invalid one changes nothing.
    void setFilter(const LogFilter &filter);
    const LogFilter &filter() const { return m_filter; }
    /// Lines that are left out because the filter is too complicated for them.
    qint64 cutOffLines() const { return m_narrowed ? m_cutOff : 0; }
    /// Whether anything is left out of what is shown.
    bool isNarrowed() const { return !m_hidden.isEmpty() || !m_filter.isEmpty(); }

    /// Why the text is not on the disk; empty while it is.
    QString problem() const { return m_store->problem(); }
    /// The disk does not keep up: no more text should come for now.
    bool isBehind() const { return m_store->isBehind(); }
    /// No more text can be kept.
    bool isFull() const { return m_store->isFull(); }

Q_SIGNALS:
    /// What is shown has grown, or something about it has changed; at most about once a frame.
    void appended();
    /// Something else is shown now.
    void replaced();

private:
    void reset();
    void letGo();
    void frame();
    void settle();
    void narrow();
    void scanOn();
    void scanned(const LogRange &part, LogScan::Lines lines);
    void showNarrowed();
    std::vector<LogRange> visibleRanges(const LogRange &range) const;

    const QStringList m_folders;
    const LogDisk m_disk;
    std::unique_ptr<LogStore> m_store;
    std::unique_ptr<SourceRuns> m_runs;
    std::unique_ptr<LogProjection> m_whole;
    LineSplitter m_splitter;
    std::vector<qint64> m_starts; ///< kept for its memory

    QByteArray m_arrived; ///< what is not in the store yet
    std::vector<SourceRuns::Run> m_arrivedRuns; ///< positions within `m_arrived`; only the starts count
    QTimer m_frame;
    QTimer m_settling; ///< while text is on its way to the disk

    QSet<int> m_hidden;
    LogFilter m_filter;
    std::unique_ptr<LogProjection> m_narrowed;
    std::unique_ptr<LogProjection> m_building; ///< not shown before its first part is known
    LineSplitter m_narrowedSplitter;
    LogScan::Surroundings m_surroundings;
    qint64 m_cutOff = 0;
    bool m_finished = false;
    LogScanner m_scanner;
};

} // namespace tidewright
