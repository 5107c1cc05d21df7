// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/console/ConsoleTextView.h"

#include "pods/console/ConsoleStyle.h"
#include "resources/widgets/NamedImages.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>

namespace tidewright {

namespace {

/// The line of a laid-out paragraph that shows a position. (Asked itself, the layout would build its glyphs
/// again to answer, and keep them.)
QTextLine lineAt(const QTextLayout &layout, int position)
{
    int number = 0;
    while (number + 1 < layout.lineCount() && layout.lineAt(number + 1).textStart() <= position) {
        ++number;
    }
    return layout.lineAt(number);
}

} // namespace

ConsoleTextView::ConsoleTextView(QWidget *parent)
    : QPlainTextEdit(parent)
{
    setAccessibleName(tr("Console"));
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setUndoRedoEnabled(false);
    setFrameShape(QFrame::NoFrame);
    setFont(console_style::font());
    setTabStopDistance(fontMetrics().horizontalAdvance(QLatin1Char(' ')) * 8);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document()->setDocumentMargin(6);
    viewport()->setMouseTracking(true);
    applyColours();
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this,
        [this](int value) { m_following = value == verticalScrollBar()->maximum(); });
    // Once there is nothing below, what comes next is followed, however that came about.
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this,
        [this](int, int maximum) { m_following |= verticalScrollBar()->value() == maximum; });
}

void ConsoleTextView::applyColours()
{
    QPalette colours = palette();
    colours.setColor(QPalette::Base, namedColour(QStringLiteral("solarized-base03")));
    colours.setColor(QPalette::Text, namedColour(QStringLiteral("solarized-base2")));
    colours.setColor(QPalette::Highlight, namedColour(QStringLiteral("solarized-base01")));
    colours.setColor(QPalette::HighlightedText, namedColour(QStringLiteral("solarized-base3")));
    setPalette(colours);
}

void ConsoleTextView::appendEntry(const std::vector<StyledRun> &runs, int number)
{
    const bool following = m_following;
    keepSelection([&] {
        QTextCursor end(document());
        end.movePosition(QTextCursor::End);
        end.beginEditBlock();
        end.block().setVisible(true);
        for (const StyledRun &run : runs) {
            QString lines = run.text;
            if (&run == &runs.back() && lines.endsWith(QLatin1Char('\n'))) {
                lines.chop(1); // the end of the paragraph stands for it
            }
            end.insertText(lines.replace(QLatin1Char('\n'), QChar(QChar::LineSeparator)), run.format);
        }
        end.block().setUserState(number);
        end.insertBlock(QTextBlockFormat(), console_style::text());
        end.block().setUserState(-1);
        end.block().setVisible(false); // no room for the line that comes after the last line end
        end.endEditBlock();
    });
    if (following) {
        scrollToEnd();
    }
}

void ConsoleTextView::empty()
{
    clear();
    m_following = true;
}

void ConsoleTextView::scrollToEnd()
{
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
    m_following = true;
}

/// A caret at the very end would move on with the text that is inserted there.
void ConsoleTextView::keepSelection(const std::function<void()> &change)
{
    const QTextCursor before = textCursor();
    const int anchor = before.anchor();
    const int position = before.position();
    change();
    if (textCursor().position() == position && textCursor().anchor() == anchor) {
        return;
    }
    QTextCursor restored = textCursor();
    restored.setPosition(anchor);
    restored.setPosition(position, QTextCursor::KeepAnchor);
    setTextCursor(restored);
}

void ConsoleTextView::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
    paintSeparators();
}

/// The arrowheads of fonts are not as high as the line, and the date before them is.
void ConsoleTextView::paintSeparators()
{
    QPainter painter(viewport());
    painter.setPen(Qt::NoPen);
    const QFontMetricsF metrics(font());
    QTextBlock block = firstVisibleBlock();
    QPointF place = blockBoundingGeometry(block).translated(contentOffset()).topLeft();
    for (; block.userState() >= 0 && place.y() < viewport()->height(); block = block.next()) {
        const auto at = static_cast<int>(block.text().indexOf(console_style::separatorGlyph));
        const QTextLine line = lineAt(*block.layout(), at);
        const QString before = block.text().mid(line.textStart(), at - line.textStart());
        const QRectF cell(place.x() + line.x() + metrics.horizontalAdvance(before), place.y() + line.y(),
            metrics.horizontalAdvance(console_style::separatorGlyph), line.height());
        place.ry() += blockBoundingRect(block).height();
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillRect(cell.adjusted(0, -1, 0, 0), console_style::separator().background());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(console_style::separator().foreground());
        const qreal join = cell.left() - 1; // over the end of the date, so that no seam shows
        painter.drawPolygon(QPolygonF({QPointF(join, cell.top()), cell.topLeft(),
            QPointF(cell.right(), cell.center().y()), cell.bottomLeft(), QPointF(join, cell.bottom())}));
    }
}

void ConsoleTextView::resizeEvent(QResizeEvent *event)
{
    const bool following = m_following;
    QPlainTextEdit::resizeEvent(event);
    if (following) {
        scrollToEnd();
    }
}

void ConsoleTextView::showEvent(QShowEvent *event)
{
    const bool following = m_following;
    QPlainTextEdit::showEvent(event);
    if (following) {
        scrollToEnd();
    }
}

QString ConsoleTextView::anchorAtCaret() const
{
    QTextCursor caret = textCursor();
    const QString behind = caret.charFormat().anchorHref();
    return !behind.isEmpty() || !caret.movePosition(QTextCursor::NextCharacter)
        ? behind
        : caret.charFormat().anchorHref();
}

void ConsoleTextView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (const QString link = anchorAtCaret(); !link.isEmpty()) {
            Q_EMIT linkActivated(link);
            return;
        }
    }
    QPlainTextEdit::keyPressEvent(event);
}

void ConsoleTextView::mousePressEvent(QMouseEvent *event)
{
    m_pressedLink = event->button() == Qt::LeftButton ? anchorAt(event->position().toPoint()) : QString();
    QPlainTextEdit::mousePressEvent(event);
}

void ConsoleTextView::mouseMoveEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseMoveEvent(event);
    if (event->buttons() == Qt::NoButton) {
        const bool overLink = !anchorAt(event->position().toPoint()).isEmpty();
        viewport()->setCursor(overLink ? Qt::PointingHandCursor : Qt::IBeamCursor);
    }
}

void ConsoleTextView::mouseReleaseEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseReleaseEvent(event);
    const QString link = std::exchange(m_pressedLink, QString());
    if (!link.isEmpty() && !textCursor().hasSelection() && anchorAt(event->position().toPoint()) == link) {
        Q_EMIT linkActivated(link);
    }
}

void ConsoleTextView::contextMenuEvent(QContextMenuEvent *event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const QPoint place = byKey ? cursorRect().center() : event->pos();
    QMenu *menu = makeMenu(place);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(viewport()->mapToGlobal(place));
}

QMenu *ConsoleTextView::makeMenu(const QPoint &place)
{
    QMenu *menu = createStandardContextMenu();
    const QString link = anchorAt(place);
    if (!link.isEmpty()) {
        menu->addSeparator();
        menu->addAction(tr("Open Link"), this, [this, link] { Q_EMIT linkActivated(link); });
        menu->addAction(tr("Copy Link Address"), this, [link] { QApplication::clipboard()->setText(link); });
    }
    Q_EMIT menuRequested(menu, cursorForPosition(place).block().userState());
    return menu;
}

QMimeData *ConsoleTextView::createMimeDataFromSelection() const
{
    QString text = textCursor().selectedText();
    text.replace(QChar(QChar::ParagraphSeparator), QLatin1Char('\n'));
    text.replace(QChar(QChar::LineSeparator), QLatin1Char('\n'));
    auto *copied = new QMimeData;
    copied->setText(text.remove(console_style::separatorGlyph));
    return copied;
}

} // namespace tidewright
