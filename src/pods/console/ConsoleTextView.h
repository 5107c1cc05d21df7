// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPlainTextEdit>

#include <functional>
#include <vector>

namespace tidewright {

/// A part of an entry in one style. Lines end with line feeds.
struct StyledRun
{
    QString text;
    QTextCharFormat format;
};

/// The read-only text of a console. Each entry is one paragraph, laid out only while it can be seen, so that
/// a new entry costs the same however many there are. Stays at the bottom when it was there. Main thread.
class ConsoleTextView : public QPlainTextEdit
{
    Q_OBJECT
public:
    explicit ConsoleTextView(QWidget *parent = nullptr);

    /// Appends an entry and a line end. `number` (not negative) is what `menuRequested` will call it.
    void appendEntry(const std::vector<StyledRun> &runs, int number);
    void empty();
    /// A menu for a place in the viewport; the caller deletes it.
    QMenu *makeMenu(const QPoint &place);

Q_SIGNALS:
    /// The user follows a link; the text is the link's target, as untrusted as what printed it.
    void linkActivated(const QString &target);
    /// A context menu is about to be shown on an entry (-1: beside all entries); actions may be added.
    void menuRequested(QMenu *menu, int number);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    QMimeData *createMimeDataFromSelection() const override;

private:
    void applyColours();
    void scrollToEnd();
    void keepSelection(const std::function<void()> &change);
    void paintSeparators();
    QString anchorAtCaret() const;

    bool m_following = true;
    QString m_pressedLink;
};

} // namespace tidewright
