// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>

class QPlainTextEdit;

namespace tidewright {

/// Fills a view with a text of any length, a piece for each turn of the event loop, so that the window
/// answers meanwhile. Belongs to the view. Main thread.
class TextInPieces : public QObject
{
    Q_OBJECT
public:
    explicit TextInPieces(QPlainTextEdit &view);

    /// Shows the text, clean (DisplayText.h), in place of what is there; the first piece of it at once.
    void show(const QString &text);

private:
    QString nextPiece();
    void append();

    QPlainTextEdit &m_view;
    QString m_text;
    qsizetype m_shown = 0; ///< characters of it
    QTimer m_next;
};

} // namespace tidewright
