// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogSelection.h"

#include "platform/threads/MainQueue.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QStyleHints>

#include <algorithm>

namespace tidewright {

namespace {

constexpr qint64 copiedAtOnce = qint64(1) << 20;
constexpr qint64 copyLimit = qint64(256) << 20;

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c.isMark() || c.isSurrogate() || c == u'_' || c == u'-' || c == u'.';
}

} // namespace

LogSelection::LogSelection(const LogDocument &document, LogLineCache &lines, LogScroll &scroll)
    : m_document(document)
    , m_lines(lines)
    , m_scroll(scroll)
{
    m_dragTimer.setInterval(30);
    m_dragTimer.callOnTimeout(this, &LogSelection::scrollWhileDragging);
}

LogRange LogSelection::range() const
{
    const qint64 from = std::min(m_anchor, m_cursor);
    return {from, std::max(m_anchor, m_cursor) - from};
}

qint64 LogSelection::shownSize() const
{
    const LogRange all = range();
    return m_document.shown().place(all.end()) - m_document.shown().place(all.start);
}

void LogSelection::select(qint64 anchor, qint64 cursor)
{
    if (anchor != m_anchor || cursor != m_cursor) {
        m_anchor = anchor;
        m_cursor = cursor;
        Q_EMIT changed();
    }
}

void LogSelection::copy()
{
    const qint64 size = shownSize();
    if (size == 0) {
        return;
    }
    if (size > copyLimit) {
        Q_EMIT noticed(tr("%1 are too much for the clipboard; save the log to a file instead.")
                           .arg(QLocale().formattedDataSize(size)));
    } else if (size <= copiedAtOnce) {
        QGuiApplication::clipboard()->setText(plainText(m_document.bytes().read(shownRanges())));
    } else {
        logQueue().post(
            [self = QPointer<LogSelection>(this), bytes = m_document.bytes(), ranges = shownRanges()] {
                postToMain(self, [text = plainText(bytes.read(ranges))](LogSelection &selection) {
                    QGuiApplication::clipboard()->setText(text);
                    Q_EMIT selection.noticed(tr("Copied."));
                });
            });
    }
}

LogRange LogSelection::unitAround(const LogHit &hit, Unit unit)
{
    const LogProjection &shown = m_document.shown();
    if (unit == Unit::Line) {
        const qint64 start = shown.position(shown.lineStart(hit.line));
        return {start, shown.position(shown.lineEnd(hit.line)) - start};
    }
    LogHit from = hit;
    LogHit to = hit;
    if (unit == Unit::Word) {
        const QString &text = m_lines.layout(hit.line).text().text;
        while (from.unit > 0 && isWordCharacter(text[from.unit - 1])) {
            --from.unit;
        }
        while (to.unit < text.size() && isWordCharacter(text[to.unit])) {
            ++to.unit;
        }
    }
    const qint64 start = m_lines.positionOf(from);
    return {start, m_lines.positionOf(to) - start};
}

void LogSelection::start(QPoint point, Unit unit, bool extend)
{
    m_unit = unit;
    m_dragging = true;
    if (extend) {
        m_pressed = {m_anchor, 0};
        extendTo(point);
        return;
    }
    m_pressed = unitAround(m_scroll.hitAt(point), unit);
    select(m_pressed.start, m_pressed.end());
}

void LogSelection::extendTo(QPoint point)
{
    const LogRange around = unitAround(m_scroll.hitAt(point), m_unit);
    if (around.start < m_pressed.start) {
        select(m_pressed.end(), around.start);
    } else {
        select(m_pressed.start, std::max(around.end(), m_pressed.end()));
    }
}

void LogSelection::press(QPoint point, bool extend)
{
    if (m_lines.last() < 0) {
        return;
    }
    const bool isThird = m_sinceDoubleClick.isValid()
        && m_sinceDoubleClick.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval();
    m_sinceDoubleClick.invalidate();
    start(point, isThird ? Unit::Line : Unit::Character, extend);
}

void LogSelection::doubleClick(QPoint point)
{
    if (m_lines.last() >= 0) {
        m_sinceDoubleClick.start();
        start(point, Unit::Word, false);
    }
}

void LogSelection::drag(QPoint point)
{
    if (!m_dragging || m_lines.last() < 0) {
        return;
    }
    m_dragPoint = point;
    extendTo(point);
    const bool outside = point.y() < 0 || point.y() >= m_scroll.height();
    if (outside && !m_dragTimer.isActive()) {
        m_dragTimer.start();
    } else if (!outside) {
        m_dragTimer.stop();
    }
}

void LogSelection::scrollWhileDragging()
{
    const int y = m_dragPoint.y();
    m_scroll.scrollBy(y < 0 ? y : y - m_scroll.height() + 1);
    if (m_lines.last() >= 0) {
        extendTo(m_dragPoint);
    }
}

void LogSelection::stopDragging()
{
    m_dragging = false;
    m_dragTimer.stop();
}

void LogSelection::release()
{
    if (!m_dragging) {
        return;
    }
    stopDragging();
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection() && !isEmpty() && shownSize() <= copiedAtOnce) {
        clipboard->setText(plainText(m_document.bytes().read(shownRanges())), QClipboard::Selection);
    }
}

LogHit LogSelection::hitRowsAway(LogHit from, qint64 rows)
{
    const qreal x = m_lines.layout(from.line).xOf(from.unit);
    qint64 row = from.row + rows;
    while (row < 0 && from.line > 0) {
        row += m_lines.rows(--from.line);
    }
    while (from.line < m_lines.last() && row >= m_lines.rows(from.line)) {
        row -= m_lines.rows(from.line++);
    }
    const LogLineLayout &layout = m_lines.layout(from.line);
    if (row < 0) {
        return {0, 0, 0};
    }
    if (row >= m_lines.rows(from.line)) {
        return {from.line, m_lines.rows(from.line) - 1, layout.text().text.size()};
    }
    const int target = static_cast<int>(row);
    return {from.line, target, layout.unitAt(target, x)};
}

LogHit LogSelection::hitAfter(LogHit from, int key, bool toEnd)
{
    const QString &text = m_lines.layout(from.line).text().text;
    const qint64 page = m_scroll.pageHeight() / m_lines.appearance().rowHeight;
    const auto endOf = [this](qint64 line) {
        return LogHit{line, 0, m_lines.layout(line).text().text.size()};
    };
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        return hitRowsAway(from, key == Qt::Key_Up ? -1 : 1);
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return hitRowsAway(from, key == Qt::Key_PageUp ? -page : page);
    case Qt::Key_Home:
        return toEnd ? LogHit{} : LogHit{from.line, 0, 0};
    case Qt::Key_End:
        return endOf(toEnd ? m_lines.last() : from.line);
    case Qt::Key_Left:
        if (from.unit == 0) {
            return from.line == 0 ? from : endOf(from.line - 1);
        }
        from.unit -= from.unit > 1 && text[from.unit - 1].isLowSurrogate() ? 2 : 1;
        return from;
    default:
        if (from.unit >= text.size()) {
            return from.line == m_lines.last() ? from : LogHit{from.line + 1, 0, 0};
        }
        from.unit += text[from.unit].isHighSurrogate() ? 2 : 1;
        return from;
    }
}

bool LogSelection::takeKey(const QKeyEvent &event)
{
    constexpr std::array keys{Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home,
        Qt::Key_End, Qt::Key_Left, Qt::Key_Right};
    if (m_lines.last() < 0 || std::find(keys.cbegin(), keys.cend(), event.key()) == keys.cend()) {
        return false;
    }
    if (isEmpty()) {
        const qint64 begin = m_scroll.topPosition();
        select(begin, begin);
    }
    const LogHit target
        = hitAfter(m_lines.hitOf(m_cursor), event.key(), event.modifiers() & Qt::ControlModifier);
    select(m_anchor, m_lines.positionOf(target));
    m_scroll.reveal(m_cursor);
    return true;
}

} // namespace tidewright
