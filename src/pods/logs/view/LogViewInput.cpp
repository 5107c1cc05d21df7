// SPDX-License-Identifier: GPL-3.0-or-later
// How a log view answers the mouse and the keyboard: scrolling, selecting, copying.
#include "pods/logs/view/LogView.h"

#include "platform/threads/MainQueue.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QScrollBar>
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

LogView::Hit LogView::hitAt(QPoint point)
{
    const int rowHeight = appearance().rowHeight;
    const Top top = moved(m_top, std::clamp(point.y(), 0, viewport()->height() - 1));
    const qint64 line = std::min(top.line, lastLine());
    if (point.y() < 0 || line < top.line || (line == lastLine() && top.pixel >= lineHeight(line))) {
        // Above or below the text.
        return point.y() < 0 ? Hit{m_top.line, m_top.pixel / rowHeight,
                   m_lines.layout(m_top.line).rowStart(m_top.pixel / rowHeight)}
                             : Hit{line, m_lines.rows(line) - 1, m_lines.layout(line).text().text.size()};
    }
    const int row = top.pixel / rowHeight;
    const qreal x = point.x() - margin + horizontalScrollBar()->value();
    return {line, row, m_lines.layout(line).unitAt(row, x)};
}

LogView::Hit LogView::hitOf(qint64 position)
{
    const LogProjection &shown = m_document.shown();
    const qint64 place = shown.place(position);
    const qint64 line = shown.lineAt(place);
    const LogLineLayout &layout = m_lines.layout(line);
    const qsizetype unit = layout.text().unitOf(place - shown.lineStart(line));
    return {line, layout.rowOf(unit), unit};
}

qint64 LogView::positionOf(const Hit &hit)
{
    const LogLineText &text = m_lines.layout(hit.line).text();
    const qsizetype unit = std::clamp<qsizetype>(hit.unit, 0, text.text.size());
    return m_document.shown().position(
        m_document.shown().lineStart(hit.line) + text.bytes[static_cast<std::size_t>(unit)]);
}

LogRange LogView::unitAround(const Hit &hit, Unit unit)
{
    const LogProjection &shown = m_document.shown();
    qint64 start = positionOf(hit);
    qint64 end = start;
    if (unit == Unit::Line) {
        start = shown.position(shown.lineStart(hit.line));
        end = shown.position(shown.lineEnd(hit.line));
    } else if (unit == Unit::Word) {
        const QString &text = m_lines.layout(hit.line).text().text;
        Hit from = hit;
        Hit to = hit;
        while (from.unit > 0 && isWordCharacter(text[from.unit - 1])) {
            --from.unit;
        }
        while (to.unit < text.size() && isWordCharacter(text[to.unit])) {
            ++to.unit;
        }
        start = positionOf(from);
        end = positionOf(to);
    }
    return {start, end - start};
}

void LogView::select(qint64 anchor, qint64 cursor)
{
    if (anchor != m_anchor || cursor != m_cursor) {
        m_anchor = anchor;
        m_cursor = cursor;
        viewport()->update();
        Q_EMIT selectionChanged();
    }
}

void LogView::selectAll()
{
    select(0, m_document.size());
}

std::vector<LogRange> LogView::selectedRanges() const
{
    const qint64 from = std::min(m_anchor, m_cursor);
    return m_document.shownRanges({from, std::max(m_anchor, m_cursor) - from});
}

qint64 LogView::selectedSize() const
{
    const LogProjection &shown = m_document.shown();
    return shown.place(std::max(m_anchor, m_cursor)) - shown.place(std::min(m_anchor, m_cursor));
}

void LogView::copy()
{
    const qint64 size = selectedSize();
    if (size == 0) {
        return;
    }
    if (size > copyLimit) {
        Q_EMIT noticed(tr("%1 are too much for the clipboard; save the log to a file instead.")
                           .arg(QLocale().formattedDataSize(size)));
    } else if (size <= copiedAtOnce) {
        QGuiApplication::clipboard()->setText(plainText(m_document.bytes().read(selectedRanges())));
    } else {
        logQueue().post(
            [self = QPointer<LogView>(this), bytes = m_document.bytes(), ranges = selectedRanges()] {
                postToMain(self, [text = plainText(bytes.read(ranges))](LogView &view) {
                    QGuiApplication::clipboard()->setText(text);
                    Q_EMIT view.noticed(tr("Copied."));
                });
            });
    }
}

void LogView::startSelection(QPoint point, Unit unit, bool extend)
{
    m_unit = unit;
    const LogRange around = unitAround(hitAt(point), unit);
    m_dragging = true;
    if (extend) {
        m_pressed = {m_anchor, 0};
        dragTo(point);
        return;
    }
    m_pressed = around;
    select(around.start, around.end());
}

void LogView::dragTo(QPoint point)
{
    const LogRange around = unitAround(hitAt(point), m_unit);
    if (around.start < m_pressed.start) {
        select(m_pressed.end(), around.start);
    } else {
        select(m_pressed.start, std::max(around.end(), m_pressed.end()));
    }
}

void LogView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || lastLine() < 0) {
        return;
    }
    const bool isThird = m_sinceDoubleClick.isValid()
        && m_sinceDoubleClick.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval();
    m_sinceDoubleClick.invalidate();
    startSelection(event->position().toPoint(), isThird ? Unit::Line : Unit::Character,
        event->modifiers() & Qt::ShiftModifier);
}

void LogView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && lastLine() >= 0) {
        m_sinceDoubleClick.start();
        startSelection(event->position().toPoint(), Unit::Word, false);
    }
}

void LogView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging || lastLine() < 0) {
        return;
    }
    m_dragPoint = event->position().toPoint();
    dragTo(m_dragPoint);
    const bool outside = m_dragPoint.y() < 0 || m_dragPoint.y() >= viewport()->height();
    if (outside && !m_dragTimer.isActive()) {
        m_dragTimer.start();
    } else if (!outside) {
        m_dragTimer.stop();
    }
}

void LogView::scrollWhileDragging()
{
    const int beyond = m_dragPoint.y() < 0 ? m_dragPoint.y() : m_dragPoint.y() - viewport()->height() + 1;
    scrollBy(beyond);
    if (lastLine() >= 0) {
        dragTo(m_dragPoint);
    }
}

void LogView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_dragging) {
        return;
    }
    m_dragging = false;
    m_dragTimer.stop();
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection() && hasSelection() && selectedSize() <= copiedAtOnce) {
        clipboard->setText(plainText(m_document.bytes().read(selectedRanges())), QClipboard::Selection);
    }
}

void LogView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void LogView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    m_dragging = false;
    m_dragTimer.stop();
}

void LogView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy)) {
        copy();
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (event->matches(QKeySequence::ZoomIn) || event->matches(QKeySequence::ZoomOut)) {
        zoom(event->matches(QKeySequence::ZoomIn) ? 1 : -1);
    } else if (!(event->modifiers() & Qt::ShiftModifier) || !moveCursor(event)) {
        scrollByKey(event);
    }
}

void LogView::scrollByKey(QKeyEvent *event)
{
    const bool control = event->modifiers() & Qt::ControlModifier;
    QScrollBar &sideways = *horizontalScrollBar();
    switch (event->key()) {
    case Qt::Key_Up:
        return scrollBy(-appearance().rowHeight);
    case Qt::Key_Down:
        return scrollBy(appearance().rowHeight);
    case Qt::Key_PageUp:
        return scrollBy(-pageHeight());
    case Qt::Key_PageDown:
    case Qt::Key_Space:
        return scrollBy(pageHeight());
    case Qt::Key_Left:
    case Qt::Key_Right:
        return sideways.triggerAction(
            event->key() == Qt::Key_Left ? QScrollBar::SliderSingleStepSub : QScrollBar::SliderSingleStepAdd);
    case Qt::Key_Home:
        return control || m_wrapping ? setTop({}) : sideways.setValue(0);
    case Qt::Key_End:
        return control || m_wrapping ? follow() : sideways.setValue(sideways.maximum());
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

LogView::Hit LogView::hitRowsAway(Hit from, qint64 rows)
{
    const qreal x = m_lines.layout(from.line).xOf(from.unit);
    qint64 row = from.row + rows;
    while (row < 0 && from.line > 0) {
        row += m_lines.rows(--from.line);
    }
    while (from.line < lastLine() && row >= m_lines.rows(from.line)) {
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

LogView::Hit LogView::hitAfter(Hit from, int key, bool toEnd)
{
    const QString &text = m_lines.layout(from.line).text().text;
    const qint64 page = pageHeight() / appearance().rowHeight;
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        return hitRowsAway(from, key == Qt::Key_Up ? -1 : 1);
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return hitRowsAway(from, key == Qt::Key_PageUp ? -page : page);
    case Qt::Key_Home:
        return toEnd ? Hit{} : Hit{from.line, 0, 0};
    case Qt::Key_End: {
        const qint64 line = toEnd ? lastLine() : from.line;
        return {line, 0, m_lines.layout(line).text().text.size()};
    }
    case Qt::Key_Left:
        if (from.unit == 0) {
            return from.line == 0 ? from
                                  : Hit{from.line - 1, 0, m_lines.layout(from.line - 1).text().text.size()};
        }
        from.unit -= from.unit > 1 && text[from.unit - 1].isLowSurrogate() ? 2 : 1;
        return from;
    default:
        if (from.unit >= text.size()) {
            return from.line == lastLine() ? from : Hit{from.line + 1, 0, 0};
        }
        from.unit += text[from.unit].isHighSurrogate() ? 2 : 1;
        return from;
    }
}

/// Moves the free end of the selection; one that has not been begun begins at the top of the screen.
bool LogView::moveCursor(QKeyEvent *event)
{
    constexpr std::array keys{Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home,
        Qt::Key_End, Qt::Key_Left, Qt::Key_Right};
    if (lastLine() < 0 || std::find(keys.cbegin(), keys.cend(), event->key()) == keys.cend()) {
        return false;
    }
    if (!hasSelection()) {
        const qint64 begin = topPosition();
        select(begin, begin);
    }
    const Hit target = hitAfter(hitOf(m_cursor), event->key(), event->modifiers() & Qt::ControlModifier);
    select(m_anchor, positionOf(target));
    reveal({m_cursor, 0});
    return true;
}

void LogView::reveal(const LogRange &range)
{
    if (lastLine() < 0) {
        return;
    }
    const Hit hit = hitOf(range.start);
    const int rowHeight = appearance().rowHeight;
    const Top row{hit.line, m_wrapping ? hit.row * rowHeight : 0};
    const Top screenEnd = moved(m_top, std::max(0, viewport()->height() - rowHeight));
    if (row < m_top || row > screenEnd) {
        // A third down the screen: what led to it can be seen too.
        setTop(moved(row, -viewport()->height() / 3));
    } else if (m_following && row <= moved(screenEnd, -rowHeight)) {
        // Off the end, or arriving text would carry it away.
        setTop(moved(m_top, -rowHeight));
    }
    if (m_wrapping) {
        return;
    }
    const qreal x = m_lines.layout(hit.line).xOf(hit.unit);
    QScrollBar &sideways = *horizontalScrollBar();
    const qreal room = viewport()->width() - 3.0 * margin;
    if (x < sideways.value() || x > sideways.value() + room) {
        sideways.setValue(static_cast<int>(x - room / 3));
    }
}

} // namespace tidewright
