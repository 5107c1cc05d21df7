// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogDocument.h"

#include <algorithm>

namespace tidewright {

namespace {

constexpr int frameMilliseconds = 16;
constexpr int settlingMilliseconds = 200;
constexpr qsizetype mostGathered = 256 * 1024;

void appendMerged(std::vector<LogRange> &ranges, const LogRange &range)
{
    if (!ranges.empty() && ranges.back().end() == range.start) {
        ranges.back().length += range.length;
    } else {
        ranges.push_back(range);
    }
}

} // namespace

LogDocument::LogDocument(const QStringList &folders, QObject *parent, LogDisk disk)
    : QObject(parent)
    , m_folders(folders)
    , m_disk(std::move(disk))
{
    m_frame.setSingleShot(true);
    m_frame.setTimerType(Qt::PreciseTimer);
    m_frame.setInterval(frameMilliseconds);
    m_frame.callOnTimeout(this, &LogDocument::frame);
    m_settling.setSingleShot(true);
    m_settling.setInterval(settlingMilliseconds);
    m_settling.callOnTimeout(this, &LogDocument::settle);
    reset();
}

/// Unmapping and closing a file of gigabytes takes its time: not here.
void LogDocument::letGo()
{
    if (m_store && m_store->size() > LogScan::usualSpan) {
        logQueue().post([store = std::shared_ptr<LogStore>(std::move(m_store))] {});
    }
}

void LogDocument::reset()
{
    letGo();
    m_store = std::make_unique<LogStore>(m_folders, m_disk);
    m_runs = std::make_unique<SourceRuns>();
    m_whole = std::make_unique<LogProjection>();
    m_splitter = LineSplitter();
    m_arrived.resize(0); // keeps the memory
    m_arrivedRuns.clear();
}

void LogDocument::append(int source, QByteArrayView bytes)
{
    if (m_arrivedRuns.empty() || m_arrivedRuns.back().source != source) {
        m_arrivedRuns.push_back({{m_arrived.size(), 0}, source});
    }
    m_arrived.append(bytes);
    if (m_arrived.size() >= mostGathered) {
        commit();
    }
    if (!m_frame.isActive()) {
        m_frame.start();
    }
}

void LogDocument::commit()
{
    if (m_arrived.isEmpty()) {
        return;
    }
    const qint64 before = m_store->size();
    const qint64 kept = m_store->append(m_arrived);
    for (const SourceRuns::Run &run : m_arrivedRuns) {
        if (run.range.start < kept) {
            m_runs->append(before + run.range.start, run.source);
        }
    }
    m_starts.clear();
    m_splitter.feed(QByteArrayView(m_arrived).first(kept), m_starts);
    m_whole->appendRange({before, kept});
    m_whole->appendLines(m_starts);
    m_arrived.resize(0); // keeps the memory
    m_arrivedRuns.clear();
    if (!m_settling.isActive()) {
        m_settling.start();
    }
}

void LogDocument::settle()
{
    if (m_store->settle()) {
        m_settling.start();
    }
    Q_EMIT appended(); // there may be something about it to tell
}

void LogDocument::frame()
{
    commit();
    scanOn();
    Q_EMIT appended();
}

void LogDocument::finish()
{
    commit(); // or a scan that comes back before the next frame takes the text so far for all of it
    m_finished = true;
    m_scanner.lookAgain();
    m_frame.start();
}

void LogDocument::clear()
{
    reset();
    m_narrowed.reset();
    m_building.reset();
    narrow();
}

std::vector<LogRange> LogDocument::visibleRanges(const LogRange &range) const
{
    if (m_hidden.isEmpty()) {
        return {range};
    }
    std::vector<LogRange> ranges;
    for (const SourceRuns::Run &run : m_runs->runs(range)) {
        if (!m_hidden.contains(run.source)) {
            appendMerged(ranges, run.range);
        }
    }
    return ranges;
}

std::vector<LogRange> LogDocument::shownRanges(const LogRange &range) const
{
    return shown().ranges(shown().place(range.start), shown().place(range.end()));
}

void LogDocument::setSourceHidden(int source, bool hidden)
{
    if (hidden != m_hidden.contains(source)) {
        hidden ? (void)m_hidden.insert(source) : (void)m_hidden.remove(source);
        narrow();
    }
}

void LogDocument::setFilter(const LogFilter &filter)
{
    if (filter.isValid() && filter != m_filter) {
        m_filter = filter;
        narrow();
    }
}

void LogDocument::narrow()
{
    m_scanner.restart();
    m_narrowedSplitter = LineSplitter();
    m_surroundings = {};
    m_cutOff = 0;
    m_building.reset();
    if (!isNarrowed()) {
        m_narrowed.reset();
        Q_EMIT replaced();
        return;
    }
    m_building = std::make_unique<LogProjection>();
    scanOn();
}

void LogDocument::showNarrowed()
{
    m_narrowed = std::move(m_building);
    Q_EMIT replaced();
}

void LogDocument::scanOn()
{
    if (!m_building && !m_narrowed) {
        return;
    }
    const std::optional<LogRange> part = m_scanner.next(size());
    if (!part) {
        if (m_building && !m_scanner.isScanning()) {
            showNarrowed();
        }
        return;
    }
    const bool isEnd = (m_finished && part->end() == size()) || part->length >= LogScan::longestSpan;
    LogScan scan{bytes(), visibleRanges(*part), {}, isEnd, m_scanner.cancelled()};
    m_scanner.run([scan = std::move(scan), filter = m_filter, splitter = m_narrowedSplitter,
                      around = m_surroundings] { return scan.lines(filter, splitter, around); },
        [this, part = *part](LogScan::Lines lines) { scanned(part, std::move(lines)); });
}

void LogDocument::scanned(const LogRange &part, LogScan::Lines lines)
{
    m_scanner.advance(part, lines.unfinished.value_or(part.end()));
    if (m_finished) {
        m_scanner.lookAgain(); // the line that this scan has left is a whole one now
    }
    LogProjection &target = m_building ? *m_building : *m_narrowed;
    for (const LogRange &range : lines.ranges) {
        target.appendRange(range);
    }
    target.appendLines(lines.starts);
    m_narrowedSplitter = std::move(lines.splitter);
    m_surroundings = std::move(lines.surroundings);
    m_cutOff += lines.cutOff;
    if (m_building) {
        showNarrowed();
    }
    Q_EMIT appended();
    scanOn();
}

} // namespace tidewright
