// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogView.h"

#include "pods/console/ConsoleStyle.h"
#include "resources/widgets/NamedImages.h"

#include <QAccessibleWidget>
#include <QEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <limits>
#include <mutex>

namespace tidewright {

namespace {

constexpr int rowsPerNotch = 3;
constexpr int smallestZoom = -5;
constexpr int largestZoom = 16;
constexpr qreal smallestFont = 4;
constexpr QChar continuationMark(0x21AA);

/// Tells screen readers the text on the screen.
class AccessibleLog : public QAccessibleWidget
{
public:
    explicit AccessibleLog(LogView *view)
        : QAccessibleWidget(view, QAccessible::Terminal)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? static_cast<LogView *>(widget())->visibleText()
                                          : QAccessibleWidget::text(kind);
    }
};

QAccessibleInterface *accessibleLog(const QString &, QObject *object)
{
    auto *view = qobject_cast<LogView *>(object);
    return view ? new AccessibleLog(view) : nullptr;
}

} // namespace

LogView::LogView(LogDocument &document, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_document(document)
    , m_lines(document)
    , m_usualFont(console_style::font())
{
    static std::once_flag installed;
    std::call_once(installed, [] { QAccessible::installFactory(accessibleLog); });
    setAccessibleName(tr("Logs"));
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    LogAppearance &appearance = m_lines.changeAppearance();
    appearance.background = namedColour(QStringLiteral("solarized-base03"));
    appearance.text = namedColour(QStringLiteral("solarized-base1"));
    appearance.measure(m_usualFont);
    m_dragTimer.setInterval(30);
    m_dragTimer.callOnTimeout(this, &LogView::scrollWhileDragging);
    connect(&document, &LogDocument::appended, this, &LogView::refresh);
    connect(&document, &LogDocument::replaced, this, &LogView::replaced);
    updateWrapWidth();
}

void LogView::setSourceColours(const QList<QColor> &colours)
{
    m_lines.changeAppearance().sources = colours;
    viewport()->update();
}

void LogView::setTextFont(const QFont &font)
{
    m_usualFont = font;
    zoom(0);
}

void LogView::setBackground(const QColor &color)
{
    m_lines.changeAppearance().background = color;
    viewport()->update();
}

void LogView::setHint(const QString &hint)
{
    if (hint != m_hint) {
        m_hint = hint;
        viewport()->update();
    }
}

void LogView::setHighlight(const LogPattern &pattern, qint64 current)
{
    m_lines.setPattern(pattern);
    m_current = current;
    viewport()->update();
}

void LogView::setWrapping(bool wrapping)
{
    if (wrapping != m_wrapping) {
        keepTopWhile([&] {
            m_wrapping = wrapping;
            updateWrapWidth();
        });
    }
}

void LogView::zoom(int direction)
{
    m_zoom = direction == 0 ? 0 : std::clamp(m_zoom + direction, smallestZoom, largestZoom);
    QFont font = m_usualFont;
    font.setPointSizeF(std::max(smallestFont, font.pointSizeF() + m_zoom));
    keepTopWhile([&] {
        m_lines.changeAppearance().measure(font);
        m_widest = 0;
        updateWrapWidth();
    });
}

void LogView::updateWrapWidth()
{
    m_lines.setWrapWidth(m_wrapping
            ? std::max<qreal>(viewport()->width() - margin - margin / 2, appearance().cellWidth * 8)
            : 0);
    updateNeededWidth();
    setHorizontalScrollBarPolicy(m_wrapping ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
}

void LogView::updateNeededWidth()
{
    m_lines.setNeededWidth(m_wrapping ? 0 : horizontalScrollBar()->value() + viewport()->width());
}

/// Rows are laid out anew; the character at the top stays there.
void LogView::keepTopWhile(const std::function<void()> &change)
{
    const int height = appearance().rowHeight;
    const qsizetype unit = lastLine() < 0 ? 0 : m_lines.layout(m_top.line).rowStart(m_top.pixel / height);
    const double part = double(m_top.pixel % height) / height;
    change();
    if (lastLine() >= 0) {
        const int row = m_wrapping ? m_lines.layout(m_top.line).rowOf(unit) : 0;
        m_top.pixel = static_cast<int>((row + part) * appearance().rowHeight);
    }
    refresh();
}

int LogView::pageHeight() const
{
    return std::max(
        appearance().rowHeight, (viewport()->height() / appearance().rowHeight - 1) * appearance().rowHeight);
}

LogView::Top LogView::bottom()
{
    const int height = viewport()->height();
    int filled = 0;
    for (qint64 line = lastLine(); line >= 0; --line) {
        filled += lineHeight(line);
        if (filled >= height) {
            return {line, filled - height};
        }
    }
    return {};
}

LogView::Top LogView::moved(Top from, qint64 pixels)
{
    if (!m_wrapping) {
        const qint64 height = appearance().rowHeight;
        const qint64 target = std::max<qint64>(0, from.line * height + from.pixel + pixels);
        return {target / height, static_cast<int>(target % height)};
    }
    qint64 pixel = from.pixel + pixels;
    while (pixel < 0 && from.line > 0) {
        pixel += lineHeight(--from.line);
    }
    while (from.line < lastLine() && pixel >= lineHeight(from.line)) {
        pixel -= lineHeight(from.line++);
    }
    return {from.line, static_cast<int>(std::max<qint64>(0, pixel))};
}

void LogView::setTop(Top top)
{
    m_wantedTop.reset();
    m_top = top;
    m_following = false; // unless this is the bottom
    refresh();
}

void LogView::scrollBy(qint64 pixels)
{
    setTop(moved(m_top, pixels));
}

void LogView::follow()
{
    m_wantedTop.reset();
    m_following = true;
    refresh();
}

qint64 LogView::topPosition()
{
    if (lastLine() < 0) {
        return 0;
    }
    const LogLineLayout &layout = m_lines.layout(m_top.line);
    const qsizetype unit = layout.rowStart(m_top.pixel / appearance().rowHeight);
    return m_document.shown().position(
        m_document.shown().lineStart(m_top.line) + layout.text().bytes[static_cast<std::size_t>(unit)]);
}

void LogView::replaced()
{
    m_lines.clear();
    m_widest = 0;
    if (m_document.size() == 0) {
        m_anchor = m_cursor = 0;
        m_following = true;
    }
    if (!m_following) {
        m_wantedTop = m_topLinePosition;
    }
    refresh();
}

/// Brings the top of the screen, the scroll bars and the picture into line with the document.
void LogView::refresh()
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
        const qint64 last
            = std::min(lastLine(), m_top.line + viewport()->height() / appearance().rowHeight + 1);
        for (qint64 line = m_top.line; line <= last; ++line) {
            m_widest = std::max(m_widest, m_lines.layout(line).width());
        }
    }
    m_topLinePosition = lastLine() < 0 ? 0 : shown.position(shown.lineStart(m_top.line));
    updateScrollBars(end);
    viewport()->update();
    if (m_following != m_toldFollowing) {
        m_toldFollowing = m_following;
        Q_EMIT followingChanged(m_following);
    }
}

void LogView::updateScrollBars(const Top &bottom)
{
    const auto bounded = [](qint64 value) {
        return static_cast<int>(std::min<qint64>(value, std::numeric_limits<int>::max()));
    };
    QScrollBar &vertical = *verticalScrollBar();
    QScrollBar &horizontal = *horizontalScrollBar();
    const QSignalBlocker quietVertical(vertical);
    const QSignalBlocker quietHorizontal(horizontal);
    vertical.setRange(0, bounded(bottom.line + (bottom.pixel > 0 ? 1 : 0)));
    vertical.setPageStep(std::max(1, viewport()->height() / appearance().rowHeight));
    vertical.setValue(m_following ? vertical.maximum() : bounded(m_top.line));
    const int room = viewport()->width() - margin - margin / 2;
    horizontal.setRange(0, m_wrapping ? 0 : std::max(0, static_cast<int>(m_widest) - room));
    horizontal.setPageStep(room);
    horizontal.setSingleStep(static_cast<int>(appearance().cellWidth * 4));
    setVerticalScrollBarPolicy(vertical.maximum() > 0 ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAsNeeded);
}

void LogView::scrollContentsBy(int dx, int dy)
{
    if (dx != 0) {
        updateNeededWidth();
        viewport()->update();
    }
    if (dy != 0) {
        const QScrollBar &bar = *verticalScrollBar();
        bar.value() >= bar.maximum() ? follow() : setTop({bar.value(), 0});
    }
}

void LogView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    keepTopWhile([this] { updateWrapWidth(); });
}

void LogView::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        if (event->angleDelta().y() != 0) {
            zoom(event->angleDelta().y() > 0 ? 1 : -1);
        }
        event->accept();
        return;
    }
    const QPoint pixels = event->hasPixelDelta() && !event->pixelDelta().isNull()
        ? event->pixelDelta()
        : event->angleDelta() * rowsPerNotch * appearance().rowHeight / 120;
    const bool sideways = event->modifiers() & Qt::ShiftModifier && pixels.x() == 0;
    if (const int dx = sideways ? pixels.y() : pixels.x()) {
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() - dx);
    }
    if (!sideways && pixels.y() != 0) {
        scrollBy(-pixels.y());
    }
    event->accept();
}

void LogView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::EnabledChange || event->type() == QEvent::ActivationChange) {
        viewport()->update();
    }
}

std::vector<LogHighlight> LogView::highlights(qint64 line, const LogLineLayout &layout)
{
    std::vector<LogHighlight> result;
    const LogProjection &shown = m_document.shown();
    const qint64 start = shown.lineStart(line);
    for (const LogRange &match : m_lines.matches(line)) {
        const bool isCurrent = shown.position(start + match.start) == m_current;
        result.push_back({layout.text().unitOf(match.start), layout.text().unitOf(match.end()),
            isCurrent ? QColor(0xFF, 0xD7, 0x5F) : QColor(0x6B, 0x5A, 0x10),
            isCurrent ? QColor(Qt::black) : QColor(Qt::white)});
    }
    if (hasSelection()) {
        const qint64 from = shown.place(std::min(m_anchor, m_cursor)) - start;
        const qint64 to = shown.place(std::max(m_anchor, m_cursor)) - start;
        if (from < layout.text().bytes.back() && to > 0) {
            result.push_back({layout.text().unitOf(from), layout.text().unitOf(to), QColor(0x26, 0x6F, 0xA8),
                QColor(Qt::white)});
        }
    }
    return result;
}

void LogView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    const QRect area = event->rect();
    painter.fillRect(area, appearance().background);
    if (lastLine() < 0) {
        painter.setPen(appearance().text);
        painter.drawText(
            viewport()->rect().adjusted(40, 0, -40, 0), Qt::AlignCenter | Qt::TextWordWrap, m_hint);
        return;
    }
    const int rowHeight = appearance().rowHeight;
    const int x = margin - horizontalScrollBar()->value();
    int y = -m_top.pixel;
    for (qint64 line = m_top.line; line <= lastLine() && y <= area.bottom(); ++line) {
        const LogLineLayout &layout = m_lines.layout(line);
        const int rows = m_wrapping ? layout.rows() : 1;
        const int firstRow = std::max(0, (area.top() - y) / rowHeight);
        const int lastRow = std::min(rows, (area.bottom() - y) / rowHeight + 1);
        if (firstRow < lastRow) {
            layout.draw(painter, QPointF(x, y), firstRow, lastRow, area.left(), area.right() + 1,
                highlights(line, layout));
            if (m_lines.continues(line)) {
                painter.setFont(appearance().font);
                painter.setPen(namedColour(QStringLiteral("solarized-base01")));
                painter.drawText(QPointF(1, y + appearance().ascent), QString(continuationMark));
            }
        }
        y += rows * rowHeight;
    }
}

QString LogView::visibleText()
{
    QStringList lines;
    int y = -m_top.pixel;
    for (qint64 line = m_top.line; line <= lastLine() && y < viewport()->height(); ++line) {
        lines.append(m_lines.layout(line).text().text);
        y += lineHeight(line);
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace tidewright
