// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/TextInPieces.h"

#include "platform/text/DisplayText.h"

#include <QPlainTextEdit>
#include <QTextBlock>

namespace tidewright {

TextInPieces::TextInPieces(QPlainTextEdit &view)
    : QObject(&view)
    , m_view(view)
{
    view.setUndoRedoEnabled(false);
    m_next.setSingleShot(true);
    m_next.setInterval(0);
    connect(&m_next, &QTimer::timeout, this, &TextInPieces::append);
}

void TextInPieces::show(const QString &text)
{
    m_text = text;
    m_shown = 0;
    m_view.setPlainText(nextPiece());
}

/// Up to a line's end where there is one.
QString TextInPieces::nextPiece()
{
    constexpr qsizetype longest = 32 * 1024;
    qsizetype end = qMin(m_shown + longest, m_text.size());
    if (end < m_text.size()) {
        const qsizetype lineEnd = m_text.lastIndexOf(QLatin1Char('\n'), end - 1) + 1;
        end = lineEnd > m_shown ? lineEnd : end - (m_text.at(end - 1).isHighSurrogate() ? 1 : 0);
        m_next.start();
    } else {
        m_next.stop();
    }
    const QString piece = display_text::clean(m_text.mid(m_shown, end - m_shown));
    m_shown = end;
    return piece;
}

void TextInPieces::append()
{
    QTextCursor cursor(m_view.document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(nextPiece());
}

} // namespace tidewright
