// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/console/CommandEntryBar.h"

#include "platform/text/DisplayText.h"
#include "pods/console/ConsoleStyle.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

namespace tidewright {

namespace {

constexpr int longestCommand = 1 << 24; // a command from the history must never come back cut
constexpr int charactersOfRunningText = 26;

} // namespace

CommandEntryBar::CommandEntryBar(QWidget *parent)
    : QWidget(parent)
    , m_field(new QLineEdit)
    , m_running(new QLabel)
    , m_stop(new QToolButton)
{
    buildLayout();
    m_field->setAccessibleName(tr("Command"));
    m_field->setFont(console_style::font());
    m_field->setMaxLength(longestCommand);
    setHint(tr("Type a command, such as kubectl get pods"));
    m_field->installEventFilter(this);
    m_running->setAccessibleName(tr("Running Scripts"));
    m_running->setTextFormat(Qt::PlainText);
    m_running->setFixedWidth(m_running->fontMetrics().averageCharWidth() * charactersOfRunningText);
    m_stop->setText(tr("Stop"));
    m_stop->setAccessibleName(tr("Stop Typed Commands"));
    m_stop->setAutoRaise(true);
    QSizePolicy kept = m_stop->sizePolicy();
    kept.setRetainSizeWhenHidden(true);
    m_stop->setSizePolicy(kept);
    m_stop->hide();
    connect(m_field, &QLineEdit::returnPressed, this, &CommandEntryBar::returnPressed);
    connect(m_stop, &QToolButton::clicked, this, &CommandEntryBar::stopRequested);
}

void CommandEntryBar::buildLayout()
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->setSpacing(8);
    layout->addWidget(m_field, 1);
    layout->addWidget(m_running);
    layout->addWidget(m_stop);
    setTabOrder(m_field, m_stop);
}

void CommandEntryBar::setHint(const QString &text)
{
    const QString shown = display_text::clean(text);
    m_field->setPlaceholderText(shown);
    m_field->setAccessibleDescription(shown);
}

void CommandEntryBar::setRunningText(const QString &text, const QStringList &all)
{
    m_running->setText(
        m_running->fontMetrics().elidedText(display_text::clean(text), Qt::ElideRight, m_running->width()));
    const QString whole
        = all.size() < 2 ? text : tr("Running:") + QLatin1Char('\n') + all.join(QLatin1Char('\n'));
    m_running->setToolTip(display_text::toolTip(whole));
    m_running->setAccessibleDescription(whole);
}

void CommandEntryBar::setTypedCommands(const QStringList &commands)
{
    constexpr int longest = 60;
    QStringList lines(tr("Stop what was started here and still runs:"));
    for (const QString &command : commands) {
        lines.append(command.size() > longest ? command.left(longest) + QChar(0x2026) : command);
    }
    m_stop->setToolTip(display_text::toolTip(lines.join(QLatin1Char('\n'))));
    if (commands.isEmpty() && m_stop->hasFocus()) {
        m_field->setFocus();
    }
    m_stop->setVisible(!commands.isEmpty());
}

/// As a shell does: the word before the cursor, with the blanks behind it.
void CommandEntryBar::deleteWord()
{
    const QString text = m_field->text();
    int begin = m_field->cursorPosition();
    const int end = begin;
    while (begin > 0 && text.at(begin - 1).isSpace()) {
        --begin;
    }
    while (begin > 0 && !text.at(begin - 1).isSpace()) {
        --begin;
    }
    m_field->setSelection(begin, end - begin);
    m_field->del();
}

bool CommandEntryBar::eventFilter(QObject *watched, QEvent *event)
{
    const bool isOverride = event->type() == QEvent::ShortcutOverride;
    if (watched != m_field || (event->type() != QEvent::KeyPress && !isOverride)) {
        return QWidget::eventFilter(watched, event);
    }
    const auto *press = static_cast<QKeyEvent *>(event);
    // In a terminal these keys delete a word; here they would close the tab with all that runs in it.
    const bool deletesWord = press->key() == Qt::Key_W && press->modifiers() == Qt::ControlModifier;
    if (isOverride) {
        event->setAccepted(deletesWord);
        return deletesWord;
    }
    if (deletesWord) {
        deleteWord();
        return true;
    }
    if ((press->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) {
        return false;
    }
    if (press->key() == Qt::Key_Up) {
        Q_EMIT moveUp();
        return true;
    }
    if (press->key() == Qt::Key_Down) {
        Q_EMIT moveDown();
        return true;
    }
    return false;
}

} // namespace tidewright
