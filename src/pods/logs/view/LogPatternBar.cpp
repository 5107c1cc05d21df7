// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogPatternBar.h"

#include "platform/text/DisplayText.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

namespace tidewright {

namespace {

constexpr int typingMilliseconds = 80;

} // namespace

LogPatternBar::LogPatternBar(const QString &title, const QString &placeholder, bool withSteps)
    : m_field(new QLineEdit)
    , m_switches(new QHBoxLayout)
    , m_result(new QLabel)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 3, 8, 3);
    auto *label = new QLabel(title);
    label->setTextFormat(Qt::PlainText);
    label->setBuddy(m_field);
    layout->addWidget(label);
    m_field->setPlaceholderText(placeholder);
    m_field->setClearButtonEnabled(true);
    m_field->setAccessibleName(title);
    m_field->setMinimumWidth(200);
    layout->addWidget(m_field, 3);
    layout->addLayout(m_switches);
    m_case = addSwitch(tr("Aa"), tr("Match case"));
    m_expression = addSwitch(tr(".*"), tr("Regular expression"));
    if (withSteps) {
        connect(addButton(QStringLiteral("↑"), tr("Previous match (Shift+F3)")), &QToolButton::clicked, this,
            [this] { Q_EMIT stepped(false); });
        connect(addButton(QStringLiteral("↓"), tr("Next match (F3)")), &QToolButton::clicked, this,
            [this] { Q_EMIT stepped(true); });
    }
    layout->addWidget(m_result, 2);
    m_result->setMinimumWidth(120);
    connect(addButton(QStringLiteral("✕"), tr("Close (Esc)")), &QToolButton::clicked, this,
        &LogPatternBar::close);
    m_typing.setSingleShot(true);
    m_typing.setInterval(typingMilliseconds);
    m_typing.callOnTimeout(this, &LogPatternBar::changed);
    connect(m_field, &QLineEdit::textChanged, this, [this] { m_typing.start(); });
    hide();
}

QToolButton *LogPatternBar::addButton(const QString &text, const QString &tip)
{
    auto *button = new QToolButton;
    button->setText(text);
    button->setToolTip(display_text::toolTip(tip));
    button->setAccessibleName(tip);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    layout()->addWidget(button);
    return button;
}

QToolButton *LogPatternBar::addSwitch(const QString &text, const QString &tip)
{
    QToolButton *button = addButton(text, tip);
    button->setCheckable(true);
    m_switches->addWidget(button);
    connect(button, &QToolButton::toggled, this, &LogPatternBar::changed);
    return button;
}

void LogPatternBar::addChoice(QWidget *choice)
{
    m_switches->addWidget(choice);
}

LogPattern LogPatternBar::pattern() const
{
    return LogPattern(m_field->text(), m_case->isChecked(), m_expression->isChecked());
}

void LogPatternBar::setResult(const QString &text)
{
    m_result->setText(text);
}

void LogPatternBar::changed()
{
    m_typing.stop();
    const LogPattern current = pattern();
    setResult(current.isValid() ? QString() : tr("This is no valid regular expression."));
    Q_EMIT patternChanged(current);
}

void LogPatternBar::open(const QString &text)
{
    if (!text.isEmpty()) {
        m_field->setText(text);
    }
    show();
    m_field->selectAll();
    m_field->setFocus(Qt::ShortcutFocusReason);
    changed();
}

void LogPatternBar::close()
{
    if (isHidden()) {
        return;
    }
    m_typing.stop();
    hide();
    Q_EMIT patternChanged(LogPattern());
    Q_EMIT closed();
}

void LogPatternBar::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (m_typing.isActive()) {
            changed();
        } else {
            Q_EMIT stepped(!(event->modifiers() & Qt::ShiftModifier));
        }
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace tidewright
