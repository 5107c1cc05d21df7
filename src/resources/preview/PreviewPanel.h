// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/preview/PreviewSource.h"

#include <QPointer>
#include <QWidget>

class QLabel;
class QPlainTextEdit;

namespace tidewright {

class TextInPieces;
class YamlHighlighter;

/// The panel that shows the chosen objects as YAML, one for the whole application: whoever is asked for a
/// preview makes itself its source. Arrows walk through the items, space or Escape closes. Main thread.
class PreviewPanel : public QWidget
{
    Q_OBJECT
public:
    static PreviewPanel &shared();

    /// `source` is asked as long as `owner` lives. Opens beside `owner`'s window at first.
    void present(PreviewSource &source, QWidget &owner);
    /// The selection of a source has changed; ignored for any other than the current one.
    void selectionChanged(const PreviewSource &source);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    PreviewPanel();
    bool handleKey(int key);
    void step(int by);
    void showItem();
    void showText(const QString &text, const QString &state);

    PreviewSource *m_source = nullptr;
    QPointer<QWidget> m_owner; // lives exactly as long as m_source may be used
    int m_index = 0;
    quint64 m_request = 0; // answers to older requests are dropped
    QLabel *m_title;
    QLabel *m_state;
    QPlainTextEdit *m_text;
    TextInPieces *m_pieces;
    YamlHighlighter *m_colours;
};

} // namespace tidewright
