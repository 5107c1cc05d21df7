// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogView.h"

#include "platform/text/DisplayText.h"
#include "pods/console/ConsoleStyle.h"
#include "resources/widgets/NamedImages.h"

#include <QAccessibleWidget>
#include <QEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <mutex>

namespace tidewright {

namespace {

constexpr int rowsPerNotch = 3;
constexpr int smallestZoom = -5;
constexpr int largestZoom = 16;
constexpr qreal smallestFont = 4;
constexpr qsizetype mostNameCells = 28;
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

LogAppearance usualAppearance(const QFont &font)
{
    LogAppearance appearance;
    appearance.background = namedColour(QStringLiteral("solarized-base03"));
    appearance.text = namedColour(QStringLiteral("solarized-base1"));
    appearance.measure(font);
    return appearance;
}

QAccessibleInterface *accessibleLog(const QString &, QObject *object)
{
    auto *view = qobject_cast<LogView *>(object);
    return view ? new AccessibleLog(view) : nullptr;
}

} // namespace

LogView::LogView(LogDocument &document, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_document(document)
    , m_usualFont(console_style::font())
    , m_lines(document, usualAppearance(m_usualFont))
    , m_scroll(*this, document, m_lines)
    , m_selection(document, m_lines, m_scroll)
{
    static std::once_flag installed;
    std::call_once(installed, [] { QAccessible::installFactory(accessibleLog); });
    setAccessibleName(tr("Logs"));
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    connect(&document, &LogDocument::appended, &m_scroll, &LogScroll::refresh);
    connect(&document, &LogDocument::replaced, this, &LogView::replaced);
    connect(&m_selection, &LogSelection::changed, viewport(), qOverload<>(&QWidget::update));
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

void LogView::setSourceNames(const QStringList &names)
{
    m_names = names;
    updateGutter();
}

void LogView::showSourceNames(bool shown)
{
    m_showsNames = shown;
    updateGutter();
}

void LogView::updateGutter()
{
    qsizetype longest = 0;
    for (const QString &name : m_names) {
        longest = std::max(longest, name.size());
    }
    const auto cells = static_cast<qreal>(std::min(longest + 1, mostNameCells));
    m_scroll.setGutter(m_showsNames && longest > 0 ? static_cast<int>(cells * appearance().cellWidth) : 0);
    viewport()->update();
}

void LogView::addMark(const LogMark &mark)
{
    m_marks.push_back(mark);
    viewport()->update();
}

void LogView::clearMarks()
{
    m_marks.clear();
    viewport()->update();
}

void LogView::setHighlight(const LogPattern &pattern, qint64 current)
{
    m_lines.setPattern(pattern);
    m_currentMatch = current;
    viewport()->update();
}

void LogView::zoom(int direction)
{
    m_zoom = direction == 0 ? 0 : std::clamp(m_zoom + direction, smallestZoom, largestZoom);
    QFont font = m_usualFont;
    font.setPointSizeF(std::max(smallestFont, font.pointSizeF() + m_zoom));
    m_scroll.keepTopWhile([&] { m_lines.changeAppearance().measure(font); });
    updateGutter();
}

void LogView::replaced()
{
    m_lines.clear();
    if (m_document.size() == 0) {
        m_selection.clear();
    }
    m_scroll.replaced();
}

void LogView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    m_scroll.keepTopWhile([] {}); // the rows wrap elsewhere
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
        m_scroll.scrollBy(-pixels.y());
    }
    event->accept();
}

void LogView::keyPressEvent(QKeyEvent *event)
{
    const bool selects = event->modifiers() & Qt::ShiftModifier;
    if (event->matches(QKeySequence::Copy)) {
        m_selection.copy();
    } else if (event->matches(QKeySequence::SelectAll)) {
        m_selection.selectAll();
    } else if (event->matches(QKeySequence::ZoomIn) || event->matches(QKeySequence::ZoomOut)) {
        zoom(event->matches(QKeySequence::ZoomIn) ? 1 : -1);
    } else if (!(selects && m_selection.takeKey(*event)) && !m_scroll.takeKey(*event)) {
        QAbstractScrollArea::keyPressEvent(event);
    }
}

void LogView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_selection.press(event->position().toPoint(), event->modifiers() & Qt::ShiftModifier);
    }
}

void LogView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_selection.doubleClick(event->position().toPoint());
    }
}

void LogView::mouseMoveEvent(QMouseEvent *event)
{
    m_selection.drag(event->position().toPoint());
}

void LogView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_selection.release();
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
    m_selection.stopDragging();
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
        const bool isCurrent = shown.position(start + match.start) == m_currentMatch;
        result.push_back({layout.text().unitOf(match.start), layout.text().unitOf(match.end()),
            isCurrent ? QColor(0xFF, 0xD7, 0x5F) : QColor(0x6B, 0x5A, 0x10),
            isCurrent ? QColor(Qt::black) : QColor(Qt::white)});
    }
    if (!m_selection.isEmpty()) {
        const LogRange selected = m_selection.range();
        const qint64 from = shown.place(selected.start) - start;
        const qint64 to = shown.place(selected.end()) - start;
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
    if (m_lines.last() < 0) {
        painter.setPen(appearance().text);
        painter.drawText(
            viewport()->rect().adjusted(40, 0, -40, 0), Qt::AlignCenter | Qt::TextWordWrap, m_hint);
        return;
    }
    const int rowHeight = appearance().rowHeight;
    const int x = m_scroll.origin().x();
    int y = m_scroll.origin().y();
    for (qint64 line = m_scroll.top().line; line <= m_lines.last() && y <= area.bottom(); ++line) {
        const LogLineLayout &layout = m_lines.layout(line);
        const int rows = m_lines.rows(line);
        const int firstRow = std::max(0, (area.top() - y) / rowHeight);
        const int lastRow = std::min(rows, (area.bottom() - y) / rowHeight + 1);
        if (firstRow < lastRow) {
            layout.draw(painter, QPointF(x, y), firstRow, lastRow, area.left(), area.right() + 1,
                highlights(line, layout));
            if (m_lines.continues(line)) {
                painter.setFont(appearance().font);
                painter.setPen(namedColour(QStringLiteral("solarized-base01")));
                painter.drawText(
                    QPointF(m_scroll.gutter() + 1, y + appearance().ascent), QString(continuationMark));
            }
        }
        if (m_scroll.gutter() > 0) {
            drawName(painter, line, y);
        }
        drawMarks(painter, line, y);
        y += rows * rowHeight;
    }
}

/// The name of the source that a line comes from, over what is scrolled below it.
void LogView::drawName(QPainter &painter, qint64 line, int y)
{
    const int width = m_scroll.gutter();
    painter.fillRect(0, y, width, m_lines.height(line), appearance().background);
    const LogProjection &shown = m_document.shown();
    const auto runs = m_document.runs({shown.position(shown.lineStart(line)), 1});
    if (runs.empty() || runs.front().source >= m_names.size() || m_lines.continues(line)) {
        return;
    }
    const int source = runs.front().source;
    painter.setFont(appearance().font);
    painter.setPen(appearance().colourOf({.source = source}));
    const qreal cell = appearance().cellWidth;
    const QString name = QFontMetricsF(appearance().font)
                             .elidedText(display_text::clean(m_names[source]), Qt::ElideMiddle, width - cell);
    painter.drawText(QPointF(cell / 2, y + appearance().ascent), name);
}

/// Those above a line: a rule, and at its right end what has happened.
void LogView::drawMarks(QPainter &painter, qint64 line, int y)
{
    const LogProjection &shown = m_document.shown();
    const qint64 from = line > 0 ? shown.position(shown.lineStart(line - 1)) : -1;
    const auto isBefore = [](const LogMark &mark, qint64 position) { return mark.position <= position; };
    const auto first = std::lower_bound(m_marks.cbegin(), m_marks.cend(), from, isBefore);
    const auto last
        = std::lower_bound(first, m_marks.cend(), shown.position(shown.lineStart(line)), isBefore);
    if (first == last) {
        return;
    }
    QStringList texts;
    for (auto mark = first; mark != last; ++mark) {
        texts.append(mark->text);
    }
    constexpr int padding = 6;
    painter.setFont(font());
    painter.setPen(namedColour(QStringLiteral("solarized-base01")));
    painter.drawLine(0, y, viewport()->width(), y);
    const QFontMetrics metrics(font());
    const QString text = metrics.elidedText(
        display_text::clean(texts.join(QStringLiteral(", "))), Qt::ElideRight, viewport()->width() / 2);
    const QRect box(QPoint(0, y), QSize(metrics.horizontalAdvance(text) + 2 * padding, metrics.height()));
    painter.fillRect(box.translated(viewport()->width() - box.width(), 0),
        namedColour(QStringLiteral("solarized-base02")));
    painter.setPen(namedColour(QStringLiteral("solarized-base1")));
    painter.drawText(QPoint(viewport()->width() - box.width() + padding, y + metrics.ascent()), text);
}

QString LogView::visibleText()
{
    QStringList lines;
    int y = m_scroll.origin().y();
    for (qint64 line = m_scroll.top().line; line <= m_lines.last() && y < viewport()->height(); ++line) {
        lines.append(m_lines.layout(line).text().text);
        y += m_lines.height(line);
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace tidewright
