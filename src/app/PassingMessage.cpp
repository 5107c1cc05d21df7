// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PassingMessage.h"

#include "platform/text/DisplayText.h"

#include <QAccessible>
#include <QEvent>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

namespace tidewright {

namespace {

constexpr int margin = 16;
constexpr int spacing = 8;
constexpr int messageWidth = 320;
constexpr qsizetype longestText = 600;

constexpr int shortestLifetime = 6000;
constexpr int longestLifetime = 20000;
constexpr int perCharacter = 60; // at a leisurely reader's pace

} // namespace

PassingMessage *PassingMessage::show(QWidget &window, const QString &title, const QString &text)
{
    auto *message = new PassingMessage(
        window, display_text::shortened(title, longestText), display_text::shortened(text, longestText));
    message->QFrame::show();
    message->raise();
    arrangeAll(window);
    QAccessibleEvent alert(message, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
    return message;
}

PassingMessage::PassingMessage(QWidget &window, const QString &title, const QString &text)
    : QFrame(&window)
    , m_lifetime(
          std::clamp(int(title.size() + text.size()) * perCharacter, shortestLifetime, longestLifetime))
{
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    setFixedWidth(messageWidth);
    setAccessibleName(title.isEmpty() ? text : title);
    setAccessibleDescription(text);
    new QVBoxLayout(this);
    addLabel(title, true);
    addLabel(text, false);
    window.installEventFilter(this);
    m_end.setSingleShot(true);
    connect(&m_end, &QTimer::timeout, this, &PassingMessage::end);
    m_end.start(m_lifetime);
}

void PassingMessage::addLabel(const QString &text, bool bold)
{
    if (text.isEmpty()) {
        return;
    }
    auto *label = new QLabel(display_text::clean(text));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::ToolTipText);
    QFont font = label->font();
    font.setBold(bold);
    label->setFont(font);
    layout()->addWidget(label);
}

void PassingMessage::arrangeAll(const QWidget &window)
{
    int bottom = window.height() - margin;
    const auto messages = window.findChildren<PassingMessage *>(Qt::FindDirectChildrenOnly);
    for (PassingMessage *message : messages) {
        if (message->isHidden()) {
            continue;
        }
        message->resize(messageWidth, message->heightForWidth(messageWidth));
        message->move(window.width() - messageWidth - margin, bottom - message->height());
        bottom -= message->height() + spacing;
    }
}

bool PassingMessage::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize && watched == parent()) {
        arrangeAll(*parentWidget());
    }
    return QFrame::eventFilter(watched, event);
}

void PassingMessage::enterEvent(QEnterEvent *event)
{
    m_end.stop();
    QFrame::enterEvent(event);
}

void PassingMessage::leaveEvent(QEvent *event)
{
    m_end.start(m_lifetime);
    QFrame::leaveEvent(event);
}

void PassingMessage::mousePressEvent(QMouseEvent *)
{
    end();
}

void PassingMessage::end()
{
    hide();
    deleteLater();
    arrangeAll(*parentWidget());
}

} // namespace tidewright
