// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogLineLayout.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace tidewright {

void LogAppearance::measure(const QFont &newFont)
{
    font = newFont;
    const QFontMetricsF metrics(font);
    constexpr int sample = 64;
    cellWidth = metrics.horizontalAdvance(QString(sample, u'M')) / sample;
    ascent = static_cast<int>(std::ceil(metrics.ascent()));
    rowHeight = ascent + static_cast<int>(std::ceil(metrics.descent())) + 1;
}

namespace {

/// Relative luminance, 0 to 1.
qreal luminance(const QColor &colour)
{
    const auto linear
        = [](qreal part) { return part <= 0.04 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF())
        + 0.0722 * linear(colour.blueF());
}

qreal contrast(const QColor &a, const QColor &b)
{
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

bool hasRightToLeft(const QString &text)
{
    constexpr char16_t first = 0x0590; // of the scripts that do
    return std::any_of(text.cbegin(), text.cend(), [](QChar c) {
        return c.unicode() >= first && (c.direction() == QChar::DirR || c.direction() == QChar::DirAL);
    });
}

} // namespace

QColor LogAppearance::colourOf(const LogLook &look) const
{
    constexpr qreal leastContrast = 1.25; // less than that hides what is written
    const QColor behind = backgroundOf(look);
    const QColor below = behind.isValid() ? behind : background;
    const QColor wanted = wantedColour(look);
    if (!below.isValid() || contrast(wanted, below) >= leastContrast) {
        return wanted;
    }
    return QColor(luminance(below) > 0.2 ? Qt::black : Qt::white);
}

QColor LogAppearance::wantedColour(const LogLook &look) const
{
    if (look.inverse) {
        return look.background ? QColor(*look.background) : background;
    }
    if (look.foreground) {
        return QColor(*look.foreground);
    }
    const QColor colour = sources.isEmpty() ? QColor() : sources[look.source % sources.size()];
    return colour.isValid() ? colour : text;
}

QColor LogAppearance::backgroundOf(const LogLook &look) const
{
    if (look.inverse) {
        LogLook upright = look;
        upright.inverse = false;
        return wantedColour(upright);
    }
    return look.background ? QColor(*look.background) : QColor();
}

LogLineLayout::LogLineLayout(LogLineText text, const LogAppearance &appearance, qreal width, qreal needed)
    : m_text(std::move(text))
    , m_appearance(appearance)
{
    const qsizetype length = m_text.text.size();
    if (!m_text.isGrid) {
        // A layout costs about a microsecond for each character: no more of them than can be seen. But what
        // runs from right to left has its place by what follows, if that is not too much.
        constexpr qsizetype longestMoving = 512;
        const bool isWhole = width > 0 || (length <= longestMoving && hasRightToLeft(m_text.text));
        qsizetype units = isWhole ? length : static_cast<qsizetype>(needed / appearance.cellWidth) + 8;
        layOut(width, std::min(units, length));
        while (!covers(needed)) { // narrow or combining characters
            const qreal unitWidth
                = std::max(m_widest / static_cast<qreal>(m_laidOut), appearance.cellWidth / 4);
            units = std::max(units + units / 8, static_cast<qsizetype>(needed / unitWidth) + 8);
            layOut(width, std::min(units, length));
        }
        return;
    }
    m_laidOut = length;
    m_columns
        = width > 0 ? std::max<qsizetype>(1, static_cast<qsizetype>(width / appearance.cellWidth)) : length;
    m_columns = std::max<qsizetype>(m_columns, 1);
    m_rows = static_cast<int>(std::max<qsizetype>(1, (length + m_columns - 1) / m_columns));
}

void LogLineLayout::layOut(qreal width, qsizetype units)
{
    m_layout = std::make_unique<QTextLayout>(m_text.text.left(units), m_appearance.font);
    QTextOption option;
    option.setWrapMode(width > 0 ? QTextOption::WrapAnywhere : QTextOption::NoWrap);
    // Lines stand at the left whatever they begin with, as in a terminal.
    option.setTextDirection(Qt::LeftToRight);
    m_layout->setTextOption(option);
    QList<QTextLayout::FormatRange> formats;
    for (std::size_t i = 0; i < m_text.runs.size(); ++i) {
        const qsizetype start = m_text.runs[i].start;
        const qsizetype end = i + 1 < m_text.runs.size() ? m_text.runs[i + 1].start : units;
        if (start >= units) {
            break;
        }
        formats.append(
            {static_cast<int>(start), static_cast<int>(end - start), formatOf(m_text.runs[i].look)});
    }
    m_layout->setFormats(formats);
    m_layout->setCacheEnabled(true);
    m_layout->beginLayout();
    for (int row = 0;; ++row) {
        QTextLine line = m_layout->createLine();
        if (!line.isValid()) {
            break;
        }
        line.setLineWidth(width > 0 ? width : 1e7);
        // Fonts that stand in for missing characters may be higher; rows are not.
        line.setPosition({0, row * qreal(m_appearance.rowHeight) + m_appearance.ascent - line.ascent()});
    }
    m_layout->endLayout();
    m_rows = std::max(1, m_layout->lineCount());
    m_laidOut = units;
    m_widest = 0;
    for (int row = 0; row < m_layout->lineCount(); ++row) {
        m_widest = std::max(m_widest, m_layout->lineAt(row).naturalTextWidth());
    }
}

QTextCharFormat LogLineLayout::formatOf(const LogLook &look) const
{
    QTextCharFormat format;
    format.setForeground(m_appearance.colourOf(look));
    if (const QColor background = m_appearance.backgroundOf(look); background.isValid()) {
        format.setBackground(background);
    }
    if (look.bold) {
        format.setFontWeight(QFont::Bold);
    }
    format.setFontItalic(look.italic);
    format.setFontUnderline(look.underlined);
    format.setFontStrikeOut(look.struckOut);
    return format;
}

qreal LogLineLayout::width() const
{
    if (!m_layout) {
        return static_cast<qreal>(std::min(m_text.text.size(), m_columns)) * m_appearance.cellWidth;
    }
    return m_widest + static_cast<qreal>(m_text.text.size() - m_laidOut) * m_appearance.cellWidth;
}

int LogLineLayout::rowOf(qsizetype unit) const
{
    if (!m_layout) {
        return static_cast<int>(std::min<qsizetype>(unit / m_columns, m_rows - 1));
    }
    const QTextLine line = m_layout->lineForTextPosition(static_cast<int>(unit));
    return line.isValid() ? line.lineNumber() : 0;
}

qreal LogLineLayout::xOf(qsizetype unit) const
{
    if (!m_layout) {
        return static_cast<qreal>(unit - rowStart(rowOf(unit))) * m_appearance.cellWidth;
    }
    const qsizetype inside = std::min(unit, m_laidOut);
    const QTextLine line = m_layout->lineForTextPosition(static_cast<int>(inside));
    const qreal x = line.isValid() ? line.cursorToX(static_cast<int>(inside)) : 0;
    return x + static_cast<qreal>(unit - inside) * m_appearance.cellWidth;
}

qsizetype LogLineLayout::rowStart(int row) const
{
    if (row >= m_rows) {
        return m_text.text.size();
    }
    return m_layout ? (m_layout->lineCount() ? m_layout->lineAt(row).textStart() : 0) : row * m_columns;
}

qsizetype LogLineLayout::unitAt(int row, qreal x) const
{
    if (!m_layout) {
        const auto column = static_cast<qsizetype>(std::max(0.0, x / m_appearance.cellWidth + 0.5));
        return std::min(rowStart(row) + std::min(column, m_columns), m_text.text.size());
    }
    return m_layout->lineCount() ? m_layout->lineAt(row).xToCursor(x) : 0;
}

void LogLineLayout::draw(QPainter &painter, QPointF origin, int firstRow, int lastRow, qreal left,
    qreal right, const std::vector<LogHighlight> &highlights) const
{
    if (!m_layout) {
        for (int row = firstRow; row < std::min(lastRow, m_rows); ++row) {
            drawGridRow(painter, origin + QPointF(0, qreal(row) * m_appearance.rowHeight), row, left, right,
                highlights);
        }
        return;
    }
    QList<QTextLayout::FormatRange> selections;
    for (const LogHighlight &highlight : highlights) {
        QTextCharFormat format;
        format.setBackground(highlight.background);
        format.setForeground(highlight.text);
        selections.append(
            {static_cast<int>(highlight.start), static_cast<int>(highlight.end - highlight.start), format});
    }
    const qreal top = origin.y() + qreal(firstRow) * m_appearance.rowHeight;
    const qreal height = qreal(lastRow - firstRow) * m_appearance.rowHeight;
    painter.setPen(m_appearance.text);
    m_layout->draw(&painter, origin, selections, QRectF(left, top, right - left, height));
}

void LogLineLayout::drawGridRow(QPainter &painter, QPointF origin, int row, qreal left, qreal right,
    const std::vector<LogHighlight> &highlights) const
{
    const qsizetype rowBegin = rowStart(row);
    const qsizetype rowEnd = std::min(rowBegin + m_columns, m_text.text.size());
    const auto column = [&](qreal x) {
        return static_cast<qsizetype>(std::max(0.0, (x - origin.x()) / m_appearance.cellWidth));
    };
    const qsizetype begin = std::min(rowEnd, rowBegin + column(left));
    const qsizetype end = std::min(rowEnd, rowBegin + column(right) + 1);
    // Pieces of one look each: they end where a run or a highlight begins or ends.
    std::size_t run = 0;
    for (qsizetype at = begin; at < end;) {
        while (run + 1 < m_text.runs.size() && m_text.runs[run + 1].start <= at) {
            ++run;
        }
        qsizetype stop = run + 1 < m_text.runs.size() ? std::min(end, m_text.runs[run + 1].start) : end;
        const LogHighlight *above = nullptr;
        for (const LogHighlight &highlight : highlights) {
            if (highlight.start <= at && at < highlight.end) {
                above = &highlight;
                stop = std::min(stop, highlight.end);
            } else if (highlight.start > at) {
                stop = std::min(stop, highlight.start);
            }
        }
        const QPointF place = origin + QPointF(static_cast<qreal>(at - rowBegin) * m_appearance.cellWidth, 0);
        drawCells(painter, place, at, stop, m_text.runs[run].look, above);
        at = stop;
    }
}

void LogLineLayout::drawCells(QPainter &painter, QPointF origin, qsizetype start, qsizetype end,
    const LogLook &look, const LogHighlight *highlight) const
{
    const QColor background = highlight ? highlight->background : m_appearance.backgroundOf(look);
    if (background.isValid()) {
        const qreal width = static_cast<qreal>(end - start) * m_appearance.cellWidth;
        painter.fillRect(QRectF(origin, QSizeF(width, m_appearance.rowHeight)), background);
    }
    QFont font = m_appearance.font;
    if (look.bold || look.italic || look.underlined || look.struckOut) {
        font.setBold(look.bold);
        font.setItalic(look.italic);
        font.setUnderline(look.underlined);
        font.setStrikeOut(look.struckOut);
    }
    painter.setFont(font);
    painter.setPen(highlight ? highlight->text : m_appearance.colourOf(look));
    painter.drawText(origin + QPointF(0, m_appearance.ascent), m_text.text.mid(start, end - start));
}

} // namespace tidewright
