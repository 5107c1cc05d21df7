// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ConsolePane.h"

#include "resources/NamedImages.h"

#include <QEvent>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTime>

namespace tidewright {

ConsolePane::ConsolePane(QObject *parent)
    : Console(parent)
    , m_text(new QPlainTextEdit)
{
    m_text->setAccessibleName(QStringLiteral("Console"));
    m_text->setReadOnly(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->setMaximumBlockCount(5000);
    m_text->document()->setDocumentMargin(8);
    m_text->installEventFilter(this);
    applyColours();
}

QWidget *ConsolePane::view() const
{
    return m_text;
}

void ConsolePane::addEntry(
    const QString &command, const QString &response, const std::optional<ConsoleError> &error)
{
    constexpr qsizetype longestResponse = 3000;
    if (!m_text) {
        return;
    }
    const QScrollBar *bar = m_text->verticalScrollBar();
    const bool following = bar->value() == bar->maximum();
    QString body = response.left(longestResponse).trimmed();
    body += response.size() > longestResponse ? QStringLiteral("…") : QString();
    append((m_text->document()->isEmpty() ? QString() : QStringLiteral("\n"))
            + QTime::currentTime().toString(QStringLiteral("HH:mm:ss")) + QLatin1String("  "),
        "solarized-cyan");
    append(command, "solarized-blue");
    append(
        body.isEmpty() ? QString() : (command.isEmpty() ? QString() : QStringLiteral("\n")) + body, nullptr);
    if (error) {
        const bool alone = command.isEmpty() && body.isEmpty();
        append((alone ? QString() : QStringLiteral("\n")) + error->description.trimmed(), "solarized-red");
    }
    if (following) {
        m_text->verticalScrollBar()->setValue(bar->maximum());
    }
}

void ConsolePane::append(const QString &text, const char *colour)
{
    QTextCharFormat format;
    if (colour) {
        format.setForeground(namedColour(QLatin1String(colour)));
    }
    QTextCursor end(m_text->document());
    end.movePosition(QTextCursor::End);
    end.insertText(text, format);
}

void ConsolePane::clear()
{
    m_text->clear();
}

bool ConsolePane::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ApplicationPaletteChange) {
        applyColours();
    }
    return Console::eventFilter(watched, event);
}

void ConsolePane::applyColours()
{
    const bool dark = isDarkPalette();
    QPalette palette = m_text->palette();
    palette.setColor(QPalette::Base,
        namedColour(dark ? QStringLiteral("solarized-base03") : QStringLiteral("solarized-base3")));
    palette.setColor(QPalette::Text,
        namedColour(dark ? QStringLiteral("solarized-base1") : QStringLiteral("solarized-base01")));
    m_text->setPalette(palette);
}

} // namespace tidewright
