// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogScroll.h"

#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>
#include <limits>

namespace tidewright {

LogScroll::LogScroll(QAbstractScrollArea &area, const LogDocument &document, LogLineCache &lines)
    : m_area(area)
    , m_document(document)
    , m_lines(lines)
{
    updateWrapWidth();
}

QPoint LogScroll::origin() const
{
    return {margin + m_gutter - m_area.horizontalScrollBar()->value(), -m_top.pixel};
}

int LogScroll::pageHeight() const
{
    const int row = appearance().rowHeight;
    return std::max(row, (height() / row - 1) * row);
}

qint64 LogScroll::topPosition()
{
    if (m_lines.last() < 0) {
        return 0;
    }
    const int row = m_top.pixel / appearance().rowHeight;
    return m_lines.positionOf({m_top.line, row, m_lines.layout(m_top.line).rowStart(row)});
}

LogHit LogScroll::hitAt(QPoint point)
{
    const int rowHeight = appearance().rowHeight;
    if (point.y() < 0) {
        const int row = m_top.pixel / rowHeight;
        return {m_top.line, row, m_lines.layout(m_top.line).rowStart(row)};
    }
    const Top at = moved(m_top, std::min(point.y(), height() - 1));
    const qint64 line = std::min(at.line, m_lines.last());
    if (line < at.line || (line == m_lines.last() && at.pixel >= m_lines.height(line))) {
        return {line, m_lines.rows(line) - 1, m_lines.layout(line).text().text.size()}; // below the text
    }
    const int row = at.pixel / rowHeight;
    return {line, row, m_lines.layout(line).unitAt(row, point.x() - origin().x())};
}

void LogScroll::setWrapping(bool wrapping)
{
    if (wrapping != m_wrapping) {
        keepTopWhile([&] { m_wrapping = wrapping; });
    }
}

void LogScroll::setGutter(int width)
{
    if (width != m_gutter) {
        keepTopWhile([&] { m_gutter = width; });
    }
}

void LogScroll::updateWrapWidth()
{
    m_lines.setWrapWidth(m_wrapping
            ? std::max<qreal>(
                m_area.viewport()->width() - m_gutter - margin - margin / 2, appearance().cellWidth * 8)
            : 0);
    updateNeededWidth();
    m_area.setHorizontalScrollBarPolicy(m_wrapping ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
}

void LogScroll::updateNeededWidth()
{
    m_lines.setNeededWidth(
        m_wrapping ? 0 : m_area.horizontalScrollBar()->value() + m_area.viewport()->width());
}

void LogScroll::keepTopWhile(const std::function<void()> &change)
{
    const int rowHeight = appearance().rowHeight;
    const qreal cellWidth = appearance().cellWidth;
    const bool hasText = m_lines.last() >= 0;
    const qsizetype unit = hasText ? m_lines.layout(m_top.line).rowStart(m_top.pixel / rowHeight) : 0;
    const double part = double(m_top.pixel % rowHeight) / rowHeight;
    change();
    if (appearance().cellWidth != cellWidth) {
        m_widest = 0;
    }
    updateWrapWidth();
    if (hasText) {
        const int row = m_wrapping ? m_lines.layout(m_top.line).rowOf(unit) : 0;
        m_top.pixel = static_cast<int>((row + part) * appearance().rowHeight);
    }
    refresh();
}

LogScroll::Top LogScroll::bottom()
{
    const int height = this->height();
    int filled = 0;
    for (qint64 line = m_lines.last(); line >= 0; --line) {
        filled += m_lines.height(line);
        if (filled >= height) {
            return {line, filled - height};
        }
    }
    return {};
}

LogScroll::Top LogScroll::moved(Top from, qint64 pixels)
{
    if (!m_wrapping) {
        const qint64 height = appearance().rowHeight;
        const qint64 target = std::max<qint64>(0, from.line * height + from.pixel + pixels);
        return {target / height, static_cast<int>(target % height)};
    }
    qint64 pixel = from.pixel + pixels;
    while (pixel < 0 && from.line > 0) {
        pixel += m_lines.height(--from.line);
    }
    while (from.line < m_lines.last() && pixel >= m_lines.height(from.line)) {
        pixel -= m_lines.height(from.line++);
    }
    return {from.line, static_cast<int>(std::max<qint64>(0, pixel))};
}

void LogScroll::scrollTo(Top top)
{
    m_wantedTop.reset();
    m_top = top;
    m_following = false; // unless this is the bottom
    refresh();
}

void LogScroll::follow()
{
    m_wantedTop.reset();
    m_following = true;
    refresh();
}

void LogScroll::replaced()
{
    m_widest = 0;
    if (m_document.size() == 0) {
        m_following = true;
    }
    if (!m_following) {
        m_wantedTop = m_topLinePosition;
    }
    refresh();
}

void LogScroll::refresh()
{
    const LogProjection &shown = m_document.shown();
    if (m_wantedTop && !m_following) {
        const qint64 place = shown.place(*m_wantedTop);
        m_top.line = shown.lineCount() > 0 ? shown.lineAt(place) : 0;
        if (m_document.examined() > *m_wantedTop || m_document.examined() >= m_document.size()) {
            m_wantedTop.reset();
        }
    }
    const Top end = bottom();
    if (m_following || m_top > end) {
        m_top = end;
    }
    m_following = m_following || (m_top == end && !m_wantedTop);
    if (!m_wrapping) {
        const qint64 last = std::min(m_lines.last(), m_top.line + height() / appearance().rowHeight + 1);
        for (qint64 line = m_top.line; line <= last; ++line) {
            m_widest = std::max(m_widest, m_lines.layout(line).width());
        }
    }
    m_topLinePosition = m_lines.last() < 0 ? 0 : shown.position(shown.lineStart(m_top.line));
    updateBars(end);
    m_area.viewport()->update();
    if (m_following != m_toldFollowing) {
        m_toldFollowing = m_following;
        Q_EMIT followingChanged(m_following);
    }
}

void LogScroll::updateBars(const Top &bottom)
{
    const auto bounded = [](qint64 value) {
        return static_cast<int>(std::min<qint64>(value, std::numeric_limits<int>::max()));
    };
    QScrollBar &vertical = *m_area.verticalScrollBar();
    QScrollBar &horizontal = *m_area.horizontalScrollBar();
    const QSignalBlocker quietVertical(vertical);
    const QSignalBlocker quietHorizontal(horizontal);
    vertical.setRange(0, bounded(bottom.line + (bottom.pixel > 0 ? 1 : 0)));
    vertical.setPageStep(std::max(1, height() / appearance().rowHeight));
    vertical.setValue(m_following ? vertical.maximum() : bounded(m_top.line));
    const int room = m_area.viewport()->width() - m_gutter - margin - margin / 2;
    horizontal.setRange(0, m_wrapping ? 0 : std::max(0, static_cast<int>(m_widest) - room));
    horizontal.setPageStep(room);
    horizontal.setSingleStep(static_cast<int>(appearance().cellWidth * 4));
    m_area.setVerticalScrollBarPolicy(vertical.maximum() > 0 ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAsNeeded);
}

void LogScroll::barsMoved(int dx, int dy)
{
    if (dx != 0) {
        updateNeededWidth();
        m_area.viewport()->update();
    }
    if (dy != 0) {
        const QScrollBar &bar = *m_area.verticalScrollBar();
        bar.value() >= bar.maximum() ? follow() : scrollTo({bar.value(), 0});
    }
}

void LogScroll::reveal(qint64 position)
{
    if (m_lines.last() < 0) {
        return;
    }
    const LogHit hit = m_lines.hitOf(position);
    const int rowHeight = appearance().rowHeight;
    const Top row{hit.line, m_wrapping ? hit.row * rowHeight : 0};
    const Top screenEnd = moved(m_top, std::max(0, height() - rowHeight));
    if (row < m_top || row > screenEnd) {
        // A third down the screen: what led to it can be seen too.
        scrollTo(moved(row, -height() / 3));
    } else if (m_following && row <= moved(screenEnd, -rowHeight)) {
        // Off the end, or arriving text would carry it away.
        scrollBy(-rowHeight);
    }
    if (!m_wrapping) {
        revealSideways(hit);
    }
}

void LogScroll::revealSideways(const LogHit &hit)
{
    const qreal x = m_lines.layout(hit.line).xOf(hit.unit);
    QScrollBar &bar = *m_area.horizontalScrollBar();
    const qreal room = m_area.viewport()->width() - m_gutter - 3.0 * margin;
    if (x < bar.value() || x > bar.value() + room) {
        bar.setValue(static_cast<int>(x - room / 3));
    }
}

bool LogScroll::takeKey(const QKeyEvent &event)
{
    const bool wholeText = event.modifiers() & Qt::ControlModifier || m_wrapping;
    QScrollBar &sideways = *m_area.horizontalScrollBar();
    switch (event.key()) {
    case Qt::Key_Up:
        scrollBy(-appearance().rowHeight);
        return true;
    case Qt::Key_Down:
        scrollBy(appearance().rowHeight);
        return true;
    case Qt::Key_PageUp:
        scrollBy(-pageHeight());
        return true;
    case Qt::Key_PageDown:
    case Qt::Key_Space:
        scrollBy(pageHeight());
        return true;
    case Qt::Key_Left:
        sideways.triggerAction(QScrollBar::SliderSingleStepSub);
        return true;
    case Qt::Key_Right:
        sideways.triggerAction(QScrollBar::SliderSingleStepAdd);
        return true;
    case Qt::Key_Home:
        wholeText ? scrollTo({}) : sideways.setValue(0);
        return true;
    case Qt::Key_End:
        wholeText ? follow() : sideways.setValue(sideways.maximum());
        return true;
    default:
        return false;
    }
}

} // namespace tidewright
