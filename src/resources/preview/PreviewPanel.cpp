// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/PreviewPanel.h"

#include "platform/text/DisplayText.h"
#include "resources/preview/TextInPieces.h"
#include "resources/preview/YamlHighlighter.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace tidewright {

PreviewPanel &PreviewPanel::shared()
{
    static QPointer<PreviewPanel> panel;
    if (!panel) {
        panel = new PreviewPanel;
    }
    return *panel;
}

PreviewPanel::PreviewPanel()
    : m_title(new QLabel)
    , m_state(new QLabel)
    , m_text(new QPlainTextEdit)
    , m_pieces(new TextInPieces(*m_text))
    , m_colours(new YamlHighlighter(m_text->document()))
{
    setAttribute(Qt::WA_QuitOnClose, false);
    setAccessibleName(tr("Preview"));
    resize(720, 640);
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    m_title->setTextFormat(Qt::PlainText);
    m_title->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_state->setTextFormat(Qt::PlainText);
    m_text->setReadOnly(true);
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_text->setAccessibleName(tr("Preview"));
    m_text->document()->setDocumentMargin(12);
    m_text->installEventFilter(this);
    auto *header = new QHBoxLayout;
    header->setContentsMargins(12, 8, 12, 8);
    header->addWidget(m_title, 1);
    header->addWidget(m_state);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(header);
    layout->addWidget(m_text, 1);
}

void PreviewPanel::present(PreviewSource &source, QWidget &owner)
{
    m_source = &source;
    m_owner = &owner;
    m_index = 0;
    showItem();
    show();
    raise();
    activateWindow();
    m_text->setFocus();
}

void PreviewPanel::selectionChanged(const PreviewSource &source)
{
    if (m_owner && m_source == &source && isVisible()) {
        m_index = 0;
        showItem();
    }
}

bool PreviewPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->modifiers() == Qt::NoModifier && !key->isAutoRepeat() && handleKey(key->key())) {
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void PreviewPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange) {
        m_colours->rehighlight(); // the colours are those of a light or of a dark palette
    }
    QWidget::changeEvent(event);
}

bool PreviewPanel::handleKey(int key)
{
    switch (key) {
    case Qt::Key_Space:
    case Qt::Key_Escape:
        close();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Left:
        step(-1);
        return true;
    case Qt::Key_Down:
    case Qt::Key_Right:
        step(1);
        return true;
    default:
        return false;
    }
}

void PreviewPanel::step(int by)
{
    if (!m_owner) {
        return;
    }
    const int count = m_source->numberOfPreviewItems();
    if (count == 1) {
        m_source->movePreviewSelection(by);
    } else if (m_index + by >= 0 && m_index + by < count) {
        m_index += by;
        showItem();
    }
}

void PreviewPanel::showItem()
{
    const quint64 request = ++m_request;
    const int count = m_owner ? m_source->numberOfPreviewItems() : 0;
    if (m_index >= count) {
        m_title->setText(tr("Preview"));
        showText(QString(), tr("Nothing is selected"));
        return;
    }
    const QString position = count > 1 ? tr("%1 of %2").arg(m_index + 1).arg(count) : QString();
    m_title->setText(display_text::name(m_source->previewItemTitle(m_index)));
    setWindowTitle(display_text::name(tr("%1 – Preview").arg(m_title->text())));
    showText(QString(), tr("Loading…"));
    m_source->loadPreviewItem(
        m_index, [panel = QPointer(this), request, position](const auto &item, const QString &reason) {
            if (panel && panel->m_request == request) {
                panel->m_text->setLineWrapMode(item ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
                panel->showText(item ? item->text : reason, item ? position : tr("No preview"));
            }
        });
}

void PreviewPanel::showText(const QString &text, const QString &state)
{
    m_state->setText(state);
    m_pieces->show(text);
}

} // namespace tidewright
