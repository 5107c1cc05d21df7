// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>
#include <QTimer>

namespace tidewright {

/// A quiet message in the lower right corner of a window, above earlier ones, that goes by itself after some
/// seconds (later for long texts, and never while the pointer rests on it) or with a click. It takes no
/// keyboard focus; screen readers are told of it. A child of the window; deletes itself. Main thread.
class PassingMessage : public QFrame
{
    Q_OBJECT
public:
    /// Shows plain text in `window`; either text may be empty.
    static PassingMessage *show(QWidget &window, const QString &title, const QString &text);

    /// How long it stays, in milliseconds.
    int lifetime() const { return m_lifetime; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    PassingMessage(QWidget &window, const QString &title, const QString &text);
    void addLabel(const QString &text, bool bold);
    void end();
    static void arrangeAll(const QWidget &window);

    const int m_lifetime;
    QTimer m_end{this};
};

} // namespace tidewright
